#include "cli/scan/ScanCsv.h"

#include <cmath>
#include <cstdio>

namespace cli {

std::string scanCsv(const scan::ScanResult& result, const scan::MoviePair& rows) {
  std::string text = "frame,time,sourceFrame,sourceTime,distance,exponent,spread,identical,blended,flat\r\n";
  char line[200];
  for (std::size_t i = 0; i < result.matches.frames.size(); ++i) {
    const scan::FrameMatch& match = result.matches.frames[i];
    const std::size_t frame = result.matches.frameOf(i);
    std::snprintf(line, sizeof line, "%zu,%.6f,", frame, rows.dest->timeOf(frame));
    text += line;
    if (match.isMatched()) {
      const auto source = static_cast<std::size_t>(match.source);
      std::snprintf(line, sizeof line, "%zu,%.6f,", source, rows.source->timeOf(source));
      text += line;
    } else {
      text += ",,";
    }
    std::snprintf(line, sizeof line, "%.3f,", static_cast<double>(match.distance));
    text += line;
    if (match.isMeasured()) {
      std::snprintf(line, sizeof line, "%.4f,%.4f,", std::exp(static_cast<double>(match.logExponent)),
                    static_cast<double>(match.spread));
      text += line;
    } else {
      text += ",,";
    }
    std::snprintf(line, sizeof line, "%d,%d,%d\r\n", match.identical ? 1 : 0, match.blended ? 1 : 0,
                  match.flat ? 1 : 0);
    text += line;
  }
  return text;
}

}  // namespace cli
