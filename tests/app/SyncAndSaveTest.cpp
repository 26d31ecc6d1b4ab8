#include <functional>
#include <memory>
#include <thread>
#include <utility>

#include <gmock/gmock.h>

#include "tests/app/SaveFixture.h"

namespace {

using testing::AllOf;
using testing::Contains;
using testing::HasSubstr;
using testing::Not;

class SyncAndSave : public SaveFixture {};

TEST_F(SyncAndSave, CopiesTheMetadataOntoTheDestinationInMemory) {
  const QString dest = copyOf(retaggedMovie());
  load(plainMovie(), dest);
  destView().stepFrames(5);
  const auto before = controller().destQTDisplayMov();
  const check::test::CapturedLog log;
  press(interface().syncBtn);
  EXPECT_EQ(told_, (QStringList{"Metadata sync complete", "Please check the destination preview and save the file."}));
  const auto texts = log.texts();
  EXPECT_EQ(texts.front(), "Syncing metadata...");
  EXPECT_EQ(texts.back(), "Metadata sync complete.");
  EXPECT_THAT(texts, Contains("Gamma does not match"));
  EXPECT_EQ(gammaOf(controller().destQTMov()->content()), gamma22);
  EXPECT_EQ(gammaOf(dest), gamma18);

  const auto display = controller().destQTDisplayMov();
  EXPECT_NE(display, before);
  EXPECT_EQ(destView().movie(), display);
  EXPECT_EQ(gammaOf(display->content()), gamma22);
  EXPECT_FALSE(display->isEditable());
  EXPECT_EQ(display->currentTime().value, 0);
  display->setCurrentTime({1, 2, 0});
  EXPECT_NE(movie::secondsOf(sourceView().movie()->currentTime()), 0.5);  // nobody observes it
}

TEST_F(SyncAndSave, AnswersWithTheAlertAlsoWhenThereIsNothingToSync) {
  const check::test::CapturedLog log;
  load("/nowhere", "/nowhere");
  press(interface().syncBtn);
  EXPECT_EQ(told_.value(0), "Metadata sync complete");
  EXPECT_THAT(log.texts(), testing::ElementsAre("Syncing metadata...", "Metadata sync complete."));
}

TEST_F(SyncAndSave, TellsWhatAnInterruptedSaveHadLeft) {
  const QString dest = copyOf(retaggedMovie());
  QFile file(dest);
  ASSERT_TRUE(file.open(QIODevice::Append));
  file.write(QByteArray(8, '\0'));
  file.close();
  load(plainMovie(), dest);
  press(interface().syncBtn);
  const check::test::CapturedLog log;
  press(interface().saveBtn);
  EXPECT_THAT(log.texts(), Contains("The end of the file, which an interrupted save had left, was cut away."));
  EXPECT_EQ(gammaOf(dest), gamma22);
}

TEST_F(SyncAndSave, UpdatesTheFileInPlace) {
  const QString dest = copyOf(retaggedMovie());
  load(plainMovie(), dest);
  press(interface().syncBtn);
  const check::test::CapturedLog log;
  press(interface().saveBtn);
  EXPECT_THAT(log.texts(), AllOf(Contains("Saving..."), Contains("Updating original file")));
  EXPECT_EQ(panel(), nullptr);
  EXPECT_EQ(gammaOf(dest), gamma22);
  press(interface().checkBtn);
  EXPECT_TRUE(interface().resultsView->toPlainText().contains("Source and destination gamma metadata match."));
  press(interface().syncBtn);
  press(interface().saveBtn);
  EXPECT_EQ(gammaOf(dest), gamma22);
}

/// Looks into a file while a line about its update is written.
class FileAtUpdate : public LogSink {
 public:
  explicit FileAtUpdate(std::function<std::optional<std::int32_t>()> gamma) : gamma_(std::move(gamma)) {}
  void write(const QByteArray& line) override {
    if (line.contains("Updating original file")) seen_ = gamma_();
  }
  std::optional<std::int32_t> seen() const { return seen_; }

