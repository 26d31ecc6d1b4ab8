#include <gtest/gtest.h>

#include "scan/align/Region.h"
#include "scan/align/RegionFit.h"
#include "tests/diagnosis/NearRegion.h"
#include "tests/scan/PaintedRow.h"

namespace scan::test {
namespace {

using diagnosis::Placement;
using diagnosis::Region;
using diagnosis::test::expectNear;

LumaPlane planeAt(double content, const Laid& laid = {}) {
  PaintedRow row({{.content = content, .coded = true}}, 24, laid);
  return lumaOf(row.thumbnail(0)->signal);
}

std::vector<LumaPlane> planes(const Laid& laid) {
  std::vector<LumaPlane> result;
  for (double content = 1; content < 40; content += 3) result.push_back(planeAt(content, laid));
  return result;
}

std::vector<PlanePair> pairs(const Laid& laid) {
  std::vector<PlanePair> result;
  for (double content = 1; content < 40; content += 3) result.push_back({planeAt(content), planeAt(content, laid)});
  return result;
}

TEST(PictureBox, LeavesOutBars) {
  const Region boxes[] = {{0, 0.125, 1, 0.875}, {0.13, 0, 0.87, 1}, {0.2, 0.15, 0.8, 0.85}, {}};
  for (const Region& box : boxes) {
    const Region found = pictureBox(planes({.part = {}, .box = box}));
    // One sample further in than the edge, and an edge may share its sample with a bar.
    expectNear(found, box, 0.035);
    EXPECT_GE(found.top, box.top - 1e-9);
    EXPECT_LE(found.right, box.right + 1e-9);
  }
}

TEST(PictureBox, OfBlackIsAllOfIt) {
  EXPECT_EQ(pictureBox({LumaPlane{160, 90, std::vector<float>(14400)}}), Region());
  EXPECT_EQ(pictureBox({}), Region());
}

TEST(RegionFit, FindsThePartThatIsShown) {
  const Region parts[] = {{0.05, 0.05, 0.95, 0.95}, {0.02, 0.03, 0.92, 0.9}, {0, 0.005, 0.995, 1}, {0.06, 0, 1, 0.94}};
  for (const Region& part : parts) {
    const RegionFit fit = refined(pairs({.part = part}), {});
    expectNear(fit.placement.source, part, 0.002);
    EXPECT_LT(fit.misfit, 0.1);
  }
}

TEST(RegionFit, LeavesAWholePictureAsItIs) {
  expectNear(refined(pairs({}), {}).placement.source, {}, 0.001);
}

TEST(RegionFit, GoesByThePictureWithinBars) {
  const Region box{0, 0.125, 1, 0.875};
  const Laid laid{.part = {}, .box = box};
  const Placement start{.source = {}, .dest = pictureBox(planes(laid))};
  const RegionFit fit = refined(pairs(laid), start);
  const Placement whole = widened(fit.placement, thumbnailWidth, thumbnailHeight);
  expectNear(whole.source, {}, 0.004);
  expectNear(whole.dest, box, 0.004);
}

TEST(Placements, BeginWithThePlainOneAndNoneComesTwice) {
  const std::vector<Placement> likely =
      likelyPlacements({.source = {}, .dest = {0, 0.1, 1, 0.9}, .sourceAspect = 1.78, .destAspect = 1.78});
  EXPECT_EQ(likely.front(), Placement());
  for (std::size_t i = 0; i < likely.size(); ++i) {
    for (std::size_t j = 0; j < i; ++j) EXPECT_FALSE(likely[i] == likely[j]) << i << " " << j;
  }
}

TEST(Placements, OfAnotherShapeCropTheSource) {
  const std::vector<Placement> likely =
      likelyPlacements({.source = {}, .dest = {}, .sourceAspect = 2.4, .destAspect = 1.6});
  const bool has = std::any_of(likely.begin(), likely.end(), [](const Placement& each) {
    return std::abs(each.source.left - 1.0 / 6) < 1e-6 && std::abs(each.source.right - 5.0 / 6) < 1e-6 &&
           each.source.top == 0;
  });
  EXPECT_TRUE(has);
}

}  // namespace
}  // namespace scan::test
