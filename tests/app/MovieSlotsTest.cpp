#include <QDropEvent>
#include <QFile>
#include <QFileDialog>
#include <QLineEdit>
#include <QListView>
#include <QMimeData>
#include <QPushButton>
#include <QSet>
#include <QTest>
#include <QTimer>
#include <QUrl>

#include <gmock/gmock.h>
#include <sys/stat.h>

#include "SharedFiles/foundation/QVPlatformException.h"
#include "app/dialogs/MoviePanel.h"
#include "tests/app/WindowFixture.h"
#include "tests/check/CapturedLog.h"
#include "tests/support/MovieFixture.h"

namespace {

using testing::Contains;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

class MovieSlots : public WindowFixture {
 protected:
  MovieSlots() { launch(); }

  QString textFile() {
    const QString path = home_.filePath(QStringLiteral("notes.mov"));
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write("no movie at all") > 0);
    return path;
  }
  void expectEmptyDest() {
    EXPECT_EQ(controller().destQTMov(), nullptr);
    EXPECT_EQ(controller().destQTDisplayMov(), nullptr);
    EXPECT_EQ(destView().movie(), nullptr);
  }
  /// What a user's drop does.
  static bool drop(QVMovieView& view, const QMimeData& data) {
    QDragEnterEvent enter(view.rect().center(), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&view, &enter);
    if (!enter.isAccepted()) return false;
    QDropEvent dropped(view.rect().center(), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&view, &dropped);
    return dropped.isAccepted();
  }
  static void drop(QVMovieView& view, const QStringList& files) {
    QMimeData data;
    QList<QUrl> urls;
    for (const QString& file : files) urls << QUrl::fromLocalFile(file);
    data.setUrls(urls);
    EXPECT_FALSE(drop(view, data));
  }
  /// The movie of another maker's format.
  static QString isoMovie() {
    return QString::fromStdString(movie::test::fixtureMovie(
        "iso.mp4", {"-f", "lavfi", "-i", "testsrc=size=64x36:rate=25:duration=0.2", "-c:v", "mpeg4"}));
  }
  QFileDialog* panel() { return interface().window().findChild<QFileDialog*>(); }
};

TEST_F(MovieSlots, HoldAMasterAndAnIndependentDisplayCopy) {
  load(plainMovie(), retaggedMovie());
  EXPECT_EQ(pathOf(controller().sourceQTMov().get()), plainMovie());
  EXPECT_EQ(pathOf(controller().sourceQTDisplayMov().get()), plainMovie());
  EXPECT_EQ(pathOf(controller().destQTMov().get()), retaggedMovie());
  EXPECT_EQ(sourceView().movie(), controller().sourceQTDisplayMov());
  EXPECT_EQ(destView().movie(), controller().destQTDisplayMov());
  EXPECT_NE(controller().sourceQTMov(), controller().sourceQTDisplayMov());
  sourceView().stepFrames(3);
  EXPECT_EQ(controller().sourceQTMov()->currentTime().value, 0);
  EXPECT_GT(controller().sourceQTDisplayMov()->currentTime().value, 0);
  for (const auto& movie : {controller().sourceQTMov(), controller().sourceQTDisplayMov(),
                            controller().destQTDisplayMov(), controller().destQTMov()}) {
    EXPECT_TRUE(movie->isEditable());
  }
}

TEST_F(MovieSlots, MarkBothDisplayCopiesEditableWhicheverSideIsLoaded) {
  for (const char* type : {"source", "dest"}) {
    load(plainMovie(), retaggedMovie());
    controller().sourceQTDisplayMov()->setEditable(false);
    controller().destQTDisplayMov()->setEditable(false);
    controller().loadQTMovieWithPath(darkerMovie(), type);
    EXPECT_TRUE(controller().sourceQTDisplayMov()->isEditable()) << type;
    EXPECT_TRUE(controller().destQTDisplayMov()->isEditable()) << type;
  }
}

TEST_F(MovieSlots, ShowPathAndRememberIt) {
  load(plainMovie(), retaggedMovie());
  EXPECT_EQ(sourcePath(), plainMovie());
  EXPECT_EQ(destPath(), retaggedMovie());
  EXPECT_EQ(defaults_->stringForKey("lastSourceFile"), plainMovie());
  EXPECT_EQ(defaults_->stringForKey("lastDestFile"), retaggedMovie());
  EXPECT_FALSE(controller().disableSync());
}

