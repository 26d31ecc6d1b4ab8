#include <QAction>
#include <QDir>
#include <QFile>
#include <QLineEdit>
#include <QMenu>

#include <gmock/gmock.h>
#include <unistd.h>

#include "app/RecentPairs.h"
#include "tests/SharedFiles/QtPrinters.h"
#include "tests/app/WindowFixture.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class TheRecentPairs : public WindowFixture {
 protected:
  TheRecentPairs() { launch(); }

  QMenu& menu() { return *interface().menus.recentPairs; }
  /// The pairs in the menu.
  QStringList texts() {
    QStringList found;
    for (const QAction* action : menu().actions()) {
      if (action == interface().menus.endOfPairs) break;
      found << plainNames(action->text());
    }
    return found;
  }
  QString copyOf(const QString& movie, const QString& name) {
    const QString path = home_.filePath(name);
    EXPECT_TRUE(QFile::copy(movie, path));
    return path;
  }
};

TEST_F(TheRecentPairs, AreThoseThatWereOpenTogetherNewestFirst) {
  EXPECT_THAT(texts(), IsEmpty());
  EXPECT_FALSE(menu().isEnabled());
  controller().loadQTMovieWithPath(plainMovie(), "source");
  EXPECT_THAT(texts(), IsEmpty());
  controller().loadQTMovieWithPath(retaggedMovie(), "dest");
  controller().applicationOpenFiles({plainMovie(), darkerMovie()});
  controller().applicationOpenFiles({blackMovie(), longMovie()});
  EXPECT_THAT(texts(),
              ElementsAre("&1 black.mov → long.mov", "&2 plain.mov → darker.mov", "&3 plain.mov → retagged.mov"));
  controller().applicationOpenFiles({plainMovie(), darkerMovie()});
  EXPECT_THAT(texts(),
              ElementsAre("&1 plain.mov → darker.mov", "&2 black.mov → long.mov", "&3 plain.mov → retagged.mov"));
  controller().loadQTMovieWithPath("/nowhere", "dest");
  EXPECT_EQ(texts().size(), 3) << "one movie is no pair";
  EXPECT_TRUE(menu().isEnabled());
  EXPECT_EQ(menu().actions()[0]->toolTip(), "Source: " + plainMovie() + "\nDestination: " + darkerMovie());
}

TEST_F(TheRecentPairs, HaveToolTipsThatShowMarkupInNamesAsItIs) {
  const QString source = copyOf(plainMovie(), "<b>a.mov");
  load(source, retaggedMovie());
  for (const QString& tip : {menu().actions()[0]->toolTip(), interface().source.filenameText->toolTip()}) {
    EXPECT_TRUE(tip.contains("/&lt;b&gt;a.mov")) << tip.toStdString();
  }
}

TEST_F(TheRecentPairs, AreOpenedFromTheMenu) {
  controller().applicationOpenFiles({plainMovie(), retaggedMovie()});
  controller().applicationOpenFiles({blackMovie(), darkerMovie()});
  choose("recentPair2");
  EXPECT_EQ(sourcePath(), plainMovie());
  EXPECT_EQ(destPath(), retaggedMovie());
  EXPECT_THAT(texts(), ElementsAre("&1 plain.mov → retagged.mov", "&2 black.mov → darker.mov"));
}

TEST_F(TheRecentPairs, AreFoundFromAnotherFolder) {
  const QString source = copyOf(plainMovie(), "a.mov"), dest = copyOf(retaggedMovie(), "b.mov");
  const QString before = QDir::currentPath();
  ASSERT_TRUE(QDir::setCurrent(home_.path()));
  load("a.mov", "./b.mov");
  ASSERT_TRUE(QDir::setCurrent("/"));
  load("/nowhere", "/nowhere");
  choose("recentPair1");
  EXPECT_EQ(sourcePath(), source);
  EXPECT_EQ(QFileInfo(destPath()).canonicalFilePath(), dest);
  ASSERT_TRUE(QDir::setCurrent(before));
}

