#pragma once

#include <functional>
#include <string>

#include "movie/Movie.h"
#include "scan/MovieRow.h"
#include "scan/Scan.h"

namespace cli {

/// When a frame of one side comes on screen, as a person reads it.
using FrameClock = std::function<std::string(std::size_t frame)>;
/// Timecodes where the movie has a frame rate, else seconds. Both arguments outlive it.
FrameClock frameClock(const movie::Movie& movie, const scan::MovieRow& row);

/// What is told of either side.
struct ScanClocks {
  FrameClock source, dest;
};

/// "0.250" for three places.
std::string fixedPoint(double value, int places);
/// "1 frame", "2 frames".
std::string countedNoun(std::size_t count, const char* one, const char* several);

/// What differs in a segment, and how sure that is: "gamma shift, exponent 1.20 (sure by 90 %)".
std::string segmentWords(const scan::Segment& segment);
std::string patternWords(scan::Pattern pattern);
/// "frame for frame, at another speed (1.041667 of its speed)".
std::string mapPieceWords(const scan::MapPiece& piece);
std::string unmeasuredWords(scan::Unmeasured why);
/// "26 frames of the source dropped, from 00:00:01:00, before 00:00:02:00".
std::string gapWords(const scan::Gap& gap, const ScanClocks& clocks);
/// Whether a frame differs by so much that it is worth a word.
bool isWorthTelling(const scan::WorstFrame& worst);
/// What kept a scan from being whole, each a sentence.
std::vector<std::string> scanRemarks(const scan::ScanResult& result, const ScanClocks& clocks);

}  // namespace cli
