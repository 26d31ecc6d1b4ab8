#include <cstdio>
#include <random>

#include <gtest/gtest.h>

#include "tests/movie/save/SaveJudge.h"

namespace movie {
namespace {

using namespace test;

const std::vector<std::size_t>& paddings() {
  static const std::vector<std::size_t> all = [] {
    std::vector<std::size_t> some{0};
    for (std::size_t at = 8; at < 8 + 512; ++at) some.push_back(at);
    return some;
  }();
  return all;
}

TEST(SaveCrashStates, AreAllWholeAndCanAllBeSavedAgain) {
  constexpr std::size_t perPoint = 24;
  std::mt19937 random(1);
  Tally tally;
  for (const std::size_t padding : paddings()) {
    for (const SaveCase& subject : saveCases(padding)) {
      tallyStates(subject, changesOf(subject), perPoint, random, Again::Yes, tally);
    }
  }
  std::printf("%llu crash states, %llu violations, %llu different states saved again\n",
              static_cast<unsigned long long>(tally.states), static_cast<unsigned long long>(tally.violations),
              static_cast<unsigned long long>(tally.saved));
  EXPECT_GE(tally.states, 100'000U);
  EXPECT_EQ(tally.violations, 0U) << tally.first;
}

}  // namespace
}  // namespace movie
