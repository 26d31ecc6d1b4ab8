#include <QApplication>
#include <QClipboard>
#include <QFontDatabase>
#include <QScrollBar>
#include <QTest>
#include <QTextBlock>
#include <thread>

#include <gmock/gmock.h>

#include "SharedFiles/foundation/MainThread.h"
#include "tests/app/WindowFixture.h"
#include "tests/check/CapturedLog.h"

namespace {

class ResultsConsole : public WindowFixture {
 protected:
  ResultsConsole() { launch(); }
  QString text() { return interface().resultsView->toPlainText(); }
  QTextCharFormat formatOf(const QString& part) { return interface().resultsView->document()->find(part).charFormat(); }
};

TEST_F(ResultsConsole, KeepsOneBlankLineBetweenMessages) {
  controller().outputText("left over");
  controller().clearTextView();
  EXPECT_EQ(text(), "");
  controller().outputText("first");
  EXPECT_EQ(text(), "first");
  controller().outputBoldText("second");
  controller().outputErrorText("third");
  EXPECT_EQ(text(), "first\n\nsecond\n\nthird");
}

TEST_F(ResultsConsole, HasFourStyles) {
  struct Row {
    const char* name;
    bool error, bold;
  };
  for (const Row& row :
       {Row{"normal", false, false}, {"bold", false, true}, {"error", true, false}, {"both", true, true}}) {
    controller().outputText(row.name, row.error, row.bold);
    const QTextCharFormat format = formatOf(row.name);
    EXPECT_EQ(format.foreground().color(), QColor(row.error ? Qt::red : Qt::black)) << row.name;
    EXPECT_EQ(format.font().bold(), row.bold) << row.name;
    EXPECT_EQ(format.font().pointSizeF(), 12.0) << row.name;
    EXPECT_EQ(format.font().family(), QFontDatabase::systemFont(QFontDatabase::GeneralFont).family());
  }
}

TEST_F(ResultsConsole, OffersEachStyleAsAnOperation) {
  controller().outputText("n");
  controller().outputBoldText("b");
  controller().outputErrorText("e");
  controller().outputBoldErrorText("x");
  EXPECT_FALSE(formatOf("n").font().bold());
  EXPECT_TRUE(formatOf("b").font().bold());
  EXPECT_FALSE(formatOf("e").font().bold());
  EXPECT_EQ(formatOf("e").foreground().color(), QColor(Qt::red));
  EXPECT_TRUE(formatOf("x").font().bold());
  EXPECT_EQ(formatOf("x").foreground().color(), QColor(Qt::red));
}

TEST_F(ResultsConsole, ShowsPerCentSignsAndLogsTheTextAsAFormat) {
  const check::test::CapturedLog log;
  controller().outputText("50%% of %@");
  EXPECT_EQ(text(), "50%% of %@");
  EXPECT_THAT(log.texts(), testing::ElementsAre("50% of %@"));
}

TEST_F(ResultsConsole, CannotBeTypedInto) {
  controller().outputText("as it is");
  interface().resultsView->setFocus();
  QTest::keyClicks(interface().resultsView, "typed");
  QTest::keyClick(interface().resultsView, Qt::Key_Backspace);
  EXPECT_EQ(text(), "as it is");
  EXPECT_TRUE(interface().resultsView->isReadOnly());
}

TEST_F(ResultsConsole, CanBeSelectedAndCopied) {
  controller().outputText("to the clipboard");
  interface().resultsView->setFocus();
  QTest::keyClick(interface().resultsView, Qt::Key_A, Qt::ControlModifier);
  QTest::keyClick(interface().resultsView, Qt::Key_C, Qt::ControlModifier);
  EXPECT_EQ(QApplication::clipboard()->text(), "to the clipboard");
}

TEST_F(ResultsConsole, ScrollsToTheEnd) {
  for (int i = 0; i < 100; ++i) controller().outputText(QString::number(i));
  const QScrollBar& bar = *interface().resultsView->verticalScrollBar();
  EXPECT_GT(bar.maximum(), 0);
  EXPECT_EQ(bar.value(), bar.maximum());
  interface().window().resize(interface().window().minimumSize());
  runFor(50);
  EXPECT_EQ(bar.value(), bar.maximum());
}

TEST_F(ResultsConsole, StaysWhiteInADarkTheme) {
  const QPalette light = QApplication::palette();
  QPalette dark(QColor(40, 40, 40));
  QApplication::setPalette(dark);
  controller().outputText("black on white");
  EXPECT_EQ(interface().resultsView->palette().color(QPalette::Base), QColor(Qt::white));
  EXPECT_EQ(formatOf("black on white").foreground().color(), QColor(Qt::black));
  QApplication::setPalette(light);
}

TEST_F(ResultsConsole, KeepsTheOrderOfMessagesFromAnotherThread) {
  bool ended = false;
  std::thread writer([&] {
    ViewConsole console(*interface().resultsView);
    for (const char* message : {"one", "two", "three"}) console.outputText(message);
    MainThread::perform([&] { ended = true; });
  });
  EXPECT_TRUE(waitUntil([&] { return ended; }));
  writer.join();
  EXPECT_EQ(text(), "one\n\ntwo\n\nthree");
}

}  // namespace
