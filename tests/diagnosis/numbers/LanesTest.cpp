#include <cmath>

#include <gtest/gtest.h>

#include "diagnosis/numbers/Lanes.h"

namespace diagnosis::test {
namespace {

TEST(Lanes, AreRaisedToAPower) {
  for (const double exponent : {0.15, 0.45, 1.0, 1 / 0.45, 2.4, 6.5}) {
    for (int first = 1; first < 1200; first += static_cast<int>(laneCount)) {
      Lanes values{};
      for (std::size_t i = 0; i < laneCount; ++i) values[i] = static_cast<float>(first + static_cast<int>(i)) / 1000;
      const Lanes found = diagnosis::raised(logarithms(values), static_cast<float>(exponent));
      for (std::size_t i = 0; i < laneCount; ++i) {
        const double expected = std::pow(double{values[i]}, exponent);
        EXPECT_NEAR(double{found[i]}, expected, 1e-6 * std::max(1.0, expected)) << values[i] << "^" << exponent;
      }
    }
  }
}

TEST(Lanes, LeaveNothingOfWhatIsNotAboveZero) {
  const Lanes values{0, -0.5F, -1e-20F, 1e-30F, 1};
  for (const float exponent : {0.2F, 1.0F, 5.0F}) {
    const Lanes found = diagnosis::raised(logarithms(values), exponent);
    for (const std::size_t i : {0U, 1U, 2U}) EXPECT_NEAR(double{found[i]}, 0, 1e-30);
    EXPECT_NEAR(double{found[3]}, std::pow(1e-30, double{exponent}), 1e-9);
    EXPECT_EQ(found[4], 1.0F);
  }
}

}  // namespace
}  // namespace diagnosis::test
