#include "cli/plot/ScanWords.h"

#include <cmath>
#include <cstdio>

#include "SharedFiles/timecode/QVQuickTime.h"
#include "diagnosis/words/CauseWords.h"

namespace cli {

FrameClock frameClock(const movie::Movie& movie, const scan::MovieRow& row) {
  const bool counts = QVQuickTime::fpsForMovie(&movie) > 0;
  return [&movie, &row, counts](std::size_t frame) {
    if (!counts) return fixedPoint(row.timeOf(frame), 3) + " s";
    return QVQuickTime::timecodeAtTime(row.movieTimeOf(frame), &movie).toStdString();
  };
}

std::string fixedPoint(double value, int places) {
  char text[40];
  std::snprintf(text, sizeof text, "%.*f", places, value);
  return text;
}

std::string countedNoun(std::size_t count, const char* one, const char* several) {
  return count == 1 ? std::string("1 ") + one : std::to_string(count) + " " + several;
}

std::string segmentWords(const scan::Segment& segment) {
  return diagnosis::causeWords(segment.causes) + " (sure by " + fixedPoint(std::floor(100 * segment.confidence()), 0) +
         " %)";
}

std::string patternWords(scan::Pattern pattern) {
  switch (pattern) {
    case scan::Pattern::FrameForFrame:
      break;
    case scan::Pattern::Pulldown:
      return "with a pulldown";
    case scan::Pattern::Blended:
      return "with frames blended into another rate";
    case scan::Pattern::Dropped:
      return "with frames left out";
    case scan::Pattern::Duplicated:
      return "with frames shown twice";
    case scan::Pattern::Retimed:
      return "frame for frame, at another speed";
  }
  return "frame for frame";
}

std::string mapPieceWords(const scan::MapPiece& piece) {
  std::string words = patternWords(piece.pattern);
  if (std::abs(piece.line.rate - 1) <= 1e-6) return words;
  return words + " (" + fixedPoint(piece.line.rate, 6) + " of its speed)";
}

std::string unmeasuredWords(scan::Unmeasured why) {
  return why == scan::Unmeasured::Dark ? "black, or of one color" : "no calm tones between black and white";
}

std::string gapWords(const scan::Gap& gap, const ScanClocks& clocks) {
  return countedNoun(gap.source.count(), "frame", "frames") + " of the source dropped, from " +
         clocks.source(gap.source.first) + ", before " + clocks.dest(gap.before);
}

bool isWorthTelling(const scan::WorstFrame& worst) {
  return std::abs(std::log(worst.exponent)) > 0.01;
}

std::vector<std::string> scanRemarks(const scan::ScanResult& result, const ScanClocks& clocks) {
  std::vector<std::string> remarks;
  if (result.correspondence == scan::Beginning::Result::Still && !result.segments.empty()) {
    remarks.emplace_back("The pictures do not move: the offset in time cannot be told; the shift can.");
  }
  if (result.failure) {
    const bool isSource = result.failure->side == scan::ReadFailure::Side::Source;
    remarks.push_back(std::string(isSource ? "The source" : "The destination") + " cannot be read from " +
                      (isSource ? clocks.source : clocks.dest)(result.failure->frame) +
                      " on: " + result.failure->error.message());
  }
  if (result.stopped) {
    remarks.push_back("Stopped at " + clocks.dest(result.scanned.end) + ": what was found until then.");
  }
  return remarks;
}

}  // namespace cli
