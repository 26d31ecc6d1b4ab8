// What the window says of movies that are opened, and of files that are refused.

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLineEdit>
#include <QMimeData>
#include <QPushButton>
#include <QSlider>
#include <QTest>
#include <functional>

#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include "SharedFiles/foundation/QVPlatformException.h"
#include "app/widgets/TransportBar.h"
#include "tests/SharedFiles/QtPrinters.h"
#include "tests/app/WindowFixture.h"
#include "tests/check/CapturedLog.h"
#include "tests/support/MovieFixture.h"

namespace {

using testing::HasSubstr;

class Opening : public WindowFixture {
 protected:
  Opening() { launch(); }

  QString made(const QString& name, const QByteArray& content) {
    const QString path = home_.filePath(name);
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
    return path;
  }
  static QByteArray contentsOf(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
  }
  /// The first bytes of a movie. From the end so many are missing, for a number below 0.
  QString cut(const QString& movie, qsizetype bytes) {
    const QByteArray whole = contentsOf(movie);
    return made("cut.mov", whole.first(bytes < 0 ? whole.size() + bytes : bytes));
  }
  QString title() { return plainNames(interface().window().windowTitle()); }
  void expectSaid(MessageKind kind, const QString& text) {
    EXPECT_EQ(said().text, text);
    EXPECT_EQ(said().kind, kind) << text.toStdString();
  }
  void expectRefused(const QString& path, const QString& why) {
    load(plainMovie(), retaggedMovie());
    const check::test::CapturedLog log;
    type(*interface().dest.filenameText, path);
    const QString name = QFileInfo(path).fileName();
    expectSaid(MessageKind::Failure, '"' + name + "\" cannot be opened as the destination: " + why + '.');
    EXPECT_EQ(destView().message(),
              '"' + name + "\" cannot be opened:\n" + why + ".\n\nDrop the destination movie here");
    EXPECT_EQ(destView().accessibleDescription(), '"' + name + "\" cannot be opened:\n" + why + '.');
    EXPECT_EQ(title(), "plain.mov – Lumacheck");
    EXPECT_EQ(sourceView().message(), "");
    EXPECT_THAT(log.texts(), testing::IsEmpty());
  }
};

TEST_F(Opening, SaysWhyAFileIsRefused) {
  expectRefused(made("notes.mov", "no movie at all"), "it is not a QuickTime or MP4 movie");
  expectRefused(made("zeros.mov", QByteArray(100, '\0')), "it is not a QuickTime or MP4 movie, or was never finished");
  expectRefused(made("empty.mov", {}), "the file is empty");
  expectRefused(home_.filePath("gone.mov"), "there is no such file");
  ASSERT_TRUE(QDir(home_.path()).mkdir("folder.mov"));
  expectRefused(home_.filePath("folder.mov"), "it is a folder");
  ASSERT_EQ(::mkfifo(QFile::encodeName(home_.filePath("pipe")).constData(), 0600), 0);
  expectRefused(home_.filePath("pipe"), "it is not a regular file");
}

TEST_F(Opening, SaysThatAMovieEndsInTheMiddle) {
  expectRefused(cut(plainMovie(), 10'000), "it ends in the middle, or is damaged");
  expectRefused(cut(plainMovie(), -10), "it ends in the middle");
}

TEST_F(Opening, SaysThatThereIsNoPermission) {
  if (::geteuid() == 0) GTEST_SKIP() << "nothing is closed to the superuser";
  const QString closed = made("closed.mov", contentsOf(plainMovie()));
  ASSERT_TRUE(QFile::setPermissions(closed, QFile::WriteOwner));
  expectRefused(closed, "there is no permission to read the file");
}

TEST_F(Opening, SaysWhatWasOpened) {
  controller().loadQTMovieWithPath(plainMovie(), "source");
  expectSaid(MessageKind::Information, "Opened \"plain.mov\" as the source.");
  EXPECT_EQ(title(), "plain.mov – Lumacheck");
  controller().applicationOpenFiles({darkerMovie(), retaggedMovie()});
  expectSaid(MessageKind::Information,
             "Opened \"darker.mov\" as the source. Opened \"retagged.mov\" as the destination.");
  EXPECT_EQ(title(), "darker.mov → retagged.mov[*] – Lumacheck");
  controller().swapMovies();
  expectSaid(MessageKind::Information,
             "Opened \"retagged.mov\" as the source. Opened \"darker.mov\" as the destination.");
}

TEST_F(Opening, SaysWhatAMovieLacks) {
  controller().loadQTMovieWithPath(soundMovie(), "source");
  expectSaid(MessageKind::Warning, "Opened \"sound.mov\" as the source. It has no pictures.");
  const QString streamed = QString::fromStdString(movie::test::fixtureMovie(
      "streamed.mov",
      {"-f", "lavfi", "-i", "testsrc2=size=320x180:rate=25:duration=2", "-c:v", "mjpeg", "-movflags", "+faststart"}));
  controller().loadQTMovieWithPath(streamed, "dest");
  expectSaid(MessageKind::Information, "Opened \"streamed.mov\" as the destination.");
  controller().loadQTMovieWithPath(cut(streamed, -20'000), "dest");
  expectSaid(MessageKind::Warning,
             "Opened \"cut.mov\" as the destination. It ends in the middle: its last pictures are missing.");
}

TEST_F(Opening, ForgetsARefusalWithTheNextMovie) {
  load(made("notes.mov", "no movie at all"), plainMovie());
  EXPECT_THAT(sourceView().message().toStdString(), HasSubstr("notes.mov"));
  controller().loadQTMovieWithPath(plainMovie(), "source");
  EXPECT_EQ(sourceView().message(), "");
  EXPECT_EQ(sourceView().accessibleDescription(), "");
  controller().loadQTMovieWithPath({}, "source");
  EXPECT_EQ(sourceView().message(), "Drop the source movie here");
  expectSaid(MessageKind::Information, "There is no source now.");
}

TEST_F(Opening, SaysWhichOfTwoFilesIsRefused) {
  controller().applicationOpenFiles({plainMovie(), made("notes.mov", "no movie at all"), darkerMovie()});
  expectSaid(MessageKind::Failure,
             "\"notes.mov\" cannot be opened as the destination: it is not a QuickTime or MP4 movie. "
             "Of 3 files only the first two were opened. Opened \"plain.mov\" as the source.");
  controller().filesDroppedOnMovieView(&destView(), {retaggedMovie(), plainMovie()});
  expectSaid(MessageKind::Warning, "Of 2 files only the first was opened. Opened \"retagged.mov\" as the destination.");
}

TEST_F(Opening, SaysThatANameIsNotUtf8) {
  const check::test::CapturedLog log;
  QMimeData data;
  data.setData("text/uri-list", "file:///tmp/caf%E9.mov\r\n");
  sourceView().performDragOperation(data);
  expectSaid(MessageKind::Failure, "Nothing was opened: the file's name is not in UTF-8.");
}

TEST_F(Opening, SaysAtTheStartWhichOfTheLastFilesIsGone) {
  const QString moved = made("moved.mov", contentsOf(plainMovie()));
  load(moved, retaggedMovie());
  ASSERT_TRUE(QFile::remove(moved));
  relaunch();
  expectSaid(MessageKind::Failure,
             "\"moved.mov\" cannot be opened as the source: there is no such file. "
             "Opened \"retagged.mov\" as the destination.");
  EXPECT_THAT(sourceView().message().toStdString(),
              HasSubstr("\"moved.mov\" cannot be opened:\nthere is no such file"));
}

TEST_F(Opening, SaysNothingBeforeAnythingIsOpened) {
  expectSaid(MessageKind::Information, "");
  EXPECT_EQ(title(), "Lumacheck");
}

TEST_F(Opening, ClearsTheLineWhereAPanelAsksFirst) {
  if (!mayShowFilePanels()) return;
  controller().loadQTMovieWithPath("/nowhere", "source");
  EXPECT_NE(said().text, "");
  choose("openSource");
  expectSaid(MessageKind::Information, "");
}

TEST_F(Opening, TellsInToolTipsWhatCanDoNothingAndWhy) {
  const auto tip = [](const QWidget* control) { return control->toolTip().section('\n', 1).toStdString(); };
  MainInterface& all = interface();
  for (const QPushButton* button : {all.checkBtn, all.syncBtn, all.swapBtn})
    EXPECT_EQ(tip(button), "There are no movies.");
  for (const QPushButton* button : {all.saveBtn, all.saveAsBtn}) EXPECT_EQ(tip(button), "There is no destination.");
  EXPECT_EQ(tip(all.source.transport->playButton), "There is no movie.");
  EXPECT_EQ(all.source.transport->scrubber->toolTip(), "There is no movie.");
  load(plainMovie(), longMovie());
  for (const QPushButton* button : {all.checkBtn, all.syncBtn, all.swapBtn, all.saveAsBtn}) EXPECT_EQ(tip(button), "");
  EXPECT_EQ(tip(all.saveBtn), "The destination has no unsaved changes.");
  EXPECT_EQ(tip(all.linkBtn), "The movies do not last equally long.");
  EXPECT_EQ(tip(all.source.transport->playButton), "");
  load(plainMovie(), retaggedMovie());
  EXPECT_EQ(tip(all.linkBtn), "");
  for (const QPushButton* button : {all.checkBtn, all.syncBtn, all.swapBtn, all.saveBtn, all.saveAsBtn}) {
    EXPECT_TRUE(button->isEnabled());
    EXPECT_NE(button->toolTip(), "");
  }
}

TEST_F(Opening, SaysThatNothingPlaysAMovie) {
  struct Refusing : QVMovieView {
    void setMovie(std::shared_ptr<PlayableMovie> movie) override {
      if (movie && movie->content().file()) throw QVPlatformException("no more threads");
      QVMovieView::setMovie(std::move(movie));
    }
  };
  makeController([] { return new Refusing; });
  launch();
  controller().loadQTMovieWithPath(plainMovie(), "source");
  expectSaid(MessageKind::Failure, "The source cannot be shown: no more threads. Opened \"plain.mov\" as the source.");
}

}  // namespace
