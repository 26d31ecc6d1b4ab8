#include <limits>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "cli/CheckJson.h"
#include "cli/Commands.h"
#include "cli/FindingJson.h"
#include "diagnosis/Diagnosis.h"

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

diagnosis::Finding findingOf(const diagnosis::Cause& cause) {
  diagnosis::Finding finding;
  finding.causes = {cause};
  finding.frames = 1;
  return finding;
}

const diagnosis::Finding same = findingOf({.kind = diagnosis::CauseKind::Same, .confidence = 0.99});

JsonValue checkJson(const CheckOutcome& outcome, const std::vector<check::ReportParagraph>& report = {}) {
  return cli::checkJson({{{"path", "a"}}, {{"path", "b"}}, outcome, same, report, 1});
}

TEST(CheckJson, KeepsTheOrderOfItsKeys) {
  const JsonValue json = checkJson(outcomeOf(1.25));
  EXPECT_THAT(keysOf(json), ElementsAre("schema", "source", "dest", "metadata", "pixels", "tooDark", "report",
                                        "finding", "alignment", "exitStatus"));
  EXPECT_THAT(keysOf(json["metadata"]),
              ElementsAre("compared", "gammaMatch", "colorMatch", "colorSpaceMatch", "mismatch"));
  EXPECT_THAT(keysOf(json["pixels"]), ElementsAre("commonDiff", "average", "shift"));
  EXPECT_EQ(json["schema"], "lumacheck.check/2");
  EXPECT_EQ(json["source"]["path"], "a");
  EXPECT_EQ(json["dest"]["path"], "b");
  EXPECT_EQ(json["exitStatus"], 1);
}

TEST(CheckJson, NamesEveryShift) {
  const auto shiftOf = [](double v) { return checkJson(outcomeOf(v))["pixels"]["shift"]; };
  EXPECT_EQ(shiftOf(1.25), "darker");
  EXPECT_EQ(shiftOf(0.8), "lighter");
  EXPECT_EQ(shiftOf(1.0), "none");
  EXPECT_EQ(shiftOf(0.0), "unmatched");
  EXPECT_EQ(shiftOf(notANumber), "unmatched");
}

TEST(CheckJson, ShowsWhatIsNoNumberAsNull) {
  CheckOutcome outcome = outcomeOf(0);
  outcome.pixels->average = notANumber;
  const JsonValue pixels = checkJson(outcome)["pixels"];
  EXPECT_TRUE(pixels["average"].is_null());
  EXPECT_EQ(pixels["commonDiff"], 0.0);
}

TEST(CheckJson, HasNoPixelsWithoutBothFrames) {
  for (const auto side : {&CheckOutcome::sourceFrameError, &CheckOutcome::destFrameError}) {
    CheckOutcome outcome = outcomeOf(0);
    outcome.*side = noFrame;
    EXPECT_TRUE(checkJson(outcome)["pixels"].is_null());
  }
}

TEST(CheckJson, SaysThatTheSourceIsTooDark) {
  const JsonValue json = checkJson(tooDarkOutcome());
  EXPECT_EQ(json["tooDark"], true);
  EXPECT_TRUE(json["pixels"].is_null());
  EXPECT_EQ(json["metadata"]["colorMatch"], false);
  EXPECT_EQ(json["metadata"]["mismatch"], true);
}

TEST(CheckJson, LeavesTheMatchesOpenWhenNothingWasCompared) {
  CheckOutcome outcome = outcomeOf(0);
  outcome.metadata.reset();
  EXPECT_EQ(checkJson(outcome)["metadata"].dump(),
            R"({"compared":false,"gammaMatch":null,"colorMatch":null,"colorSpaceMatch":null,"mismatch":false})");
}

TEST(CheckJson, NamesEveryStyle) {
  const std::vector<check::ReportParagraph> report{{QStringLiteral("a"), check::ReportStyle::Normal},
                                                   {QStringLiteral("b"), check::ReportStyle::Bold},
                                                   {QStringLiteral("c"), check::ReportStyle::Error},
                                                   {QStringLiteral("d\n\u00e9"), check::ReportStyle::BoldError}};
  EXPECT_EQ(checkJson(outcomeOf(1), report)["report"].dump(),
            "[{\"text\":\"a\",\"style\":\"normal\"},{\"text\":\"b\",\"style\":\"bold\"},"
            "{\"text\":\"c\",\"style\":\"error\"},{\"text\":\"d\\n\xc3\xa9\",\"style\":\"boldError\"}]");
}

TEST(CheckJson, TellsAFailureWithItsFile) {
  EXPECT_EQ(checkErrorJson("no movie", "a.mov", 2).dump(),
            R"({"schema":"lumacheck.check/2","error":{"message":"no movie","path":"a.mov"},"exitStatus":2})");
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
  diagnosis::Finding finding;
  bool lacksFrame;
  int byVerdict, zeroUnlessFailed;
};

void PrintTo(const StatusRow& row, std::ostream* stream) {
  *stream << row.what;
}