TEST_F(MovieSlots, AreEmptiedByAFileThatIsNoMovie) {
  const check::test::CapturedLog log;
  load(plainMovie(), retaggedMovie());
  const size_t lines = log.texts().size();
  type(*interface().dest.filenameText, textFile());
  expectEmptyDest();
  EXPECT_EQ(destPath(), textFile());
  EXPECT_EQ(defaults_->stringForKey("lastDestFile"), retaggedMovie());
  EXPECT_EQ(log.texts().size(), lines);
  EXPECT_EQ(pathOf(controller().sourceQTMov().get()), plainMovie());
}

TEST_F(MovieSlots, TakeTypedPathsAsTheyStand) {
  type(*interface().source.filenameText, plainMovie());
  EXPECT_EQ(pathOf(controller().sourceQTMov().get()), plainMovie());
  type(*interface().source.filenameText, plainMovie() + ' ');
  EXPECT_EQ(controller().sourceQTMov(), nullptr);
  EXPECT_EQ(sourcePath(), plainMovie() + ' ');
}

TEST_F(MovieSlots, DropTheOldFileBeforeTheNewOneIsKnown) {
  load(plainMovie(), retaggedMovie());
  const std::weak_ptr<PlayableMovie> old = controller().destQTDisplayMov();
  controller().loadQTMovieWithPath("/nowhere/a.mov", "dest");
  expectEmptyDest();
  EXPECT_TRUE(old.expired());
  EXPECT_EQ(destPath(), retaggedMovie());
}

TEST_F(MovieSlots, CountAnyTypeButSourceAsTheDestination) {
  controller().loadQTMovieWithPath(plainMovie(), "Source");
  EXPECT_EQ(pathOf(controller().destQTMov().get()), plainMovie());
  EXPECT_EQ(pathOf(controller().sourceQTMov().get()), QString());
}

TEST_F(MovieSlots, AreSwappedByLoadingBothAnew) {
  load(plainMovie(), retaggedMovie());
  const auto before = controller().sourceQTMov();
  QTest::mouseClick(interface().swapBtn, Qt::LeftButton);
  EXPECT_EQ(sourcePath(), retaggedMovie());
  EXPECT_EQ(destPath(), plainMovie());
  EXPECT_EQ(pathOf(controller().sourceQTMov().get()), retaggedMovie());
  EXPECT_NE(controller().destQTMov(), before);
}

TEST_F(MovieSlots, AreEmptiedBySwappingWithAnEmptyField) {
  controller().loadQTMovieWithPath(plainMovie(), "source");
  controller().swapMovies();
  EXPECT_EQ(controller().sourceQTMov(), nullptr);
  EXPECT_EQ(pathOf(controller().destQTMov().get()), plainMovie());
  EXPECT_EQ(sourcePath(), plainMovie());
}

TEST_F(MovieSlots, TakeOneFileFromOutsideWhereItIsMissing) {
  controller().applicationOpenFiles({});
  EXPECT_EQ(sourcePath(), QString());
  controller().applicationOpenFiles({plainMovie()});
  EXPECT_EQ(sourcePath(), plainMovie());
  EXPECT_EQ(destPath(), QString());
  controller().applicationOpenFiles({retaggedMovie()});
  EXPECT_EQ(destPath(), retaggedMovie());
  controller().applicationOpenFiles({darkerMovie()});
  EXPECT_EQ(sourcePath(), darkerMovie());
  EXPECT_EQ(destPath(), retaggedMovie());
}

TEST_F(MovieSlots, TakeAFileFromOutsideAsTheSourceWhileTheFirstHasNoVideo) {
  controller().applicationOpenFiles({soundMovie()});
  controller().applicationOpenFiles({plainMovie()});
  EXPECT_EQ(sourcePath(), plainMovie());
  EXPECT_EQ(destPath(), QString());
}

TEST_F(MovieSlots, TakeAFileFromOutsideAsTheSourceWhileOnlyADestinationIsLoaded) {
  controller().loadQTMovieWithPath(plainMovie(), "dest");
  controller().applicationOpenFiles({retaggedMovie()});
  EXPECT_EQ(sourcePath(), retaggedMovie());
  EXPECT_EQ(destPath(), plainMovie());
}

TEST_F(MovieSlots, TakeTheFirstTwoOfManyFilesFromOutside) {
  controller().applicationOpenFiles({plainMovie(), retaggedMovie(), darkerMovie()});
  EXPECT_EQ(sourcePath(), plainMovie());
  EXPECT_EQ(destPath(), retaggedMovie());
}

