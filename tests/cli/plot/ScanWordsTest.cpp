#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cli/plot/ScanWords.h"

namespace cli {
namespace {

using diagnosis::CauseKind;
using testing::ElementsAre;

const ScanClocks numbers{[](std::size_t frame) { return "s" + std::to_string(frame); },
                         [](std::size_t frame) { return "d" + std::to_string(frame); }};

TEST(ScanWords, TellsHowSureASegmentIsWithoutRoundingUp) {
  EXPECT_EQ(segmentWords({{0, 9}, std::nullopt, {}, {{.kind = CauseKind::Same, .confidence = 0.999}}}),
            "the same (sure by 99 %)");
}

TEST(ScanWords, NamesASpeedOnlyWhereItIsAnother) {
  EXPECT_EQ(mapPieceWords({{0, 9}, {.rate = 1}}), "frame for frame");
  EXPECT_EQ(mapPieceWords({{0, 9}, {.rate = 25.0 / 24}, scan::Pattern::Retimed}),
            "frame for frame, at another speed (1.041667 of its speed)");
}

TEST(ScanWords, CountsDroppedFrames) {
  EXPECT_EQ(gapWords({.source = {5, 6}, .before = 9}, numbers), "1 frame of the source dropped, from s5, before d9");
  EXPECT_EQ(gapWords({.source = {5, 7}, .before = 9}, numbers), "2 frames of the source dropped, from s5, before d9");
}

TEST(ScanWords, RemarksWhatKeptAScanFromBeingWhole) {
  scan::ScanResult result;
  EXPECT_TRUE(scanRemarks(result, numbers).empty());
  result.correspondence = scan::Beginning::Result::Still;
  EXPECT_TRUE(scanRemarks(result, numbers).empty()) << "of no shift there is nothing to tell";
  result.segments.emplace_back();
  result.stopped = true;
  result.scanned = {0, 30};
  EXPECT_THAT(scanRemarks(result, numbers),
              ElementsAre("The pictures do not move: the offset in time cannot be told; the shift can.",
                          "Stopped at d30: what was found until then."));
}

}  // namespace
}  // namespace cli
