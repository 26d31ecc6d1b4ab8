#include <limits>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "cli/CheckJson.h"
#include "cli/Commands.h"

namespace cli {
namespace {

using check::CheckOutcome;
using check::GammaEstimate;
using check::MetadataFindings;
using testing::ElementsAre;

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
const movie::MovieError noFrame{"a.mov", "", 0, movie::verbatim("no decoder")};

CheckOutcome outcomeOf(double commonDiff, const MetadataFindings& findings = {true, true, true}) {
  CheckOutcome outcome;
  outcome.metadata = findings;
  outcome.pixels = GammaEstimate{.average = 1.5, .commonDiff = commonDiff};
  return outcome;
}

CheckOutcome tooDarkOutcome() {
  CheckOutcome outcome;
  outcome.metadata = MetadataFindings{true, false, true};
  outcome.tooDark = true;
  return outcome;
}

std::vector<std::string> keysOf(const JsonValue& object) {
  std::vector<std::string> keys;
  for (const auto& [key, value] : object.items()) keys.push_back(key);
  return keys;
}

TEST(CheckJson, KeepsTheOrderOfItsKeys) {
  const JsonValue json = checkJson({{"path", "a"}}, {{"path", "b"}}, outcomeOf(1.25), {}, 1);
  EXPECT_THAT(keysOf(json),
              ElementsAre("schema", "source", "dest", "metadata", "pixels", "tooDark", "report", "exitStatus"));
  EXPECT_THAT(keysOf(json["metadata"]),
              ElementsAre("compared", "gammaMatch", "colorMatch", "colorSpaceMatch", "mismatch"));
  EXPECT_THAT(keysOf(json["pixels"]), ElementsAre("commonDiff", "average", "shift"));
  EXPECT_EQ(json["schema"], "lumacheck.check/1");
  EXPECT_EQ(json["source"]["path"], "a");
  EXPECT_EQ(json["dest"]["path"], "b");
  EXPECT_EQ(json["exitStatus"], 1);
}

TEST(CheckJson, NamesEveryShift) {
  const auto shiftOf = [](double v) { return checkJson({}, {}, outcomeOf(v), {}, 0)["pixels"]["shift"]; };
  EXPECT_EQ(shiftOf(1.25), "darker");
  EXPECT_EQ(shiftOf(0.8), "lighter");
  EXPECT_EQ(shiftOf(1.0), "none");
  EXPECT_EQ(shiftOf(0.0), "unmatched");
  EXPECT_EQ(shiftOf(notANumber), "unmatched");
}

TEST(CheckJson, ShowsWhatIsNoNumberAsNull) {
  CheckOutcome outcome = outcomeOf(0);
  outcome.pixels->average = notANumber;
  const JsonValue pixels = checkJson({}, {}, outcome, {}, 2)["pixels"];
  EXPECT_TRUE(pixels["average"].is_null());
  EXPECT_EQ(pixels["commonDiff"], 0.0);
}

TEST(CheckJson, HasNoPixelsWithoutBothFrames) {
  for (const auto side : {&CheckOutcome::sourceFrameError, &CheckOutcome::destFrameError}) {
    CheckOutcome outcome = outcomeOf(0);
    outcome.*side = noFrame;
    EXPECT_TRUE(checkJson({}, {}, outcome, {}, 2)["pixels"].is_null());
  }
}

TEST(CheckJson, SaysThatTheSourceIsTooDark) {
  const JsonValue json = checkJson({}, {}, tooDarkOutcome(), {}, 3);
  EXPECT_EQ(json["tooDark"], true);
  EXPECT_TRUE(json["pixels"].is_null());
  EXPECT_EQ(json["metadata"]["colorMatch"], false);
  EXPECT_EQ(json["metadata"]["mismatch"], true);
}

TEST(CheckJson, LeavesTheMatchesOpenWhenNothingWasCompared) {
  CheckOutcome outcome = outcomeOf(0);
  outcome.metadata.reset();
  EXPECT_EQ(checkJson({}, {}, outcome, {}, 2)["metadata"].dump(),
            R"({"compared":false,"gammaMatch":null,"colorMatch":null,"colorSpaceMatch":null,"mismatch":false})");
}

TEST(CheckJson, NamesEveryStyle) {
  const std::vector<check::ReportParagraph> report{{QStringLiteral("a"), check::ReportStyle::Normal},
                                                   {QStringLiteral("b"), check::ReportStyle::Bold},
                                                   {QStringLiteral("c"), check::ReportStyle::Error},
                                                   {QStringLiteral("d\n\u00e9"), check::ReportStyle::BoldError}};
  EXPECT_EQ(checkJson({}, {}, outcomeOf(1), report, 0)["report"].dump(),
            "[{\"text\":\"a\",\"style\":\"normal\"},{\"text\":\"b\",\"style\":\"bold\"},"
            "{\"text\":\"c\",\"style\":\"error\"},{\"text\":\"d\\n\xc3\xa9\",\"style\":\"boldError\"}]");
}

TEST(CheckJson, TellsAFailureWithItsFile) {
  EXPECT_EQ(checkErrorJson("no movie", "a.mov", 2).dump(),
            R"({"schema":"lumacheck.check/1","error":{"message":"no movie","path":"a.mov"},"exitStatus":2})");
}

TEST(CheckJson, ReplacesBytesThatAreNoUtf8) {
  EXPECT_EQ(textOf(JsonValue("a\xff")), "\"a\xEF\xBF\xBD\"\n");
}

TEST(MovieJson, RoundsGammaToFourDecimals) {
  EXPECT_EQ(JsonValue(gammaNumber(144179)).dump(), "2.2");
  EXPECT_EQ(JsonValue(gammaNumber(0x20000)).dump(), "2.0");
  EXPECT_EQ(JsonValue(gammaNumber(0x1CCCD)).dump(), "1.8");
  EXPECT_EQ(JsonValue(gammaNumber(-65536)).dump(), "-1.0");
}

struct StatusRow {
  const char* what;
  CheckOutcome outcome;
  int byVerdict, zeroUnlessFailed;
};

void PrintTo(const StatusRow& row, std::ostream* stream) {
  *stream << row.what;
}

CheckOutcome withMissingFrame(CheckOutcome outcome, std::optional<movie::MovieError> CheckOutcome::*side) {
  outcome.*side = noFrame;
  return outcome;
}

class CheckExitStatus : public testing::TestWithParam<StatusRow> {};

TEST_P(CheckExitStatus, FollowsTheVerdict) {
  EXPECT_EQ(exitStatusOf(GetParam().outcome, ExitPolicy::ByVerdict), GetParam().byVerdict);
  EXPECT_EQ(exitStatusOf(GetParam().outcome, ExitPolicy::ZeroUnlessFailed), GetParam().zeroUnlessFailed);
}

constexpr MetadataFindings mismatch{true, true, false};
INSTANTIATE_TEST_SUITE_P(
    Rows, CheckExitStatus,
    testing::Values(
        StatusRow{"no shift", outcomeOf(1.0), 0, 0}, StatusRow{"darker", outcomeOf(1.06), 1, 0},
        StatusRow{"lighter", outcomeOf(0.94), 1, 0}, StatusRow{"metadata only", outcomeOf(1.0, mismatch), 1, 0},
        StatusRow{"both", outcomeOf(2.0, mismatch), 1, 0}, StatusRow{"unmatched", outcomeOf(0.0), 2, 2},
        StatusRow{"below the range", outcomeOf(0.19), 2, 2}, StatusRow{"above the range", outcomeOf(5.01), 2, 2},
        StatusRow{"not a number", outcomeOf(notANumber), 2, 2},
        StatusRow{"unmatched with a metadata mismatch", outcomeOf(0.0, mismatch), 2, 2},
        StatusRow{"too dark", tooDarkOutcome(), 3, 0},
        StatusRow{"no source frame", withMissingFrame(outcomeOf(0.0), &CheckOutcome::sourceFrameError), 2, 2},
        StatusRow{"no destination frame", withMissingFrame(outcomeOf(0.0), &CheckOutcome::destFrameError), 2, 2},
        StatusRow{"too dark, no destination frame", withMissingFrame(tooDarkOutcome(), &CheckOutcome::destFrameError),
                  3, 0}));

}  // namespace
}  // namespace cli
