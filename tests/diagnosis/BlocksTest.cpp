#include <algorithm>

#include <gtest/gtest.h>

#include "diagnosis/Blocks.h"

namespace diagnosis::test {
namespace {

constexpr int blockSide = 4, frameWidth = 64, frameHeight = 32;

/// Grey on the left, another colour of the same luma on the right of a column.
Signal meetingAt(int column) {
  Signal signal{frameWidth, frameHeight, {}};
  for (std::vector<float>& plane : signal.planes) plane.resize(std::size_t{frameWidth} * frameHeight);
  for (std::size_t at = 0; at < signal.size(); ++at) {
    signal.planes[0][at] = 0.5F;
    signal.planes[1][at] = static_cast<int>(at % frameWidth) < column ? 0.0F : 0.3F;
  }
  return signal;
}

std::ptrdiff_t restless(const Blocks& blocks) {
  return std::count(blocks.calm.begin(), blocks.calm.end(), false);
}

TEST(Blocks, AreNotCalmWhereColorsOfOneLumaMeetInAPictureThatWasScaled) {
  constexpr int rows = frameHeight / blockSide;
  EXPECT_EQ(restless(blocksOf({meetingAt(30), meetingAt(30), true}, blockSide)), rows);
  EXPECT_EQ(restless(blocksOf({meetingAt(32), meetingAt(32), true}, blockSide)), 0) << "between two blocks";
  EXPECT_EQ(restless(blocksOf({meetingAt(30), meetingAt(30), false}, blockSide)), 0) << "samples lie upon samples";
}

TEST(Blocks, MoveByTheirLuma) {
  const Blocks blocks = blocksOf({meetingAt(30), meetingAt(30), true}, blockSide);
  EXPECT_EQ(*std::max_element(blocks.activity.begin(), blocks.activity.end()), 0);
}

}  // namespace
}  // namespace diagnosis::test
