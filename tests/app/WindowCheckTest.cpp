#include <QDialog>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QPushButton>
#include <QTest>
#include <QTextBlock>
#include <QTextEdit>
#include <QTimer>

#include <gmock/gmock.h>

#include "check/GammaCheck.h"
#include "tests/app/WindowFixture.h"

namespace {

class WindowCheck : public WindowFixture {
 protected:
  WindowCheck() { launch(); }

  QString report() { return interface().resultsView->toPlainText(); }
  /// The report on the same files at the same times, without a window.
  static std::vector<check::ReportParagraph> expected(const QString& source, const QString& dest,
                                                      const check::Playheads& playheads) {
    const auto open = [](const QString& path) { return *movie::Movie::movieWithFile(path.toStdString()); };
    check::RecordedReport report;
    check::runGammaCheck({*open(source), *open(dest), playheads, {}}, report);
    return report.paragraphs();
  }
  static std::vector<check::ReportParagraph> reportOfCommand(const QString& source, const QString& dest,
                                                             const char* timecode) {
    QProcess command;
    command.start(LUMACHECK_PROGRAM, {"check", source, dest, "--at", timecode, "--json"});
    EXPECT_TRUE(command.waitForFinished(20000));
    const QJsonObject result = QJsonDocument::fromJson(command.readAllStandardOutput()).object();
    const QMap<QString, check::ReportStyle> styles{{"normal", check::ReportStyle::Normal},
                                                   {"bold", check::ReportStyle::Bold},
                                                   {"error", check::ReportStyle::Error},
                                                   {"boldError", check::ReportStyle::BoldError}};
    std::vector<check::ReportParagraph> paragraphs;
    for (const QJsonValue& paragraph : result["report"].toArray()) {
      paragraphs.push_back({paragraph["text"].toString(), styles.value(paragraph["style"].toString())});
    }
    EXPECT_FALSE(paragraphs.empty());
    return paragraphs;
  }
  /// The window's text as paragraphs with their styles.
  std::vector<check::ReportParagraph> paragraphs() {
    std::vector<check::ReportParagraph> found;
    for (QTextBlock block = interface().resultsView->document()->begin(); block.isValid(); block = block.next()) {
      for (auto part = block.begin(); !part.atEnd(); ++part) {
        const QTextCharFormat format = part.fragment().charFormat();
        const bool red = format.foreground().color() == QColor(Qt::red), bold = format.font().bold();
        using check::ReportStyle;
        const ReportStyle style = red ? (bold ? ReportStyle::BoldError : ReportStyle::Error)
                                      : (bold ? ReportStyle::Bold : ReportStyle::Normal);
        const bool continues = !found.empty() && block.previous().isValid() && !block.previous().text().isEmpty();
        if (continues) {
          found.back().text += '\n' + part.fragment().text();
        } else {
          found.push_back({part.fragment().text(), style});
        }
      }
    }
    return found;
  }
  check::Playheads playheads() { return {sourceView().movie()->currentTime(), destView().movie()->currentTime()}; }
  void press() { QTest::mouseClick(interface().checkBtn, Qt::LeftButton); }
};

TEST_F(WindowCheck, ReportsWhatTheEngineReports) {
  const std::pair<QString, QString> pairs[] = {{plainMovie(), plainMovie()},
                                               {plainMovie(), retaggedMovie()},
                                               {plainMovie(), darkerMovie()},
                                               {retaggedMovie(), darkerMovie()},
                                               {plainMovie(), groupedMovie()}};
  for (const auto& [source, dest] : pairs) {
    load(source, dest);
    sourceView().stepFrames(7);
    const auto wanted = expected(source, dest, playheads());
    press();
    EXPECT_EQ(paragraphs(), wanted) << report().toStdString();
  }
}

TEST_F(WindowCheck, ReportsWhatTheCommandReports) {
  const std::pair<QString, QString> pairs[] = {{plainMovie(), plainMovie()},
                                               {plainMovie(), retaggedMovie()},
                                               {plainMovie(), darkerMovie()},
                                               {blackMovie(), blackMovie()}};
  QTimer answers;
  QObject::connect(&answers, &QTimer::timeout, [] {
    if (QWidget* const sheet = QApplication::activeModalWidget()) sheet->close();
  });
  answers.start(50);
  for (const auto& [source, dest] : pairs) {
    for (const char* timecode : {"01:00:00:00", "01:00:01:07"}) {
      load(source, dest);
      type(*interface().source.timecodeText, timecode);
      press();
      EXPECT_EQ(paragraphs(), reportOfCommand(source, dest, timecode)) << timecode;
    }
  }
}

TEST_F(WindowCheck, StopsPlaybackAndChecksTheFramesThatAreShown) {
  load(plainMovie(), darkerMovie());
  sourceView().play(1);
  ASSERT_TRUE(waitUntil([&] { return movie::secondsOf(sourceView().movie()->currentTime()) > 0.4; }));
  press();
  EXPECT_EQ(sourceView().movie()->rate(), 0);
  EXPECT_EQ(paragraphs(), expected(plainMovie(), darkerMovie(), playheads()));
}

TEST_F(WindowCheck, LeavesTheMastersAndTheControlsAlone) {
  load(plainMovie(), retaggedMovie());
  const auto before =
      controller().destQTMov()->content().tracksOfMediaType(movie::videoMedia).front()->media().sampleDescription(1);
  press();
  EXPECT_EQ(
      controller().destQTMov()->content().tracksOfMediaType(movie::videoMedia).front()->media().sampleDescription(1),
      before);
  EXPECT_TRUE(interface().checkBtn->isEnabled());
}

TEST_F(WindowCheck, ReplacesTheReportOfTheCheckBefore) {
  load(plainMovie(), darkerMovie());
  press();
  press();
  EXPECT_EQ(report().count("Checking files..."), 1);
}

TEST_F(WindowCheck, SaysThatTheSourceFrameIsTooDark) {
  load(blackMovie(), plainMovie());
  QString shown;
  QTimer::singleShot(100, [&] {
    for (QWidget* widget : QApplication::topLevelWidgets()) {
      auto* const sheet = qobject_cast<QDialog*>(widget);
      if (sheet == nullptr || !sheet->isVisible()) continue;
      for (const QTextEdit* text : sheet->findChildren<QTextEdit*>()) shown += text->toPlainText() + '|';
      EXPECT_EQ(sheet->parentWidget(), &interface().window());
      QTest::keyClick(sheet, Qt::Key_Return);
    }
  });
  press();
  EXPECT_TRUE(shown.contains(check::tooDarkMessageText)) << shown.toStdString();
  EXPECT_TRUE(shown.contains(check::tooDarkInformativeText));
  EXPECT_EQ(paragraphs(), expected(blackMovie(), plainMovie(), playheads()));
}

TEST_F(WindowCheck, AnswersForEmptySides) {
  press();
  EXPECT_TRUE(report().startsWith("Checking files...\n\nNo noticeable gamma shift detected"));
  controller().loadQTMovieWithPath("/nowhere", "source");
  press();
  EXPECT_TRUE(report().endsWith("No noticeable gamma shift was found."));
}

TEST_F(WindowCheck, IsTheDefaultButton) {
  load(plainMovie(), retaggedMovie());
  sourceView().setFocus();
  QTest::keyClick(&sourceView(), Qt::Key_Return);
  EXPECT_TRUE(report().startsWith("Checking files..."));
}

TEST_F(WindowCheck, IsNotPressedByReturnInAField) {
  type(*interface().source.filenameText, plainMovie());
  EXPECT_EQ(report(), "");
  type(*interface().source.timecodeText, "1:00");  // hands the focus on
  EXPECT_EQ(report(), "");
  QTest::keyClick(interface().window().focusWidget(), Qt::Key_Return);
  EXPECT_NE(report(), "");
}

}  // namespace