 private:
  std::function<std::optional<std::int32_t>()> gamma_;
  std::optional<std::int32_t> seen_;
};

TEST_F(SyncAndSave, SaysThatItUpdatesTheFileBeforeItDoes) {
  const QString dest = copyOf(retaggedMovie());
  load(plainMovie(), dest);
  press(interface().syncBtn);
  const auto sink = std::make_shared<FileAtUpdate>([dest] { return gammaOf(dest); });
  check::test::sendLogTo(sink);
  std::thread([this] { controller().saveDest(); }).join();  // on which each short line is waited for
  check::test::sendLogTo(std::make_shared<check::test::DiscardingSink>());
  EXPECT_EQ(sink->seen(), gamma18);
  EXPECT_EQ(gammaOf(dest), gamma22);
}

TEST_F(SyncAndSave, ShowsTheFramesOfAMovieThatWasSaved) {
  load(plainMovie(), copyOf(groupedMovie()));
  press(interface().syncBtn);
  press(interface().saveBtn);
  destView().scrubTo(0.5);
  ASSERT_TRUE(waitUntil([&] { return !destView().picture().isNull(); }));
  EXPECT_EQ(destView().message(), "");
}

TEST_F(SyncAndSave, SavesAsWhatCannotBeUpdated) {
  const QString dest = copyOf(retaggedMovie());
  load(plainMovie(), dest);
  QFile changed(dest);
  ASSERT_TRUE(changed.open(QIODevice::Append) && changed.write("changed meanwhile") > 0);
  changed.close();
  const check::test::CapturedLog log;
  press(interface().saveBtn);
  EXPECT_THAT(log.texts(), AllOf(Contains("Cannot update file... saving as"), Contains(HasSubstr("changed on disk")),
                                 Not(Contains("Updating original file"))));
  ASSERT_NE(panel(), nullptr);
  panel()->reject();
  EXPECT_EQ(pathOf(controller().destQTMov().get()), dest);
}

TEST_F(SyncAndSave, DropsUnsavedChangesOnASwap) {
  const QString dest = copyOf(retaggedMovie());
  load(plainMovie(), dest);
  press(interface().syncBtn);
  controller().swapMovies();
  EXPECT_EQ(gammaOf(controller().sourceQTMov()->content()), gamma18);
}

TEST_F(SyncAndSave, AnswersWithTheAlertAlsoWhenOneMovieIsMissing) {
  for (const bool sourceMissing : {true, false}) {
    const check::test::CapturedLog log;
    load(sourceMissing ? "/nowhere" : plainMovie(), sourceMissing ? retaggedMovie() : "/nowhere");
    told_.clear();
    press(interface().syncBtn);
    EXPECT_EQ(told_.value(0), "Metadata sync complete");
    EXPECT_THAT(log.texts(), testing::ElementsAre("Syncing metadata...", "Metadata sync complete."));
  }
}

TEST_F(SyncAndSave, SyncsTwice) {
  load(plainMovie(), copyOf(retaggedMovie()));
  press(interface().syncBtn);
  const check::test::CapturedLog log;
  press(interface().syncBtn);
  EXPECT_THAT(log.texts(), Not(Contains("Gamma does not match")));
  EXPECT_EQ(gammaOf(controller().destQTMov()->content()), gamma22);
  EXPECT_EQ(told_.size(), 4);
}

TEST_F(SyncAndSave, StopsThePreviewThatPlays) {
  load(plainMovie(), copyOf(retaggedMovie()));
  const auto before = controller().destQTDisplayMov();
  destView().play(1);
  ASSERT_TRUE(waitUntil([&] { return destView().movie()->currentTime().value > 0; }));
  press(interface().syncBtn);
  EXPECT_EQ(before->rate(), 0);
  EXPECT_EQ(destView().movie()->rate(), 0);
  EXPECT_EQ(destView().movie()->currentTime().value, 0);
  destView().play(1);
  EXPECT_TRUE(waitUntil([&] { return destView().movie()->currentTime().value > 0; }));
}

TEST_F(SyncAndSave, SavesWhileThePreviewsPlay) {
  const QString dest = copyOf(retaggedMovie());
  load(plainMovie(), dest);
  press(interface().syncBtn);
  destView().play(1);
  press(interface().saveBtn);
  EXPECT_EQ(gammaOf(dest), gamma22);
  EXPECT_EQ(destView().movie()->rate(), 1);
  EXPECT_TRUE(waitUntil([&] { return !destView().picture().isNull(); }));
  EXPECT_EQ(destView().message(), "");
}

TEST_F(SyncAndSave, SavesAsWhenThereIsNoMovie) {
  const check::test::CapturedLog log;
  press(interface().saveBtn);
  EXPECT_THAT(log.texts(), testing::ElementsAre("Saving...", "Cannot update file... saving as",
                                                "Cannot save the movie: no movie is loaded."));
  answerPanel(home_.filePath("nothing.mov"));
  EXPECT_FALSE(QFile::exists(home_.filePath("nothing.mov")));
}

TEST_F(SyncAndSave, SavesAsWhatIsNoLongerThere) {
  for (const bool replaced : {false, true}) {
    const QString dest = copyOf(retaggedMovie()), target = home_.filePath("saved.mov");
    load(plainMovie(), dest);
    press(interface().syncBtn);
    ASSERT_TRUE(QFile::remove(dest));
    if (replaced) copyOf(darkerMovie());
    const check::test::CapturedLog log;
    press(interface().saveBtn);
    EXPECT_THAT(log.texts(), Contains(HasSubstr(replaced ? "changed on disk" : "there is no such file")));
    answerPanel(target);
    EXPECT_EQ(gammaOf(target), gamma22);
    if (replaced) {
      EXPECT_EQ(contents(dest), contents(darkerMovie()));
    }
    QFile::remove(dest);
    QFile::remove(target);
  }
}

}  // namespace