TEST_F(MovieSlots, TakeTheFirstOfTheFilesDroppedOnAView) {
  drop(destView(), QStringList{plainMovie(), retaggedMovie(), darkerMovie()});
  EXPECT_EQ(destPath(), plainMovie());
  EXPECT_EQ(sourcePath(), QString());
  drop(sourceView(), QStringList{retaggedMovie()});
  EXPECT_EQ(sourcePath(), retaggedMovie());
}

TEST_F(MovieSlots, TakeNothingFromADropWithoutFiles) {
  QStringList told;
  QObject::connect(&sourceView(), &QVMovieView::filesDropped,
                   [&](QVMovieView*, const QStringList& files) { told += files; });
  QMimeData text, page;
  text.setText(plainMovie());
  page.setUrls({QUrl("https://maker.example/a.mov")});
  for (const QMimeData* data : {&text, &page}) {
    EXPECT_FALSE(drop(sourceView(), *data));
    EXPECT_FALSE(sourceView().performDragOperation(*data));
  }
  EXPECT_THAT(told, IsEmpty());
  controller().filesDroppedOnMovieView(&sourceView(), {});
  EXPECT_EQ(sourcePath(), QString());
}

TEST_F(MovieSlots, RefuseADroppedNameThatIsNotUtf8) {
  const check::test::CapturedLog log;
  QMimeData data;
  data.setData("text/uri-list", "file:///tmp/caf%E9.mov\r\n");
  EXPECT_FALSE(sourceView().performDragOperation(data));
  EXPECT_EQ(sourcePath(), QString());
  EXPECT_THAT(log.texts(), Contains(StartsWith("The name of a file is not UTF-8 and was refused")));
}

TEST_F(MovieSlots, TakeAnMp4ThatIsDropped) {
  const QString copy = home_.filePath("plain.mp4");
  ASSERT_TRUE(QFile::copy(groupedMovie(), copy));
  drop(sourceView(), QStringList{copy});
  EXPECT_EQ(pathOf(controller().sourceQTMov().get()), copy);
}

TEST_F(MovieSlots, AreLoadedFromTheOpenSheet) {
  QTest::mouseClick(interface().source.browseBtn, Qt::LeftButton);
  ASSERT_NE(panel(), nullptr);
  EXPECT_EQ(panel()->windowModality(), Qt::WindowModal);
  EXPECT_EQ(panel()->fileMode(), QFileDialog::ExistingFile);
  EXPECT_EQ(panel()->nameFilters(), QStringList{"Movies (*)"});
  EXPECT_TRUE(panel()->testOption(QFileDialog::ReadOnly));
  EXPECT_EQ(movieFileTypes(), (QStringList{"mov", "qt", "m4v", "'MooV'"}));
  panel()->selectFile(plainMovie());
  static_cast<QDialog*>(panel())->done(QDialog::Accepted);
  EXPECT_EQ(pathOf(controller().sourceQTMov().get()), plainMovie());
  EXPECT_EQ(sourcePath(), plainMovie());
}

TEST_F(MovieSlots, AreOfferedTheFourFileTypesInEveryPanel) {
  if (!mayShowFilePanels()) return;
  const QDir folder(home_.filePath("reels"));
  ASSERT_TRUE(folder.mkpath("older reels.d") && folder.mkpath("older"));
  for (const char* name : {"a.mov", "B.QT", "c.m4v", "reel", "notes.txt", "odd.moov", "d.mov.bak"}) {
    ASSERT_TRUE(QFile::copy(plainMovie(), folder.filePath(name))) << name;
  }
  ASSERT_TRUE(QFile::copy(isoMovie(), folder.filePath("iso")));
  ASSERT_TRUE(QFile::copy(textFile(), folder.filePath("README")));
  ASSERT_EQ(::mkfifo(folder.filePath("pipe").toLocal8Bit().constData(), 0600), 0);
  const QSet<QString> offered{"older", "older reels.d", "a.mov", "B.QT", "c.m4v", "reel"};
  for (const char* name : {"openSource", "openDest", "saveAs"}) {
    choose(name);
    ASSERT_NE(panel(), nullptr);
    EXPECT_TRUE(panel()->testOption(QFileDialog::DontUseNativeDialog));
    panel()->setDirectory(folder);
    const auto* const list = panel()->findChild<QListView*>("listView");
    const auto shown = [&] {
      QSet<QString> names;
      for (int row = 0; row < list->model()->rowCount(list->rootIndex()); ++row)
        names << list->model()->index(row, 0, list->rootIndex()).data().toString();
      return names;
    };
    EXPECT_TRUE(waitUntil([&] { return shown() == offered; })) << name;
    runFor(50);
    EXPECT_EQ(shown(), offered) << name;
    panel()->close();
    runFor(1);  // which deletes it
  }
}

