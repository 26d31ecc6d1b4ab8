#include <QDialog>
#include <QFile>
#include <QFileDialog>
#include <QPushButton>
#include <QTest>
#include <QTextEdit>
#include <QTimer>

#include <gmock/gmock.h>

#include "tests/app/WindowFixture.h"
#include "tests/check/CapturedLog.h"

namespace {

using testing::AllOf;
using testing::Contains;
using testing::HasSubstr;
using testing::Not;

class SyncAndSave : public WindowFixture {
 protected:
  SyncAndSave() {
    launch();
    QObject::connect(&answers_, &QTimer::timeout, [this] {
      auto* const sheet = qobject_cast<QDialog*>(QApplication::activeModalWidget());
      if (sheet == nullptr || qobject_cast<QFileDialog*>(sheet) != nullptr) return;
      for (const QTextEdit* text : sheet->findChildren<QTextEdit*>()) told_ << text->toPlainText();
      QTest::keyClick(sheet, Qt::Key_Return);
    });
    answers_.start(20);
  }

  QString copyOf(const QString& movie, const QString& name = "dest.mov") {
    const QString path = home_.filePath(name);
    EXPECT_TRUE(QFile::copy(movie, path));
    QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner);
    return path;
  }
  void press(QPushButton* button) { QTest::mouseClick(button, Qt::LeftButton); }
  QFileDialog* panel() {
    for (auto* const each : interface().window().findChildren<QFileDialog*>()) {
      if (each->isVisible()) return each;
    }
    return nullptr;
  }
  static std::optional<std::int32_t> gammaOf(const movie::Movie& movie) {
    return movie.tracksOfMediaType(movie::videoMedia).front()->media().imageDescription(1)->gamma();
  }
  static std::optional<std::int32_t> gammaOf(const QString& path) {
    return gammaOf(**movie::Movie::movieWithFile(path.toStdString()));
  }

  QTimer answers_;
  QStringList told_;
};

constexpr std::int32_t gamma22 = 144179, gamma18 = 117965;

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

TEST_F(SyncAndSave, WritesAFlattenedCopyWhereThePanelSays) {
  const QString dest = copyOf(retaggedMovie()), target = home_.filePath("saved.mov");
  load(plainMovie(), dest);
  press(interface().syncBtn);
  press(interface().saveAsBtn);
  ASSERT_NE(panel(), nullptr);
  EXPECT_EQ(panel()->acceptMode(), QFileDialog::AcceptSave);
  EXPECT_EQ(panel()->windowModality(), Qt::WindowModal);
  EXPECT_EQ(panel()->nameFilters(), QStringList{"Movies (*.mov *.qt *.m4v)"});
  EXPECT_FALSE(panel()->testOption(QFileDialog::ReadOnly));
  controller().savePanelDidEnd(panel(), 0, nullptr);
  EXPECT_FALSE(QFile::exists(target));
  panel()->selectFile(target);
  static_cast<QDialog*>(panel())->done(QDialog::Accepted);
  EXPECT_EQ(gammaOf(target), gamma22);
  EXPECT_EQ(gammaOf(dest), gamma18);
  EXPECT_EQ(destPath(), dest);
  EXPECT_EQ(defaults_->stringForKey("lastDestFile"), dest);
  EXPECT_EQ(pathOf(controller().destQTMov().get()), dest);
}

TEST_F(SyncAndSave, LogsWhyACopyCouldNotBeWritten) {
  load(plainMovie(), copyOf(retaggedMovie()));
  const check::test::CapturedLog log;
  press(interface().saveAsBtn);
  ASSERT_NE(panel(), nullptr);
  panel()->setOption(QFileDialog::DontConfirmOverwrite);
  panel()->selectFile(home_.filePath("no/such/folder/saved.mov"));
  controller().savePanelDidEnd(panel(), 1, nullptr);
  EXPECT_FALSE(log.texts().empty());
}

TEST_F(SyncAndSave, DropsUnsavedChangesOnASwap) {
  const QString dest = copyOf(retaggedMovie());
  load(plainMovie(), dest);
  press(interface().syncBtn);
  controller().swapMovies();
  EXPECT_EQ(gammaOf(controller().sourceQTMov()->content()), gamma18);
}

}  // namespace
