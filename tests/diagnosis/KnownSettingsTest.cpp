#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "diagnosis/KnownSettings.h"
#include "diagnosis/words/FindingText.h"

namespace diagnosis {
namespace {

using testing::HasSubstr;
using testing::Not;

Cause powerOf(double exponent, double reach = 0.006) {
  return {.kind = CauseKind::Power,
          .confidence = 0.9,
          .exponent = exponent,
          .exponentInterval = Interval{exponent - reach, exponent + reach},
          .direction = exponent > 1 ? Direction::Darker : Direction::Lighter};
}

Cause lineOf(double gain, double offset) {
  return {.kind = CauseKind::Gain, .confidence = 0.9, .gain = gain, .offset = offset};
}

std::string adviceOn(const Cause& cause) {
  Finding finding;
  finding.causes = {cause};
  finding.frames = 1;
  finding.action = Action::ExportAgain;
  return textOf(finding).advice;
}

TEST(KnownSettings, NameTheGammasBehindANumber) {
  EXPECT_THAT(adviceOn(powerOf(2.4 / 2.2, 0.003)), HasSubstr("gammas of 2.2 and 2.4 are mixed up"));
  EXPECT_THAT(adviceOn(powerOf(2.2 / 1.96)), HasSubstr("gammas of 1.96 and 2.2 are mixed up"));
  EXPECT_THAT(adviceOn(powerOf(1.96 / 2.2)), HasSubstr("gammas of 1.96 and 2.2 are mixed up"));
}

TEST(KnownSettings, NameBothPairsThatGiveOneNumber) {
  for (const double exponent : {0.817, 1.223}) {
    EXPECT_THAT(adviceOn(powerOf(exponent)), HasSubstr("gammas of 1.8 and 2.2, or of 1.96 and 2.4, are mixed up"));
  }
}

TEST(KnownSettings, KnowRenderingsAsWell) {
  EXPECT_THAT(adviceOn(powerOf(1.2)), HasSubstr("HLG's system gamma of 1.2"));
  EXPECT_THAT(adviceOn(powerOf(0.8333)), HasSubstr("HLG's system gamma of 1.2"));
  EXPECT_THAT(adviceOn(powerOf(1.25)), HasSubstr("dim surroundings"));
  EXPECT_THAT(adviceOn(powerOf(0.8)), HasSubstr("dim surroundings"));
}

TEST(KnownSettings, SayNothingOfOtherNumbers) {
  for (const double exponent : {1.02, 1.05, 1.15, 1.4, 0.95, 0.86, 0.7}) {
    EXPECT_TRUE(settingsBehind(powerOf(exponent)).empty()) << exponent;
    EXPECT_EQ(adviceOn(powerOf(exponent)), "Export again, without a gamma conversion.");
  }
}

TEST(KnownSettings, SayNothingWhereMoreThanTwoFit) {
  EXPECT_TRUE(settingsBehind(powerOf(1.2, 0.05)).empty());
}

TEST(KnownSettings, KnowLinesByBothNumbers) {
  EXPECT_THAT(adviceOn(lineOf(0.925, 16.4)), HasSubstr("set-up of 7.5 %"));
  EXPECT_THAT(adviceOn(lineOf(1.081, -17.8)), HasSubstr("set-up of 7.5 %"));
  EXPECT_THAT(adviceOn(lineOf(1, 16)), HasSubstr("black at 16 and black at 0"));
  EXPECT_TRUE(settingsBehind(lineOf(0.925, 0)).empty());
  EXPECT_TRUE(settingsBehind(lineOf(0.85, 16)).empty());
}

TEST(KnownSettings, TellLevelsByTheirDirection) {
  Cause range{.kind = CauseKind::Range, .confidence = 0.9, .where = Where::Codes};
  range.direction = Direction::Expanded;
  EXPECT_THAT(adviceOn(range), HasSubstr("full range was written as video"));
  range.direction = Direction::Compressed;
  EXPECT_THAT(adviceOn(range), HasSubstr("video range was taken for full"));
  range.where = Where::Flags;
  EXPECT_THAT(adviceOn(range), Not(HasSubstr("Such levels")));
}

}  // namespace
}  // namespace diagnosis
