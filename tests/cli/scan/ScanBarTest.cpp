#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cli/scan/ScanBar.h"

namespace cli {
namespace {

using testing::HasSubstr;
using testing::Not;

TEST(ScanBar, TellsShareSpeedTimeLeftAndWhatWasFound) {
  const std::string line = barLine({.stage = scan::ScanProgress::Stage::Comparing,
                                    .done = 250,
                                    .frames = 1000,
                                    .seconds = 10,
                                    .unmatched = 12,
                                    .identical = 0,
                                    .exponent = 1.2},
                                   4);
  EXPECT_EQ(line, "[======                  ]  25 %  2.5x  0:12 left  exponent 1.20  12 unmatched");
}

TEST(ScanBar, TellsThatThePlaceIsLookedFor) {
  EXPECT_THAT(barLine({}, 3), HasSubstr("Looking for the place"));
}

TEST(ScanBar, IsFullAtTheEnd) {
  const std::string line = barLine(
      {.stage = scan::ScanProgress::Stage::Comparing, .done = 24, .frames = 24, .seconds = 1, .identical = 24}, 1);
  EXPECT_EQ(line, "[========================] 100 %  1.0x  0:00 left  24 identical");
}

TEST(ScanBar, CountsNoTimeForWhatWasKnownBefore) {
  const std::string line = barLine(
      {.stage = scan::ScanProgress::Stage::Comparing, .done = 750, .frames = 1000, .known = 500, .seconds = 30}, 4);
  EXPECT_EQ(line, "[==================      ]  75 %  2.5x  0:04 left");
}

TEST(ScanBar, HasNoNumbersWithoutAny) {
  const std::string line = barLine({.stage = scan::ScanProgress::Stage::Comparing}, 0);
  EXPECT_THAT(line, Not(HasSubstr("nan")));
  EXPECT_THAT(line, Not(HasSubstr("inf")));
}

}  // namespace
}  // namespace cli
