// Where Save As writes, and what the window goes on with.

#include <QCheckBox>
#include <QDir>
#include <QFileInfo>
#include <QLineEdit>
#include <filesystem>

#include <gmock/gmock.h>
#include <unistd.h>

#include "tests/app/SaveFixture.h"

namespace {

using testing::Contains;
using testing::HasSubstr;
using testing::Not;

class SaveAs : public SaveFixture {
 protected:
  static bool holds(const LumacheckAppDelegate::MovieSlot& movie, const QString& path) {
    return pathOf(movie.get()) == path && movie->content().standsAtItsPath();
  }
  bool showsFrames(QVMovieView& view) {
    view.scrubTo(0.5);
    return waitUntil([&] { return !view.picture().isNull(); }) && view.message().isEmpty();
  }
};

TEST_F(SaveAs, WritesAFlattenedCopyWhereThePanelSays) {
  const QString dest = copyOf(retaggedMovie()), target = home_.filePath("saved.mov");
  load(plainMovie(), dest);
  press(interface().syncBtn);
  press(interface().saveAsBtn);
  ASSERT_NE(panel(), nullptr);
  EXPECT_EQ(panel()->acceptMode(), QFileDialog::AcceptSave);
  EXPECT_EQ(panel()->windowModality(), Qt::WindowModal);
  EXPECT_EQ(panel()->nameFilters(), QStringList{"Movies (*)"});
  EXPECT_FALSE(panel()->testOption(QFileDialog::ReadOnly));
  EXPECT_FALSE(panel()->testOption(QFileDialog::DontConfirmOverwrite));
  controller().savePanelDidEnd(panel(), 0, nullptr);
  EXPECT_FALSE(QFile::exists(target));
  answerPanel(target);
  EXPECT_EQ(gammaOf(target), gamma22);
  EXPECT_EQ(gammaOf(dest), gamma18);
  EXPECT_EQ(destPath(), dest);
  EXPECT_EQ(defaults_->stringForKey("lastDestFile"), dest);
  EXPECT_EQ(pathOf(controller().destQTMov().get()), dest);
}

TEST_F(SaveAs, ChangesNothingWhenThePanelIsCancelled) {
  load(plainMovie(), copyOf(retaggedMovie()));
  press(interface().saveAsBtn);
  const check::test::CapturedLog log;
  ASSERT_NE(panel(), nullptr);
  panel()->selectFile(home_.filePath("saved.mov"));
  panel()->reject();
  EXPECT_FALSE(QFile::exists(home_.filePath("saved.mov")));
  EXPECT_TRUE(log.texts().empty());
}

TEST_F(SaveAs, GoesOnWithTheNewFileWhereItReplacedItsOwn) {
  const QString dest = copyOf(retaggedMovie());
  load(plainMovie(), dest);
  press(interface().syncBtn);
  interface().dest.filenameText->setText("typed, not entered");
  const auto master = controller().destQTMov(), display = controller().destQTDisplayMov();
  saveAs(dest);
  EXPECT_EQ(controller().destQTMov(), master);
  EXPECT_EQ(controller().destQTDisplayMov(), display);
  EXPECT_EQ(destView().movie(), display);
  EXPECT_TRUE(holds(master, dest));
  EXPECT_TRUE(holds(display, dest));
  EXPECT_EQ(destPath(), "typed, not entered");
  EXPECT_EQ(gammaOf(master->content()), gamma22);
  EXPECT_FALSE(display->isEditable());
  EXPECT_TRUE(showsFrames(destView()));

  load(retaggedMovie(), dest);
  press(interface().syncBtn);
  saveAs(dest);
  press(interface().syncBtn);
  const check::test::CapturedLog log;
  press(interface().saveBtn);
  EXPECT_THAT(log.texts(), Not(Contains("Cannot update file... saving as")));
  EXPECT_EQ(gammaOf(dest), gamma18);
}

TEST_F(SaveAs, KeepsThePlayheadOfAMovieWhoseFileItReplaced) {
  const QString dest = copyOf(retaggedMovie());
  load(plainMovie(), dest);
  destView().stepFrames(5);
  const movie::MovieTime time = destView().movie()->currentTime();
  interface().linkBtn->setChecked(false);
  saveAs(dest);
  EXPECT_EQ(destView().movie()->currentTime(), time);
  EXPECT_FALSE(interface().linkBtn->isChecked());
  destView().stepFrames(1);
  EXPECT_TRUE(showsFrames(destView()));
}

TEST_F(SaveAs, ReopensTheSourceWhoseFileItReplaced) {
  for (const bool throughLink : {false, true}) {
    const QString source = copyOf(plainMovie(), "source.mov"), dest = copyOf(dropFrameMovie());
    const QString link = home_.filePath("link.mov");
    load(source, dest);
    sourceView().stepFrames(49);
    EXPECT_FALSE(interface().linkBtn->isEnabled());
    if (throughLink) {
      ASSERT_TRUE(QFile::link(source, link));
    }
    saveAs(throughLink ? link : source);
    EXPECT_EQ(QFileInfo(link).isSymLink(), throughLink);
    EXPECT_TRUE(holds(controller().sourceQTMov(), source));
    EXPECT_TRUE(holds(controller().sourceQTDisplayMov(), source));
    EXPECT_TRUE(holds(controller().destQTMov(), dest));
    const auto shown = sourceView().movie();
    EXPECT_EQ(movie::secondsOf(shown->duration()), movie::secondsOf(destView().movie()->duration()));
    EXPECT_TRUE(interface().linkBtn->isEnabled());
    EXPECT_TRUE(showsFrames(sourceView()));
    EXPECT_EQ(defaults_->stringForKey("lastSourceFile"), source);
    press(interface().checkBtn);
    EXPECT_TRUE(interface().resultsView->toPlainText().contains("No noticeable gamma shift was found."));
    for (const QString& each : {source, dest, link}) QFile::remove(each);
  }
}

TEST_F(SaveAs, StopsAtTheEndOfAShorterMovieThatReplacedTheSource) {
  const QString source = copyOf(longMovie(), "source.mov");
  load(source, copyOf(plainMovie()));
  sourceView().movie()->setCurrentTime({.value = 30, .scale = 1});
  saveAs(source);
  EXPECT_EQ(movie::secondsOf(sourceView().movie()->currentTime()), 2);
}

TEST_F(SaveAs, LeavesTheSourceAloneWhoseOtherNameItTook) {
  const QString source = copyOf(plainMovie(), "source.mov"), other = home_.filePath("other.mov");
  std::filesystem::create_hard_link(source.toStdString(), other.toStdString());
  const auto before = contents(source);
  load(source, copyOf(retaggedMovie()));
  saveAs(other);
  EXPECT_EQ(contents(source), before);
  EXPECT_TRUE(holds(controller().sourceQTMov(), source));
  EXPECT_EQ(gammaOf(other), gamma18);
}

TEST_F(SaveAs, ReopensBothSidesThatHoldOneFile) {
  const QString file = copyOf(retaggedMovie());
  load(file, file);
  saveAs(file);
  for (const auto& each : {controller().sourceQTMov(), controller().sourceQTDisplayMov(), controller().destQTMov(),
                           controller().destQTDisplayMov()}) {
    EXPECT_TRUE(holds(each, file));
  }
  EXPECT_TRUE(showsFrames(sourceView()));
}

TEST_F(SaveAs, PutsAMovieBackThatWasDeleted) {
  const QString dest = copyOf(retaggedMovie());
  load(plainMovie(), dest);
  press(interface().syncBtn);
  ASSERT_TRUE(QFile::remove(dest));
  saveAs(dest);
  EXPECT_EQ(gammaOf(dest), gamma22);
  EXPECT_TRUE(holds(controller().destQTMov(), dest));
}

TEST_F(SaveAs, LogsWhyACopyCouldNotBeWritten) {
  const QString dest = copyOf(retaggedMovie()), locked = copyOf(plainMovie(), "locked.mov");
  ASSERT_TRUE(QFile::setPermissions(locked, QFile::ReadOwner));
  ASSERT_TRUE(QDir(home_.path()).mkdir("folder.mov"));
  struct Row {
    QString target;
    const char* reason;
  };
  std::vector<Row> rows{{home_.filePath("no/such/folder/saved.mov"), "there is no such folder"},
                        {home_.filePath("folder.mov"), "it is a folder"}};
  if (::geteuid() != 0) rows.push_back({locked, "there is no permission to write there"});
  load(locked, dest);
  press(interface().syncBtn);
  for (const Row& row : rows) {
    const check::test::CapturedLog log;
    saveAs(row.target);
    EXPECT_THAT(log.texts(), testing::ElementsAre(HasSubstr(row.reason)));
    EXPECT_TRUE(holds(controller().destQTMov(), dest));
    EXPECT_TRUE(holds(controller().sourceQTMov(), locked));
    EXPECT_EQ(gammaOf(controller().destQTMov()->content()), gamma22);  // what is not saved is not lost
  }
}

TEST_F(SaveAs, WritesTheMovieThatIsLoadedWhenThePanelEnds) {
  const QString target = home_.filePath("saved.mov");
  load(plainMovie(), copyOf(retaggedMovie()));
  press(interface().saveAsBtn);
  controller().filesDroppedOnMovieView(&destView(), {darkerMovie()});
  answerPanel(target);
  EXPECT_EQ(gammaOf(target), gamma22);
}

}  // namespace
