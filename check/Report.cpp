#include "check/Report.h"

#include "SharedFiles/log/QVLog.h"

namespace check {

void ReportConsole::output(const ReportParagraph& paragraph) {
  QVLog::appendLog(paragraph.text);
  append(paragraph);
}

// outputText:
void ReportConsole::outputText(const QString& text) {
  output({text, ReportStyle::Normal});
}

// outputBoldText:
void ReportConsole::outputBoldText(const QString& text) {
  output({text, ReportStyle::Bold});
}

// outputErrorText:
void ReportConsole::outputErrorText(const QString& text) {
  output({text, ReportStyle::Error});
}

// outputBoldErrorText:
void ReportConsole::outputBoldErrorText(const QString& text) {
  output({text, ReportStyle::BoldError});
}

}  // namespace check
