#include <gtest/gtest.h>

#include "diagnosis/Advice.h"
#include "diagnosis/words/FindingText.h"

namespace diagnosis {
namespace {

SideTags taggedSide(std::uint16_t matrix = 1) {
  SideTags tags;
  tags.nclc = movie::NclcParameters{0, 1, 1, matrix};
  tags.primaries = tags.transferFunction = 1;
  tags.matrix = tags.matrixInForce = matrix;
  return tags;
}

Finding finding(Cause cause, const SideTags& source, const SideTags& dest) {
  cause.confidence = cause.confidence > 0 ? cause.confidence : 0.9;
  Finding result;
  result.causes = {cause};
  result.frames = 1;
  result.tags = compareTags(source, dest);
  return result;
}

Action actionOn(const Cause& cause, const SideTags& source = taggedSide(), const SideTags& dest = taggedSide()) {
  return actionFor(finding(cause, source, dest));
}

constexpr Cause same{.kind = CauseKind::Same};

TEST(Advice, IsNothingWhereNothingDiffers) {
  EXPECT_EQ(actionOn(same), Action::Nothing);
  EXPECT_EQ(actionOn({.kind = CauseKind::Identical}), Action::Nothing);
}

TEST(Advice, IsASyncOnlyWhereThatHelps) {
  SideTags untagged = taggedSide();
  untagged.nclc.reset();
  untagged.primaries = untagged.transferFunction = untagged.matrix = 2;
  EXPECT_EQ(actionOn(same, taggedSide(), untagged), Action::Sync);

  SideTags gamma = taggedSide();
  gamma.gamma = 144179;
  EXPECT_EQ(actionOn(same, gamma, taggedSide()), Action::Sync);
  EXPECT_EQ(actionOn(same, taggedSide(), gamma), Action::Sync) << "a sync removes it";

  EXPECT_EQ(actionOn({.kind = CauseKind::Power, .exponent = 1.2}, gamma, taggedSide()), Action::ExportAgain)
      << "the pixels differ, too";
}

TEST(Advice, IsATagWhereASyncWouldBeWrong) {
  SideTags bitstreamOnly = taggedSide(), silent = taggedSide();
  bitstreamOnly.nclc.reset();
  silent.nclc.reset();
  silent.primaries = silent.transferFunction = 2;
  EXPECT_EQ(actionOn(same, bitstreamOnly, silent), Action::TagDestination) << "the source has nothing to copy";

  SideTags converted = taggedSide(6);
  converted.gamma = 144179;
  EXPECT_EQ(actionOn(same, taggedSide(), converted), Action::TagDestination)
      << "the samples are in another matrix now, rightly";

  SideTags profile = taggedSide();
  profile.iccProfile = movie::Bytes(1);
  EXPECT_EQ(actionOn(same, taggedSide(), profile), Action::TagDestination) << "a sync removes no profile";
}

TEST(Advice, IsNoSyncThatTakesTheMatrixAway) {
  SideTags source = taggedSide(6), dest = taggedSide(6);
  source.nclc->matrix = 2;
  source.coded.matrix = 6;
  dest.nclc = movie::NclcParameters{0, 2, 2, 6};
  dest.primaries = dest.transferFunction = 2;
  EXPECT_EQ(actionOn(same, source, dest), Action::TagDestination) << "BT.601 would be read as BT.709";
  dest.coded.matrix = 6;
  EXPECT_EQ(actionOn(same, source, dest), Action::Sync) << "the bitstream says it, too";
}

TEST(Advice, IsNoSyncThatChangesNothing) {
  SideTags source = taggedSide(), dest = taggedSide();
  source.nclc = dest.nclc = movie::NclcParameters{0, 2, 2, 1};
  source.coded = {0, 1, 1, 1};
  dest.primaries = dest.transferFunction = 2;
  EXPECT_EQ(actionOn(same, source, dest), Action::TagDestination) << "what differs is in the bitstreams";
}

TEST(Advice, FollowsTheCause) {
  EXPECT_EQ(actionOn({.kind = CauseKind::Range, .where = Where::Codes}), Action::ExportAgain);
  EXPECT_EQ(actionOn({.kind = CauseKind::Range, .where = Where::Flags}), Action::TagDestination);
  EXPECT_EQ(actionOn({.kind = CauseKind::Matrix, .where = Where::Codes}), Action::ExportAgain);
  EXPECT_EQ(actionOn({.kind = CauseKind::Matrix, .where = Where::Tags}, taggedSide(), taggedSide(6)), Action::Sync);
  EXPECT_EQ(actionOn({.kind = CauseKind::Gain}), Action::ExportAgain);
  EXPECT_EQ(actionOn({.kind = CauseKind::Tone}), Action::ExportAgain);
  for (const CauseKind kind : {CauseKind::Different, CauseKind::Dark, CauseKind::Unreadable}) {
    EXPECT_EQ(actionOn({.kind = kind}), Action::ChooseAnotherFrame);
  }
  EXPECT_EQ(actionOn({.kind = CauseKind::Power, .confidence = 0.3, .exponent = 1.2}), Action::CannotTell);
}

TEST(FindingText, HasASentenceForEachCause) {
  const Cause causes[] = {
      {.kind = CauseKind::Identical},
      same,
      {.kind = CauseKind::Power, .exponent = 1.2, .direction = Direction::Darker},
      {.kind = CauseKind::Range, .direction = Direction::Compressed, .where = Where::Codes},
      {.kind = CauseKind::Range, .direction = Direction::Expanded, .where = Where::Codes},
      {.kind = CauseKind::Range, .direction = Direction::Compressed, .where = Where::Flags},
      {.kind = CauseKind::Range, .direction = Direction::Expanded, .where = Where::Flags},
      {.kind = CauseKind::Gain, .gain = 0.8, .offset = -3, .direction = Direction::Darker},
      {.kind = CauseKind::Tone},
      {.kind = CauseKind::Matrix, .where = Where::Codes},
      {.kind = CauseKind::Matrix, .where = Where::Tags},
      {.kind = CauseKind::Different},
      {.kind = CauseKind::Dark},
      {.kind = CauseKind::Unreadable},
  };
  std::vector<std::string> verdicts;
  for (const Cause& cause : causes) {
    Finding each = finding(cause, taggedSide(), taggedSide());
    each.action = actionFor(each);
    const FindingText text = textOf(each);
    EXPECT_EQ(text.verdict.back(), '.');
    EXPECT_EQ(text.advice.back(), '.');
    EXPECT_EQ(std::count(verdicts.begin(), verdicts.end(), text.verdict), 0) << text.verdict;
    verdicts.push_back(text.verdict);
  }
}

TEST(FindingText, TellsAnExponentWithItsInterval) {
  Finding power = finding({.kind = CauseKind::Power,
                           .exponent = 1.2222,
                           .exponentInterval = Interval{1.21, 1.2344},
                           .direction = Direction::Darker},
                          taggedSide(), taggedSide());
  power.action = actionFor(power);
  EXPECT_EQ(textOf(power).verdict, "Gamma shift: the destination is darker, by an exponent of 1.22 (1.21 to 1.23).");
  EXPECT_NE(textOf(power).advice.find("1.8 and 2.2"), std::string::npos) << "the setting that such a number means";
  power.causes[0].exponent = 1.3;
  EXPECT_EQ(textOf(power).advice, "Export again, without a gamma conversion.");
}

TEST(FindingText, CountsAsPeopleDo) {
  Finding each = finding({.kind = CauseKind::Gain, .gain = 1, .offset = 1.2, .direction = Direction::Lighter},
                         taggedSide(), taggedSide());
  EXPECT_EQ(textOf(each).verdict,
            "Brightness or contrast: the destination is lighter, 1.00 times the source plus 1 code.");
  each.causes[0].offset = -0.3;
  EXPECT_EQ(textOf(each).verdict, "Brightness or contrast: the destination is lighter, 1.00 times the source.");

  each.frames = 5;
  each.darkFrames = each.unmatchedFrames = 1;
  EXPECT_EQ(textOf(each).why.substr(textOf(each).why.find("5 frames")),
            "5 frames were compared. One of them is left out, since the source is too dark there. One of them does not "
            "show the same picture.");
}

TEST(FindingText, TellsOnlyNumbersThatAreMeant) {
  Finding each = finding({.kind = CauseKind::Tone, .residual = 4.2}, taggedSide(), taggedSide());
  each.difference = 2.5;
  EXPECT_EQ(textOf(each).why, "The pictures differ by 2.5 codes of 8 bits.") << "nothing of it is undone";
  each.causes[0].residual = 1.5;
  EXPECT_EQ(textOf(each).why, "The pictures differ by 2.5 codes of 8 bits; with that undone, by 1.5.");
  each.causes[0].kind = CauseKind::Same;
  each.difference = 7;
  EXPECT_EQ(textOf(each).why, "The pictures differ by 7.0 codes of 8 bits, which is what the tolerance allows.");
}

TEST(FindingText, TellsWhatSeveralFramesAndPlacesShow) {
  Finding each = finding({.kind = CauseKind::Different}, taggedSide(), taggedSide());
  each.action = actionFor(each);
  each.frames = 3;
  each.unmatchedFrames = 2;
  EXPECT_EQ(textOf(each).verdict, "No verdict: the frames do not all show the same picture.");
  EXPECT_EQ(textOf(each).why, "3 frames were compared. 2 of them do not show the same picture.");
  EXPECT_EQ(textOf(each).advice, "Compare movies that begin with the same picture and have the same cuts.");

  each.wholeMovies = true;
  EXPECT_EQ(textOf(each).verdict, "No verdict: the movies do not show the same pictures.");
  EXPECT_EQ(textOf(each).why, "3 frames were compared. 2 of them do not show the same picture.");
  EXPECT_EQ(textOf(each).advice, "Compare a movie with the one that it was made from.");
  each.unmatchedFrames = 3;
  EXPECT_EQ(textOf(each).why, "Nothing of the destination was found in the source.");
  each.unmatchedFrames = 0;
  each.darkFrames = 3;
  each.causes[0].kind = CauseKind::Dark;
  EXPECT_EQ(textOf(each).verdict, "No verdict: the pictures are black, or of one color.");
  EXPECT_EQ(textOf(each).why, "3 frames were compared. 3 of them are not measured: they are black, or of one color.");
  EXPECT_EQ(textOf(each).advice, "Compare movies with more in them.");

  Finding places = finding({.kind = CauseKind::Tone, .residual = 4}, taggedSide(), taggedSide());
  places.inPlaces = true;
  places.difference = 4;
  places.frames = 9;
  places.differingFrames = 2;
  places.action = actionFor(places);
  EXPECT_EQ(textOf(places).verdict, "The tone differs in places: they were graded, or something lies over them.");
  EXPECT_EQ(textOf(places).why,
            "The pictures differ by 4.0 codes of 8 bits. 9 frames were compared. 2 of them differ, and all together do "
            "not: this is about the one that differs most.");
  EXPECT_EQ(textOf(places).advice, "Export again, without what was done to parts of the picture.");
}

TEST(FindingText, TellsADoubtfulFindingAsNoVerdict) {
  Finding doubtful = finding({.kind = CauseKind::Tone, .confidence = 0.3}, taggedSide(), taggedSide());
  doubtful.action = actionFor(doubtful);
  EXPECT_EQ(textOf(doubtful).verdict.rfind("No verdict: ", 0), 0U);
}

TEST(FindingText, NamesTagsThatDifferAndWhereThePictureLies) {
  SideTags source = taggedSide();
  source.gamma = 144179;
  Finding each = finding(same, source, taggedSide());
  each.correspondence.placement.dest = {0, 0.1, 1, 0.9};
  each.correspondence.same = true;
  each.action = actionFor(each);
  const FindingText text = textOf(each);
  EXPECT_NE(text.why.find("gamma (not in the destination)"), std::string::npos) << text.why;
  EXPECT_NE(text.why.find("set within bars"), std::string::npos) << text.why;
  each.correspondence.same = false;
  EXPECT_EQ(textOf(each).why.find("set within bars"), std::string::npos) << "it only looked like it";
}

}  // namespace
}  // namespace diagnosis
