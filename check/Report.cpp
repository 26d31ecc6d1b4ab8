#include "check/Report.h"

#include "SharedFiles/log/QVLog.h"

namespace check {

void ReportConsole::output(const ReportParagraph& paragraph) {
  QVLog::appendLog(paragraph.text);
  append(paragraph);
}

}  // namespace check
