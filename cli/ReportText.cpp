#include "cli/ReportText.h"

#include <cstdlib>
#include <string_view>

#include <unistd.h>

namespace cli {
namespace {

std::string_view startOf(check::ReportStyle style) {
  switch (style) {
    case check::ReportStyle::Bold:
      return "\x1b[1m";
    case check::ReportStyle::Error:
      return "\x1b[31m";
    case check::ReportStyle::BoldError:
      return "\x1b[1;31m";
    case check::ReportStyle::Normal:
      break;
  }
  return "";
}

std::string styled(const check::ReportParagraph& paragraph) {
  const std::string_view start = startOf(paragraph.style);
  const std::string text = paragraph.text.toStdString();
  return start.empty() ? text : std::string(start) + text + "\x1b[0m";
}

}  // namespace

TextStyling stylingOfStandardOutput() {
  const char* noColor = std::getenv("NO_COLOR");
  const char* terminal = std::getenv("TERM");
  const bool wanted = noColor == nullptr || *noColor == '\0';
  const bool able = terminal != nullptr && *terminal != '\0' && std::string_view(terminal) != "dumb";
  return wanted && able && ::isatty(STDOUT_FILENO) == 1 ? TextStyling::Terminal : TextStyling::Plain;
}

std::string reportText(const std::vector<check::ReportParagraph>& paragraphs, TextStyling styling) {
  const std::string separator = check::reportSeparator.toStdString();
  std::string text;
  for (const check::ReportParagraph& paragraph : paragraphs) {
    if (!text.empty()) text += separator;
    text += styling == TextStyling::Terminal ? styled(paragraph) : paragraph.text.toStdString();
  }
  return text.empty() ? text : text + "\n";
}

}  // namespace cli
