// What the window says of a check, a sync, a save and a copy.

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <chrono>
#include <filesystem>
#include <thread>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <unistd.h>

#include "app/widgets/MessageLine.h"
#include "tests/SharedFiles/QtPrinters.h"
#include "tests/app/SaveFixture.h"
#include "tests/support/MovieFixture.h"

namespace {

class ToldOfSaving : public SaveFixture {
 protected:
  /// Times and sizes are whatever they are.
  void expectSaid(MessageKind kind, const QString& pattern) {
    const QRegularExpression whole(
        QRegularExpression::anchoredPattern(QRegularExpression::escape(pattern)
                                                .replace("TIME", "(less than )?\\d+[.,]\\d\\d s")
                                                .replace("SIZE", "[\\d.,]+ [kMG]?B")));
    EXPECT_TRUE(whole.match(said().text).hasMatch()) << said().text.toStdString() << "\nis not\n"
                                                     << pattern.toStdString();
    EXPECT_EQ(said().kind, kind) << said().text.toStdString();
  }
  bool isMarked() { return interface().window().isWindowModified(); }
  static QString toolTip(const QPushButton* button) { return button->toolTip().section('\n', 1); }
};

TEST_F(ToldOfSaving, NamesTheFramesThatWereCompared) {
  load(plainMovie(), darkerMovie());
  sourceView().stepFrames(5);
  press(interface().checkBtn);
  expectSaid(MessageKind::Information, "Compared \"plain.mov\" at 01:00:00:05 with \"darker.mov\" at 01:00:00:05.");
}

TEST_F(ToldOfSaving, SaysWhyNoFramesWereCompared) {
  load(blackMovie(), plainMovie());
  press(interface().checkBtn);
  expectSaid(MessageKind::Warning,
             "No frames were compared. \"black.mov\" is too dark at 01:00:00:00: go to a brighter picture.");
  EXPECT_EQ(told_.value(0), "Source frame is too dark");
  load(plainMovie(), "/nowhere");
  press(interface().checkBtn);
  expectSaid(MessageKind::Failure, "No frames were compared. There is no destination.");
  load(plainMovie(), soundMovie());
  press(interface().checkBtn);
  expectSaid(MessageKind::Failure, "No frames were compared. The destination has no pictures.");
}

TEST_F(ToldOfSaving, SaysWhichFrameCannotBeHad) {
  const QString streamed = QString::fromStdString(movie::test::fixtureMovie(
      "streamed.mov",
      {"-f", "lavfi", "-i", "testsrc2=size=320x180:rate=25:duration=2", "-c:v", "mjpeg", "-movflags", "+faststart"}));
  const QString cut = home_.filePath("cut.mov");
  QFile file(cut);
  ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(contents(streamed).chopped(20'000)) > 0);
  file.close();
  load(plainMovie(), cut);
  sourceView().gotoEnd();
  press(interface().checkBtn);
  expectSaid(MessageKind::Failure,
             "No frames were compared. \"cut.mov\" gives no picture at 00:00:01:24: the sample 49 cannot be read: "
             "the sample lies past the end of the file.");
}

TEST_F(ToldOfSaving, TellsWhatASyncChangesAndMarksItUntilItIsSaved) {
  load(plainMovie(), copyOf(retaggedMovie()));
  EXPECT_FALSE(isMarked());
  QString before;
  QTimer::singleShot(1, [&] { before = said().text; });  // while the alert is up
  press(interface().syncBtn);
  expectSaid(MessageKind::Success, "Changed \"dest.mov\", not saved yet: gamma 1.80 → 2.20.");
  EXPECT_EQ(before, said().text);
  EXPECT_EQ(told_.size(), 2);
  EXPECT_TRUE(isMarked());
  EXPECT_TRUE(controller().state().hasUnsavedChanges);
  EXPECT_EQ(toolTip(interface().saveBtn), "");
  press(interface().saveBtn);
  expectSaid(MessageKind::Success, "Saved \"dest.mov\" in TIME. The movie on the disk has the new metadata.");
  EXPECT_FALSE(isMarked());
  EXPECT_FALSE(controller().state().hasUnsavedChanges);
  EXPECT_EQ(toolTip(interface().saveBtn), "The destination has no unsaved changes.");
  press(interface().syncBtn);
  expectSaid(MessageKind::Information, "There was nothing to change in \"dest.mov\".");
  press(interface().saveBtn);
  expectSaid(MessageKind::Information, "\"dest.mov\" has no unsaved changes. The movie on the disk is as it was.");
}

TEST_F(ToldOfSaving, TellsWhatASyncCouldNotChange) {
  load(gammaMovie("2.2"), copyOf(retaggedMovie()));
  press(interface().syncBtn);
  expectSaid(MessageKind::Warning,
             "The colour (1-1-1) stays, although the source has none. "
             "Changed \"dest.mov\", not saved yet: gamma 1.80 → 2.20.");
  load("/nowhere", plainMovie());
  press(interface().syncBtn);
  expectSaid(MessageKind::Failure, "Nothing was synced. There is no source.");
  EXPECT_EQ(told_.size(), 4);
}

TEST_F(ToldOfSaving, TellsThatUnsavedChangesWentWithTheirMovie) {
  const QString dest = copyOf(retaggedMovie());
  load(plainMovie(), dest);
  press(interface().syncBtn);
  controller().loadQTMovieWithPath(darkerMovie(), "dest");
  expectSaid(MessageKind::Warning,
             "The changes of \"dest.mov\" were not saved, and are gone. Opened \"darker.mov\" as the destination.");
  EXPECT_FALSE(isMarked());
}

TEST_F(ToldOfSaving, SaysWhyASaveInPlaceIsRefused) {
  const QString dest = copyOf(retaggedMovie());
  load(plainMovie(), dest);
  press(interface().syncBtn);
  const int writer = ::open(QFile::encodeName(dest).constData(), O_RDWR | O_CLOEXEC);
  press(interface().saveBtn);
  ::close(writer);
  const QString refused =
      "\"dest.mov\" cannot be saved in place: another program has the file open for writing. Save a copy instead.";
  expectSaid(MessageKind::Warning, refused);
  ASSERT_NE(panel(), nullptr);
  panel()->reject();
  expectSaid(MessageKind::Warning, refused + " Nothing was saved.");
  EXPECT_TRUE(isMarked());
  ASSERT_TRUE(QFile::remove(dest));
  press(interface().saveBtn);
  expectSaid(MessageKind::Warning,
             "\"dest.mov\" cannot be saved in place: there is no such file. Save a copy instead.");
}

TEST_F(ToldOfSaving, SaysThatThereIsNoPermissionToSave) {
  if (::geteuid() == 0) GTEST_SKIP() << "nothing is closed to the superuser";
  const QString dest = copyOf(retaggedMovie());
  ASSERT_TRUE(QFile::setPermissions(dest, QFile::ReadOwner));
  load(plainMovie(), dest);
  press(interface().syncBtn);
  press(interface().saveBtn);
  expectSaid(MessageKind::Warning,
             "\"dest.mov\" cannot be saved in place: there is no permission to write the file. Save a copy instead.");
}

TEST_F(ToldOfSaving, SaysWhatElseASaveDid) {
  const QString dest = copyOf(retaggedMovie());
  std::filesystem::create_hard_link(dest.toStdString(), home_.filePath("other.mov").toStdString());
  load(plainMovie(), dest);
  press(interface().syncBtn);
  press(interface().saveBtn);
  expectSaid(MessageKind::Warning,
             "Saved \"dest.mov\" in TIME. The movie on the disk has the new metadata. It has 2 names, and was changed "
             "under all of them.");
}

TEST_F(ToldOfSaving, SaysThatThereIsNothingToSave) {
  press(interface().saveBtn);
  expectSaid(MessageKind::Failure, "Nothing was saved: there is no destination.");
  answerPanel(home_.filePath("nothing.mov"));
  expectSaid(MessageKind::Failure, "Nothing was saved: there is no destination.");
  press(interface().saveAsBtn);
  expectSaid(MessageKind::Information, "");
  panel()->reject();
  expectSaid(MessageKind::Information, "Nothing was saved.");
}

TEST_F(ToldOfSaving, SaysWhatWasCopied) {
  const QString dest = copyOf(retaggedMovie());
  load(plainMovie(), dest);
  press(interface().syncBtn);
  saveAs(home_.filePath("saved.mov"));
  expectSaid(MessageKind::Success,
             "Saved a copy, \"saved.mov\" (SIZE), in TIME. The destination's own file has not been changed.");
  EXPECT_TRUE(isMarked());
  saveAs(dest);
  expectSaid(MessageKind::Success,
             "Saved a copy, \"dest.mov\" (SIZE), in TIME. The destination goes on with the new file.");
  EXPECT_FALSE(isMarked());
}

TEST_F(ToldOfSaving, SaysThatACopyTookThePlaceOfTheSource) {
  const QString source = copyOf(plainMovie(), "source.mov");
  load(source, copyOf(retaggedMovie()));
  saveAs(source);
  expectSaid(MessageKind::Success,
             "Saved a copy, \"source.mov\" (SIZE), in TIME. The source goes on with the new file.");
}

TEST_F(ToldOfSaving, SaysWhyACopyFailed) {
  load(plainMovie(), copyOf(retaggedMovie()));
  ASSERT_TRUE(QDir(home_.path()).mkdir("folder.mov"));
  saveAs(home_.filePath("no/such/saved.mov"));
  expectSaid(MessageKind::Failure,
             "The copy \"saved.mov\" was not saved: there is no such folder. Nothing was left behind.");
  saveAs(home_.filePath("folder.mov"));
  expectSaid(MessageKind::Failure, "The copy \"folder.mov\" was not saved: it is a folder. Nothing was left behind.");
}

TEST_F(ToldOfSaving, SaysThatACopyWasCancelledOrCouldNoLongerBe) {
  load(plainMovie(), copyOf(retaggedMovie()));
  bool isComplete = false;
  controller().setCopyWriter([&](movie::Movie& movie, const std::string& path, const auto& progress) {
    const auto written = isComplete ? movie.writeToFile(path, {}) : movie::Result<void>();
    while (progress(1, 2)) std::this_thread::sleep_for(std::chrono::milliseconds(2));
    return isComplete ? written : movie.writeToFile(path, progress);
  });
  QTimer cancels;
  cancels.callOnTimeout([&] {
    for (auto* const bar : interface().window().findChildren<QProgressBar*>()) {
      if (bar->isVisible()) static_cast<QDialog*>(bar->window())->reject();
    }
  });
  cancels.start(10);
  saveAs(home_.filePath("saved.mov"));
  expectSaid(MessageKind::Information, "The copy \"saved.mov\" was cancelled. Nothing was left behind.");
  isComplete = true;
  saveAs(home_.filePath("saved.mov"));
  expectSaid(MessageKind::Success,
             "Saved a copy, \"saved.mov\" (SIZE), in TIME. It was complete before it could be cancelled.");
}

}  // namespace
