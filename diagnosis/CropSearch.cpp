#include "diagnosis/CropSearch.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>

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

/// A destination's luma that many sources are held against.
struct RoughTarget {
  std::vector<float> upright, mirrored;  ///< standardised()
};

RoughTarget targetOf(const Signal& dest) {
  const std::vector<float> luma = standardised(dest.luma());
  const Signal upright{dest.width, dest.height, {luma, {}, {}}};
  return {luma, sourceUpon(upright, {.mirroredX = true}, dest.width, dest.height).planes[0]};
}

struct CropFit {
  bool mirrored = false;
  Region crop;
  double explained = 0;
};

/// Columns are taken once for all crops that keep the same of them; and that the source is mirrored is as well as that
/// the destination is.
std::vector<CropFit> fitsOf(const Signal& source, const Signal& dest) {
  static const std::vector<UsualCrops> all = usualCrops();
  const RoughTarget target = targetOf(dest);
  std::vector<CropFit> fits;
  for (const auto& [across, downs] : all) {
    const Signal columns = sourceUpon(source, {.source = {across.begin, 0, across.end, 1}}, dest.width, dest.height);
    for (const KeptPart& down : downs) {
      const Signal taken = sourceUpon(columns, {.source = {0, down.begin, 1, down.end}}, dest.width, dest.height);
      const std::vector<std::uint8_t> levels = levelsOf(taken.luma());
      const Region crop{across.begin, down.begin, across.end, down.end};
      fits.push_back({false, crop, explainedRoughly(levels, target.upright)});
      fits.push_back({true, crop, explainedRoughly(levels, target.mirrored)});
    }
  }
  return fits;
}

Signal smallerLuma(const Signal& signal, int width, int height) {
  return {width, height, {reduced(signal.luma(), signal.width, signal.height, width, height), {}, {}}};
}

}  // namespace

Placement bestCrop(const Signal& source, const Signal& dest) {
  constexpr std::size_t promising = 40;
  std::vector<CropFit> fits =
      fitsOf(smallerLuma(source, firstWidth, firstHeight), smallerLuma(dest, firstWidth, firstHeight));
  const auto end = fits.begin() + static_cast<std::ptrdiff_t>(promising);
  std::partial_sort(fits.begin(), end, fits.end(),
                    [](const CropFit& one, const CropFit& other) { return one.explained > other.explained; });
  const Signal larger = smallerLuma(source, secondWidth, secondHeight);
  const std::vector<float> target = standardised(smallerLuma(dest, secondWidth, secondHeight).luma());
  CropFit best;
  for (auto fit = fits.begin(); fit != end; ++fit) {
    const Placement placement{.mirroredX = fit->mirrored, .source = fit->crop};
    const Signal taken = sourceUpon(larger, placement, secondWidth, secondHeight);
    fit->explained = explainedRoughly(levelsOf(taken.luma()), target);
    if (fit->explained > best.explained) best = *fit;
  }
  return {.mirroredX = best.mirrored, .source = best.crop};
}

}  // namespace diagnosis