TEST_F(TheRecentPairs, OutliveTheWindow) {
  controller().applicationOpenFiles({plainMovie(), retaggedMovie()});
  relaunch();
  EXPECT_THAT(texts(), ElementsAre("&1 plain.mov → retagged.mov"));
}

TEST_F(TheRecentPairs, AreTenAtMost) {
  RecentPairs pairs(*defaults_);
  for (int i = 1; i <= 12; ++i) EXPECT_TRUE(pairs.add({QString("/%1.mov").arg(i), "/b&w.mov"}));
  EXPECT_EQ(pairs.all().size(), 10);
  EXPECT_EQ(pairs.all().first(), (MoviePair{"/12.mov", "/b&w.mov"}));
  EXPECT_EQ(pairs.all().last(), (MoviePair{"/3.mov", "/b&w.mov"}));
  relaunch();
  EXPECT_EQ(texts().first(), "&1 12.mov → b&&w.mov");
  EXPECT_EQ(texts().last(), "1&0 3.mov → b&&w.mov");
}

TEST_F(TheRecentPairs, AreForgottenWhenAsked) {
  controller().applicationOpenFiles({plainMovie(), retaggedMovie()});
  choose("forgetPairs");
  EXPECT_THAT(texts(), IsEmpty());
  EXPECT_EQ(said(), Message(MessageKind::Information, "The recent pairs are forgotten."));
  EXPECT_EQ(sourcePath(), plainMovie()) << "the movies stay open";
  makeController();
  EXPECT_THAT(texts(), IsEmpty());
}

TEST_F(TheRecentPairs, SayThatAFileIsGoneAndLeaveTheMoviesAlone) {
  const QString source = copyOf(plainMovie(), "a.mov"), dest = copyOf(retaggedMovie(), "b.mov");
  controller().applicationOpenFiles({source, dest});
  controller().applicationOpenFiles({plainMovie(), darkerMovie()});
  ASSERT_TRUE(QFile::remove(dest));
  choose("recentPair2");
  EXPECT_EQ(said(), Message(MessageKind::Failure, "The pair was not opened: there is no \"" + dest + "\"."));
  ASSERT_TRUE(QFile::remove(source));
  choose("recentPair2");
  EXPECT_EQ(said(), Message(MessageKind::Failure,
                            "The pair was not opened: there is neither \"" + source + "\" nor \"" + dest + "\"."));
  EXPECT_EQ(sourcePath(), plainMovie());
  EXPECT_EQ(texts().size(), 2);
}

TEST_F(TheRecentPairs, LeaveOutWhatIsNoPairInTheSettings) {
  const QVariantMap whole{{"source", "/a.mov"}, {"dest", "/b.mov"}};
  defaults_->setObject(QVariantList{QVariantMap{{"source", "/a.mov"}}, "text", whole}, "recentPairs");
  EXPECT_EQ(RecentPairs(*defaults_).all(), QList<MoviePair>({{"/a.mov", "/b.mov"}}));
  defaults_->setObject("text", "recentPairs");
  EXPECT_TRUE(RecentPairs(*defaults_).all().isEmpty());
}

TEST_F(TheRecentPairs, SayThatTheyAreNotRemembered) {
  if (::geteuid() == 0) GTEST_SKIP() << "nothing is closed to the superuser";
  controller().applicationOpenFiles({plainMovie(), retaggedMovie()});
  const QString folder = QFileInfo(defaults_->path()).path();
  ASSERT_TRUE(QFile::setPermissions(folder, QFile::ReadOwner | QFile::ExeOwner));
  controller().applicationOpenFiles({plainMovie(), darkerMovie()});
  EXPECT_EQ(said(), Message(MessageKind::Warning,
                            "The settings cannot be written, and stay as they were. "
                            "Opened \"plain.mov\" as the source. Opened \"darker.mov\" as the destination."));
  choose("forgetPairs");
  EXPECT_EQ(said(), Message(MessageKind::Warning, "The settings cannot be written, and stay as they were."));
  EXPECT_EQ(texts().size(), 1);
  ASSERT_TRUE(QFile::setPermissions(folder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
}

}  // namespace
