#include "cli/FindingBlock.h"

#include <cstdio>

#include "SharedFiles/timecode/QVQuickTime.h"
#include "diagnosis/words/FindingText.h"

namespace cli {
namespace {

std::string line(const char* label, const std::string& text) {
  return text.empty() ? std::string() : label + text + "\n";
}

std::string secondsText(const movie::MovieTime& time) {
  char text[40];
  std::snprintf(text, sizeof text, "%.3f s", movie::secondsOf(time));
  return text;
}

}  // namespace

std::string namedSide(const movie::Movie& movie, const movie::MovieTime& time) {
  const bool counted = QVQuickTime::fpsForMovie(&movie) > 0;
  return movie.path() + " at " +
         (counted ? QVQuickTime::timecodeAtTime(time, &movie).toStdString() : secondsText(time));
}

std::string findingBlock(const diagnosis::Finding& finding, const NamedSides& sides, TextStyling styling) {
  const diagnosis::FindingText text = diagnosis::textOf(finding);
  const bool bold = styling == TextStyling::Terminal;
  return line("Finding: ", bold ? "\x1b[1m" + text.verdict + "\x1b[0m" : text.verdict) + line("Why: ", text.why) +
         line("What to do: ", text.advice) + line("Source: ", sides.source) + line("Destination: ", sides.dest) + "\n";
}

}  // namespace cli
