#include <gtest/gtest.h>

#include "diagnosis/PlacementSearch.h"
#include "diagnosis/PlacementTrial.h"
#include "diagnosis/ToneCurve.h"
#include "diagnosis/ToneFit.h"
#include "tests/diagnosis/NearRegion.h"
#include "tests/diagnosis/PaintedPicture.h"

namespace diagnosis::test {
namespace {

Signal signalOf(const Paint& paint) {
  const movie::Picture picture = painted(paint);
  return diagnosis::signalOf(picture, taggedAs(picture, 1), 1);
}

double explainedBy(const Signal& source, const ToneTarget& dest) {
  return ToneFit(source.luma(), dest).withChroma(source.planes[1], source.planes[2]);
}

TEST(Placement, LeavesBarsOut) {
  const Paint paint = toned(colorful(), [](double value) { return 0.2 + 0.8 * value; });
  const auto inBars = [&](double x, double y) {
    return x < 0.1 || x > 0.85 || y < 0.2 || y > 0.95 ? Vector3{0, 0, 0} : paint(x, y);
  };
  expectNear(withoutBars(signalOf(inBars)), {0.1, 0.2, 0.85, 0.95}, 0.01);
  EXPECT_EQ(withoutBars(signalOf(paint)), Region());
  EXPECT_EQ(withoutBars(signalOf([](double, double) { return Vector3{0, 0, 0}; })), Region()) << "black is no bar";
}

TEST(Placement, FindsTheCropOfTheSource) {
  for (const Region& kept : {Region{0.125, 0, 0.875, 1}, Region{0.05, 0.05, 0.95, 0.95}, Region{0.1, 0.3, 0.7, 0.9}}) {
    const Paint paint = colorful(2);
    const auto cropped = [&](double x, double y) {
      return paint(kept.left + x * kept.width(), kept.top + y * kept.height());
    };
    const PlacementFit fit = findPlacement(signalOf(paint), signalOf(cropped));
    expectNear(fit.placement.source, kept, 0.01);
    EXPECT_GT(fit.explained, 0.98);
  }
}

TEST(Placement, IsPlainWhereNothingElseFitsClearlyBetter) {
  EXPECT_TRUE(findPlacement(signalOf(colorful()), signalOf(colorful())).placement.isPlain());
  EXPECT_LT(findPlacement(signalOf(colorful()), signalOf(colorful(2.5))).explained, samePictureExplained);
}

TEST(Placement, TurnsTheSourceAsItSays) {
  const Signal source = signalOf(colorful(1));
  for (int turn = 0; turn < 8; ++turn) {
    const Placement placement{
        .transposed = (turn & 4) != 0, .mirroredX = (turn & 2) != 0, .mirroredY = (turn & 1) != 0};
    const auto turned = [&](double x, double y) {
      if (placement.mirroredX) x = 1 - x;
      if (placement.mirroredY) y = 1 - y;
      return placement.transposed ? colorful(1)(y, x) : colorful(1)(x, y);
    };
    const AlignedPair pair = aligned(source, signalOf(turned), placement);
    EXPECT_GT(explainedBy(pair.source, ToneTarget(pair.dest)), 0.995) << turn;
  }
}

/// A whole, and parts that share some of their edges, in all turns.
std::vector<Placement> manyPlacements() {
  std::vector<Placement> all;
  for (const Region& part : {Region(), Region{0.1, 0, 1, 1}, Region{0.1, 0.2, 1, 1}, Region{0.1, 0.2, 0.8, 0.9}}) {
    for (int turn = 0; turn < 8; ++turn) {
      all.push_back(
          {.transposed = (turn & 4) != 0, .mirroredX = (turn & 2) != 0, .mirroredY = (turn & 1) != 0, .source = part});
    }
  }
  return all;
}

TEST(Placement, IsTriedAsThePicturesAreLaidWhateverWasTriedBefore) {
  const Signal source = reduced(signalOf(colorful()), 80, 60);
  const movie::Picture picture = painted(colorful(), {.matrix = 6});
  const Signal dest = reduced(diagnosis::signalOf(picture, taggedAs(picture, 1), 1), 80, 60);
  const ToneTarget target(dest);
  PlacementTrial trial(source, dest, {});
  std::vector<Placement> placements = manyPlacements();
  const std::vector<Placement> again(placements.rbegin(), placements.rend());
  placements.insert(placements.end(), again.begin(), again.end());
  for (const Placement& placement : placements) {
    const Signal laid = sourceUpon(source, placement, 80, 60);
    EXPECT_NEAR(trial.fit(placement, GoneBy::Luma).explained, ToneFit(laid.luma(), target).byLuma(), 1e-9);
    EXPECT_NEAR(trial.fit(placement, GoneBy::Colors).explained, explainedBy(laid, target), 1e-6);
  }
  const double left = 1 - trial.fit({}, GoneBy::Luma).explained;
  EXPECT_LT(1 - trial.fit({}, GoneBy::Colors).explained, 0.2 * left) << "another matrix explains most of that";
}

TEST(ToneCurve, ExplainsAnyToneButNotAnotherPicture) {
  const Signal source = signalOf(colorful());
  EXPECT_GT(explainedBy(source, ToneTarget(signalOf(toned(colorful(), [](double v) { return 1 - 0.8 * v * v; })))),
            0.9);
  EXPECT_LT(explainedBy(source, ToneTarget(signalOf(colorful(2.5)))), 0.6);
}

TEST(ToneCurve, GivesWhereEachLevelWent) {
  const Signal source = signalOf(colorful());
  const auto curve = toneCurve(source.luma(), signalOf(toned(colorful(), [](double v) { return 0.5 * v; })).luma());
  ASSERT_GT(curve.size(), 20U);
  for (const auto& [from, to] : curve) EXPECT_NEAR(to - 16, (from - 16) / 2, 1);
}

TEST(ToneCurve, SeesWhatCoversThePicture) {
  const auto covered = [](double x, double y) {
    return x > 0.5 && x < 0.75 && y > 0.5 && y < 0.75 ? Vector3{1, 1, 1} : colorful()(x, y);
  };
  const Signal source = signalOf(colorful()), dest = signalOf(covered);
  const std::vector<bool> found = coveredSamples(source, dest);
  EXPECT_TRUE(found[150 * 320 + 200]);
  EXPECT_FALSE(found[30 * 320 + 30]);
  EXPECT_EQ(std::count(found.begin(), found.end(), true), 80 * 60);
}

}  // namespace
}  // namespace diagnosis::test
