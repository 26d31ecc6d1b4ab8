#include "diagnosis/Placement.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "diagnosis/numbers/Resampling.h"

namespace diagnosis {
namespace {

/// A region in whole samples; never empty.
struct SampleBox {
  int left = 0, top = 0, width = 1, height = 1;
};

SampleBox boxOf(const Region& region, const Signal& signal) {
  const auto place = [](double part, int samples) { return static_cast<int>(std::lround(part * samples)); };
  SampleBox box;
  box.left = std::clamp(place(region.left, signal.width), 0, signal.width - 1);
  box.top = std::clamp(place(region.top, signal.height), 0, signal.height - 1);
  box.width = std::clamp(place(region.right, signal.width) - box.left, 1, signal.width - box.left);
  box.height = std::clamp(place(region.bottom, signal.height) - box.top, 1, signal.height - box.top);
  return box;
}

std::vector<float> cropped(const std::vector<float>& plane, int planeWidth, const SampleBox& box) {
  std::vector<float> result;
  if (plane.empty()) return result;
  result.reserve(static_cast<std::size_t>(box.width) * static_cast<std::size_t>(box.height));
  for (int y = 0; y < box.height; ++y) {
    const auto row = plane.begin() + std::ptrdiff_t{box.top + y} * planeWidth + box.left;
    result.insert(result.end(), row, row + box.width);
  }
  return result;
}

}  // namespace

PlacedTaps tapsOf(const Signal& source, const Placement& placement, int width, int height) {
  const Region& part = placement.source;
  if (placement.transposed) {
    return {true, axisTaps(part.top, part.bottom, source.height, width, placement.mirroredX),
            axisTaps(part.left, part.right, source.width, height, placement.mirroredY)};
  }
  return {false, axisTaps(part.left, part.right, source.width, width, placement.mirroredX),
          axisTaps(part.top, part.bottom, source.height, height, placement.mirroredY)};
}

Signal sourceUpon(const Signal& source, const Placement& placement, int width, int height) {
  const PlacedTaps taps = tapsOf(source, placement, width, height);
  const auto sourceWidth = static_cast<std::size_t>(source.width),
             sourceHeight = static_cast<std::size_t>(source.height);
  Signal result{width, height, {}};
  for (std::size_t plane = 0; plane < 3; ++plane) {
    const std::vector<float>& from = source.planes[plane];
    if (from.empty()) continue;
    result.planes[plane] = taps.turned ? resampled(transposed(from, sourceWidth), sourceHeight, taps.across, taps.down)
                                       : resampled(from, sourceWidth, taps.across, taps.down);
  }
  return result;
}

Signal lumaOfPart(const Signal& signal, const Region& part) {
  const SampleBox box = boxOf(part, signal);
  return {box.width, box.height, {cropped(signal.planes[0], signal.width, box), {}, {}}};
}

AlignedPair aligned(Signal source, Signal dest, const Placement& placement) {
  if (placement.isPlain()) return {std::move(source), std::move(dest), false};
  const SampleBox box = boxOf(placement.dest, dest);
  Signal part{box.width, box.height, {}};
  for (std::size_t i = 0; i < 3; ++i) part.planes[i] = cropped(dest.planes[i], dest.width, box);
  return {sourceUpon(source, placement, box.width, box.height), std::move(part), true};
}

}  // namespace diagnosis
