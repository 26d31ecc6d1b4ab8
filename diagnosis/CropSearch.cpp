#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <utility>
#include <vector>

#include "diagnosis/PlacementSearch.h"
#include "diagnosis/ToneCurve.h"

namespace diagnosis {
namespace {

/// All crops are tried in the first size, those that fit best in the second one.
constexpr int firstWidth = 20, firstHeight = 15, secondWidth = 40, secondHeight = 30;

/// A part of an axis that an export may have kept of it.
struct KeptPart {
  double begin = 0, end = 1;
};

std::vector<KeptPart> partsOf(double kept) {
  std::vector<KeptPart> parts;
  const int steps = static_cast<int>(std::lround((1.0 - kept) / 0.05));
  for (int step = 0; step <= steps; ++step) {
    const double begin = (1.0 - kept) * step / steps;
    parts.push_back({begin, begin + kept});
  }
  return parts;
}

/// What may be kept of the height where a part of the width is.
struct UsualCrops {
  KeptPart across;
  std::vector<KeptPart> down;
};

std::vector<UsualCrops> usualCrops() {
  std::vector<UsualCrops> all{{{}, {{}}}};
  for (const double kept : {0.95, 0.9, 0.8, 0.75, 0.7, 0.6, 0.5}) {
    const std::vector<KeptPart> parts = partsOf(kept);
    all.front().down.insert(all.front().down.end(), parts.begin(), parts.end());
    for (const KeptPart& across : parts) {
      UsualCrops& crops = all.emplace_back(UsualCrops{across, {{}}});
      crops.down.insert(crops.down.end(), parts.begin(), parts.end());
    }
  }
  return all;
}

Signal smallerLuma(const Signal& signal, int width, int height) {
  return {width, height, {reduced(signal.luma(), signal.width, signal.height, width, height), {}, {}}};
}

struct CropFit {
  Region crop;
  bool mirrored = false;
  double explained = 0;
};

/// A destination's luma in some size, as it is and mirrored: that the source is mirrored is as well as that it is.
class RoughTarget {
 public:
  RoughTarget(const Signal& dest, int width, int height) {
    Signal small = smallerLuma(dest, width, height);
    small.planes[0] = standardised(std::move(small.planes[0]));
    mirrored_ = sourceUpon(small, {.mirroredX = true}, width, height).planes[0];
    upright_ = std::move(small.planes[0]);
  }
  std::array<CropFit, 2> fits(const Signal& taken, const Region& crop) const {
    const auto [upright, mirrored] = explainedRoughly(levelsOf(taken.luma()), upright_, mirrored_);
    return {CropFit{crop, false, upright}, CropFit{crop, true, mirrored}};
  }

 private:
  std::vector<float> upright_, mirrored_;
};

/// Of all usual crops. Columns are taken once for those that keep the same of them.
std::vector<CropFit> firstFits(const Signal& source, const Signal& dest) {
  static const std::vector<UsualCrops> all = usualCrops();
  const Signal small = smallerLuma(source, firstWidth, firstHeight);
  const RoughTarget target(dest, firstWidth, firstHeight);
  std::vector<CropFit> fits;
  for (const auto& [across, downs] : all) {
    const Signal columns = sourceUpon(small, {.source = {across.begin, 0, across.end, 1}}, firstWidth, firstHeight);
    for (const KeptPart& down : downs) {
      const Signal taken = sourceUpon(columns, {.source = {0, down.begin, 1, down.end}}, firstWidth, firstHeight);
      const auto both = target.fits(taken, {across.begin, down.begin, across.end, down.end});
      fits.insert(fits.end(), both.begin(), both.end());
    }
  }
  return fits;
}

}  // namespace

Placement bestCrop(const Signal& source, const Signal& dest) {
  constexpr std::size_t promising = 40;
  std::vector<CropFit> fits = firstFits(source, dest);
  const auto end = fits.begin() + static_cast<std::ptrdiff_t>(promising);
  std::partial_sort(fits.begin(), end, fits.end(),
                    [](const CropFit& one, const CropFit& other) { return one.explained > other.explained; });
  const Signal larger = smallerLuma(source, secondWidth, secondHeight);
  const RoughTarget target(dest, secondWidth, secondHeight);
  CropFit best;
  for (auto fit = fits.begin(); fit != end; ++fit) {
    const Signal taken = sourceUpon(larger, {.source = fit->crop}, secondWidth, secondHeight);
    const CropFit again = target.fits(taken, fit->crop)[fit->mirrored ? 1 : 0];
    if (again.explained > best.explained) best = again;
  }
  return {.mirroredX = best.mirrored, .source = best.crop};
}

}  // namespace diagnosis