diagnosis::Finding withLostGamma(diagnosis::Finding finding) {
  finding.tags.gamma = diagnosis::Comparison::Lost;
  return finding;
}

class CheckExitStatus : public testing::TestWithParam<StatusRow> {};

TEST_P(CheckExitStatus, FollowsTheFinding) {
  const auto& [what, finding, lacksFrame, byVerdict, zeroUnlessFailed] = GetParam();
  EXPECT_EQ(exitStatusOf(finding, lacksFrame, ExitPolicy::ByVerdict), byVerdict);
  EXPECT_EQ(exitStatusOf(finding, lacksFrame, ExitPolicy::ZeroUnlessFailed), zeroUnlessFailed);
}

using Kind = diagnosis::CauseKind;
INSTANTIATE_TEST_SUITE_P(
    Rows, CheckExitStatus,
    testing::Values(StatusRow{"identical", findingOf({.kind = Kind::Identical, .confidence = 1}), false, 0, 0},
                    StatusRow{"the same", same, false, 0, 0}, StatusRow{"only a tag", withLostGamma(same), false, 1, 0},
                    StatusRow{"hardly the same", findingOf({.kind = Kind::Same, .confidence = 0.4}), false, 4, 4},
                    StatusRow{"a power", findingOf({.kind = Kind::Power, .confidence = 0.9, .exponent = 1.2}), false, 1,
                              0},
                    StatusRow{"a range", findingOf({.kind = Kind::Range, .confidence = 0.9}), false, 1, 0},
                    StatusRow{"a likely tone", findingOf({.kind = Kind::Tone, .confidence = 0.49}), false, 4, 4},
                    StatusRow{"another picture", findingOf({.kind = Kind::Different, .confidence = 0.9}), false, 4, 4},
                    StatusRow{"too dark", findingOf({.kind = Kind::Dark, .confidence = 0.9}), false, 3, 0},
                    StatusRow{"one color", findingOf({.kind = Kind::Unreadable, .confidence = 0.9}), false, 4, 4},
                    StatusRow{"no frame", findingOf({.kind = Kind::Unreadable, .confidence = 1}), true, 2, 2}));

TEST(FindingJson, TellsACauseWithItsNumbersAndNullsForTheOthers) {
  diagnosis::Finding finding = findingOf({.kind = Kind::Power,
                                          .confidence = 0.98765,
                                          .residual = 0.25,
                                          .exponent = 1.23456,
                                          .exponentInterval = diagnosis::Interval{1.2, 1.25},
                                          .direction = diagnosis::Direction::Darker});
  finding.curve = {{16, 16.5}};
  finding.action = diagnosis::Action::ExportAgain;
  const JsonValue json = findingJson(finding);
  EXPECT_EQ(json["causes"].dump(),
            R"([{"cause":"power","confidence":0.9877,"exponent":1.2346,"exponentInterval":[1.2,1.25],"gain":null,)"
            R"("offset":null,"direction":"darker","where":null,"residual":0.25}])");
  EXPECT_EQ(json["curve"].dump(), "[[16.0,16.5]]");
  EXPECT_EQ(json["advice"]["action"], "export");
  EXPECT_THAT(keysOf(json),
              ElementsAre("causes", "correspondence", "ranges", "matrices", "identicalSamples", "difference", "frames",
                          "darkFrames", "unmatchedFrames", "differingFrames", "curve", "advice", "text"));
}

TEST(FindingJson, NamesTheSettingsThatAreLikely) {
  diagnosis::Finding finding = findingOf({.kind = Kind::Power,
                                          .confidence = 0.9,
                                          .exponent = 0.817,
                                          .exponentInterval = diagnosis::Interval{0.813, 0.821}});
  EXPECT_EQ(findingJson(finding)["advice"]["settings"].dump(), "[]") << "nothing is to be exported again";
  finding.action = diagnosis::Action::ExportAgain;
  EXPECT_EQ(findingJson(finding)["advice"]["settings"].dump(),
            R"([{"setting":"gammas","lower":1.8,"higher":2.2},{"setting":"gammas","lower":1.96,"higher":2.4}])");
  finding.causes = {{.kind = Kind::Range,
                     .confidence = 0.9,
                     .direction = diagnosis::Direction::Expanded,
                     .where = diagnosis::Where::Codes}};
  EXPECT_EQ(findingJson(finding)["advice"]["settings"].dump(),
            R"([{"setting":"full-as-video","lower":null,"higher":null}])");
}

TEST(FindingJson, KnowsNoRangeAndNoMatrixWithoutAFrame) {
  const JsonValue json = findingJson(diagnosis::unreadable({}));
  EXPECT_EQ(json["ranges"].dump(), R"({"source":null,"dest":null})");
  EXPECT_EQ(json["matrices"].dump(), R"({"source":null,"dest":null})");
  EXPECT_EQ(findingJson(same)["ranges"].dump(), R"({"source":"video","dest":"video"})");
}

}  // namespace
}  // namespace cli
