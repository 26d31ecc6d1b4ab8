#include <gtest/gtest.h>

#include "scan/follow/UsualDistance.h"

namespace scan::test {
namespace {

UsualDistance after(int frames, float distance, UsualDistance usual = {}) {
  for (int i = 0; i < frames; ++i) usual.add(distance);
  return usual;
}

TEST(UsualDistance, IsNotKnownOfFewFrames) {
  EXPECT_GT(after(UsualDistance::fewest - 1, 0.1F).limit(), 1000);
  EXPECT_LT(after(UsualDistance::fewest, 0.1F).limit(), 1);
}

TEST(UsualDistance, IsLeftByFramesThatAreSeveralTimesFarther) {
  const float limit = after(100, 0.05F).limit();
  EXPECT_GT(limit, 2 * 0.05F);
  EXPECT_LT(limit, 8 * 0.05F);
}

TEST(UsualDistance, IsThatOfTheLastSeconds) {
  const UsualDistance usual = after(300, 2, after(5000, 0.1F));
  EXPECT_NEAR(usual.mean, 2, 0.1);
  EXPECT_EQ(usual.frames, UsualDistance::most);
}

}  // namespace
}  // namespace scan::test
