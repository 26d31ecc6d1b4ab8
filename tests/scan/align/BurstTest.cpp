#include <cmath>

#include <gtest/gtest.h>

#include "scan/align/Burst.h"
#include "tests/scan/PaintedRow.h"

namespace scan::test {
namespace {

Moments momentsOf(const std::vector<Shown>& frames, double rate, double begin = 0) {
  PaintedRow row(frames, rate);
  Moments moments;
  for (std::size_t i = 0; i < frames.size(); ++i) {
    moments.push_back({begin + row.timeOf(i), signatureOf(lumaOf(row.thumbnail(i)->signal))});
  }
  return moments;
}

TEST(Burst, IsFoundInAStretchToHalfAFrame) {
  const Moments stretch = momentsOf(master(10, 15), 24, 10);
  const Moments burst = momentsOf(exported(master(11.5, 13)), 24, 40);
  const auto fit = bestFit(burst, stretch, {1});
  ASSERT_TRUE(fit);
  EXPECT_TRUE(fit->isInformative());
  EXPECT_LT(fit->cost, 1);
  EXPECT_NEAR(fit->line().offset, 11.5 - 40, 0.6 / 24);
}

TEST(Burst, TellsWhatASpeedUpIs) {
  const Moments stretch = momentsOf(master(0, 12), 24);
  const Moments burst = momentsOf(exported(master(1, 11)), 25);
  const auto fit = bestFit(burst, stretch, {1, 25.0 / 24, 24.0 / 25});
  ASSERT_TRUE(fit);
  EXPECT_EQ(fit->rate, 25.0 / 24);
  EXPECT_NEAR(fit->line().offset, 1, 1.0 / 24);
}

TEST(Burst, OfAStillPictureFitsAnywhere) {
  const Moments stretch = momentsOf(std::vector<Shown>(100, Shown{.content = 3}), 24);
  const Moments burst = momentsOf(std::vector<Shown>(40, Shown{.content = 3, .coded = true}), 24);
  const auto fit = bestFit(burst, stretch, {1});
  ASSERT_TRUE(fit);
  EXPECT_LT(fit->cost, 1);
  EXPECT_FALSE(fit->isInformative());
}

TEST(Burst, OfOneFrameFitsTheOneThatItIs) {
  const Moments one = momentsOf(master(1, 1 + 1.0 / 24), 24, 2), other = momentsOf(master(40, 40 + 1.0 / 24), 24, 5);
  const auto same = BurstCosts(one, one).fit(1), apart = BurstCosts(one, other).fit(1);
  ASSERT_TRUE(same && apart);
  EXPECT_EQ(same->cost, 0);
  EXPECT_EQ(same->sourceTime, 2);
  EXPECT_TRUE(same->isInformative());
  EXPECT_GT(apart->cost, 7);
}

TEST(Burst, DoesNotFitWhereItIsNot) {
  const auto fit = bestFit(momentsOf(exported(master(100, 102)), 24), momentsOf(master(10, 15), 24), {1});
  ASSERT_TRUE(fit);
  EXPECT_GT(fit->cost, 8);
  EXPECT_FALSE(bestFit({}, momentsOf(master(10, 11), 24), {1}));
  EXPECT_FALSE(bestFit(momentsOf(master(10, 11), 24), {}, {1}));
}

}  // namespace
}  // namespace scan::test
