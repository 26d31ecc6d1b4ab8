#include "cli/ReportText.h"

#include <cstdlib>
#include <string_view>

#include <unistd.h>

namespace cli {
namespace {

// In the order of check::ReportStyle.
constexpr const char* styleStarts[] = {"", "\x1b[1m", "\x1b[31m", "\x1b[1;31m"};

std::string styled(const check::ReportParagraph& paragraph) {
  const std::string start = styleStarts[static_cast<std::size_t>(paragraph.style)];
  const std::string text = paragraph.text.toStdString();
  return start.empty() ? text : start + text + "\x1b[0m";
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
