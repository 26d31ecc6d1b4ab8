#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <utility>
#include <vector>

#include "diagnosis/PlacementSearch.h"
#include "diagnosis/ToneCurve.h"
#include "diagnosis/numbers/Resampling.h"

namespace diagnosis {
namespace {

/// All crops are tried in the first size, those that fit best in the second one.
constexpr int firstWidth = 20, firstHeight = 15, secondWidth = 40, secondHeight = 30;

/// A part of an axis that an export may have kept of it, and where the first size takes its samples from it.
struct KeptPart {
  double begin = 0, end = 1;
  AxisTaps across = axisTaps(begin, end, firstWidth, firstWidth, false);
  AxisTaps down = axisTaps(begin, end, firstHeight, firstHeight, false);
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

/// What is kept of the width, or of the height: all, or parts of as much.
struct UsualParts {
  KeptPart all{};
  std::vector<std::vector<KeptPart>> parts{};
};

UsualParts usualParts() {
  UsualParts usual;
  for (const double kept : {0.95, 0.9, 0.8, 0.75, 0.7, 0.6, 0.5}) usual.parts.push_back(partsOf(kept));
  return usual;
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
  std::array<CropFit, 2> fits(const std::vector<float>& taken, const Region& crop) const {
    const auto [upright, mirrored] = explainedRoughly(levelsOf(taken), upright_, mirrored_);
    return {CropFit{crop, false, upright}, CropFit{crop, true, mirrored}};
  }

 private:
  std::vector<float> upright_, mirrored_;
};

/// Of usual crops. Columns are taken once for those that keep the same of them.
class FirstFits {
 public:
  FirstFits(const Signal& source, const Signal& dest)
      : small_(smallerLuma(source, firstWidth, firstHeight)), target_(dest, firstWidth, firstHeight) {}

  std::vector<CropFit> all() {
    const UsualParts usual = usualParts();
    take(usual.all);
    add(usual.all);
    for (const auto& parts : usual.parts) add(parts);
    for (const auto& parts : usual.parts) {
      for (const KeptPart& across : parts) {
        take(across);
        add(usual.all);
        add(parts);
      }
    }
    return std::move(fits_);
  }

 private:
  void take(const KeptPart& across) {
    across_ = &across;
    columns_ = resampled(small_.luma(), firstWidth, across.across, whole_.down);
  }
  void add(const KeptPart& down) {
    const auto both = target_.fits(resampled(columns_, firstWidth, whole_.across, down.down),
                                   {across_->begin, down.begin, across_->end, down.end});
    fits_.insert(fits_.end(), both.begin(), both.end());
  }
  void add(const std::vector<KeptPart>& downs) {
    for (const KeptPart& down : downs) add(down);
  }

  Signal small_;
  RoughTarget target_;
  KeptPart whole_{};
  const KeptPart* across_ = nullptr;
  std::vector<float> columns_;
  std::vector<CropFit> fits_;
};

}  // namespace

Placement bestCrop(const Signal& source, const Signal& dest) {
  constexpr std::size_t promising = 40;
  std::vector<CropFit> fits = FirstFits(source, dest).all();
  const auto end = fits.begin() + static_cast<std::ptrdiff_t>(promising);
  std::partial_sort(fits.begin(), end, fits.end(),
                    [](const CropFit& one, const CropFit& other) { return one.explained > other.explained; });
  const Signal larger = smallerLuma(source, secondWidth, secondHeight);
  const RoughTarget target(dest, secondWidth, secondHeight);
  CropFit best;
  for (auto fit = fits.begin(); fit != end; ++fit) {
    const Signal taken = sourceUpon(larger, {.source = fit->crop}, secondWidth, secondHeight);
    const CropFit again = target.fits(taken.luma(), fit->crop)[fit->mirrored ? 1 : 0];
    if (again.explained > best.explained) best = again;
  }
  return {.mirroredX = best.mirrored, .source = best.crop};
}

}  // namespace diagnosis