TEST_F(MovieSlots, ShowTheChosenPathOfAFileThatIsNoMovie) {
  controller().loadQTMovieWithPath(plainMovie(), "dest");
  QTest::mouseClick(interface().dest.browseBtn, Qt::LeftButton);
  ASSERT_NE(panel(), nullptr);
  panel()->selectFile(textFile());
  static_cast<QDialog*>(panel())->done(QDialog::Accepted);
  expectEmptyDest();
  EXPECT_EQ(destPath(), textFile());
}

TEST_F(MovieSlots, StayWhenTheOpenSheetIsCancelled) {
  controller().loadQTMovieWithPath(plainMovie(), "source");
  const auto before = controller().sourceQTMov();
  QTest::mouseClick(interface().source.browseBtn, Qt::LeftButton);
  ASSERT_NE(panel(), nullptr);
  panel()->reject();
  EXPECT_EQ(controller().sourceQTMov(), before);
}

TEST_F(MovieSlots, AreObservedOnlyInTheMovieThatTheViewShows) {
  load(plainMovie(), retaggedMovie());
  const auto old = controller().sourceQTDisplayMov();
  controller().loadQTMovieWithPath(darkerMovie(), "source");
  old->setCurrentTime({400, 1000, 0});
  EXPECT_EQ(controller().destQTDisplayMov()->currentTime().value, 0);
}

/// Refuses every movie, as a machine that is out of threads does.
class RefusingView : public QVMovieView {
 public:
  static inline std::function<void()> refuse;
  void setMovie(std::shared_ptr<PlayableMovie> movie) override {
    if (movie && movie->content().file()) refuse();
    QVMovieView::setMovie(std::move(movie));
  }
};

class RefusedMovies : public WindowFixture {
 protected:
  RefusedMovies() {
    makeController([] { return new RefusingView; });
    launch();
  }
};

TEST_F(RefusedMovies, AreLoggedAndLoadedAllTheSame) {
  const check::test::CapturedLog log;
  RefusingView::refuse = [] { throw QVPlatformException("no more threads"); };
  controller().loadQTMovieWithPath(plainMovie(), "source");
  EXPECT_THAT(log.texts(), Contains("Exception loading source movie: no more threads"));
  EXPECT_THAT(log.texts(), Not(Contains("Exception loading dest movie: no more threads")));
  controller().loadQTMovieWithPath(retaggedMovie(), "dest");
  EXPECT_THAT(log.texts(), Contains("Exception loading dest movie: no more threads"));
  EXPECT_EQ(pathOf(controller().sourceQTMov().get()), plainMovie());
  EXPECT_EQ(sourcePath(), plainMovie());
  EXPECT_EQ(defaults_->stringForKey("lastDestFile"), retaggedMovie());
}

TEST_F(RefusedMovies, PassOnAnyOtherException) {
  RefusingView::refuse = [] { throw std::runtime_error("something else"); };
  EXPECT_THROW(controller().loadQTMovieWithPath(plainMovie(), "dest"), std::runtime_error);
  EXPECT_EQ(destPath(), QString());
}

TEST_F(RefusedMovies, AreLoggedAsTheSourcesAfterASync) {
  RefusingView::refuse = [] {};
  load(plainMovie(), retaggedMovie());
  QStringList told;
  QTimer answers;
  QObject::connect(&answers, &QTimer::timeout, [&] {
    auto* const sheet = qobject_cast<QDialog*>(QApplication::activeModalWidget());
    if (sheet == nullptr) return;
    told << sheet->accessibleName();
    QTest::keyClick(sheet, Qt::Key_Return);
  });
  answers.start(20);
  const check::test::CapturedLog log;
  RefusingView::refuse = [] { throw QVPlatformException("no more threads"); };
  QTest::mouseClick(interface().syncBtn, Qt::LeftButton);
  EXPECT_EQ(log.texts().back(), "Exception loading source movie: no more threads");
  EXPECT_EQ(told, QStringList{"Metadata sync complete"});
  RefusingView::refuse = [] { throw std::runtime_error("something else"); };
  EXPECT_THROW(controller().syncMetadata(), std::runtime_error);
}

}  // namespace
