#include "diagnosis/Placement.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace diagnosis {
namespace {

/// Where a point of the destination's region, 0 to 1 both ways, lies in the source, 0 to 1 both ways.
struct SourcePoint {
  double x = 0, y = 0;
};

SourcePoint sourcePoint(const Placement& placement, double x, double y) {
  if (placement.mirroredX) x = 1.0 - x;
  if (placement.mirroredY) y = 1.0 - y;
  if (placement.transposed) std::swap(x, y);
  return {placement.source.left + x * placement.source.width(), placement.source.top + y * placement.source.height()};
}

/// Two neighbours along an axis, and the share of the second.
struct Tap {
  std::size_t first = 0, second = 0;
  float share = 0;
};

Tap tapAt(double place, int samples) {
  const double position = std::clamp(place * samples - 0.5, 0.0, samples - 1.0);
  const double floor = std::floor(position);
  const auto first = static_cast<std::size_t>(floor);
  return {first, std::min(first + 1, static_cast<std::size_t>(samples - 1)), static_cast<float>(position - floor)};
}

float interpolated(const std::vector<float>& plane, int width, const Tap& x, const Tap& y) {
  const float* const top = &plane[y.first * static_cast<std::size_t>(width)];
  const float* const bottom = &plane[y.second * static_cast<std::size_t>(width)];
  const float above = top[x.first] + x.share * (top[x.second] - top[x.first]);
  const float below = bottom[x.first] + x.share * (bottom[x.second] - bottom[x.first]);
  return above + y.share * (below - above);
}

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

Signal cropped(const Signal& signal, const SampleBox& box) {
  Signal result{box.width, box.height, {}};
  for (std::size_t plane = 0; plane < 3; ++plane) {
    if (signal.planes[plane].empty()) continue;
    for (int y = 0; y < box.height; ++y) {
      const auto row = signal.planes[plane].begin() + (box.top + y) * signal.width + box.left;
      result.planes[plane].insert(result.planes[plane].end(), row, row + box.width);
    }
  }
  return result;
}

/// The source as it lies upon a grid that covers the destination's region, each sample the mean of four points.
Signal placed(const Signal& source, const Placement& placement, int width, int height) {
  Signal result{width, height, {}};
  for (std::size_t plane = 0; plane < 3; ++plane) {
    result.planes[plane].resize(source.planes[plane].empty() ? 0 : static_cast<std::size_t>(width) * height);
  }
  std::size_t at = 0;
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x, ++at) {
      std::array<float, 3> sums{};
      for (int part = 0; part < 4; ++part) {
        const SourcePoint point =
            sourcePoint(placement, (x + 0.25 + 0.5 * (part % 2)) / width, (y + 0.25 + 0.5 * (part / 2)) / height);
        const Tap across = tapAt(point.x, source.width), down = tapAt(point.y, source.height);
        for (std::size_t plane = 0; plane < 3; ++plane) {
          if (result.planes[plane].empty()) continue;
          sums[plane] += interpolated(source.planes[plane], source.width, across, down);
        }
      }
      for (std::size_t plane = 0; plane < 3; ++plane) {
        if (!result.planes[plane].empty()) result.planes[plane][at] = sums[plane] / 4;
      }
    }
  }
  return result;
}

}  // namespace

AlignedPair aligned(Signal source, Signal dest, const Placement& placement) {
  if (placement.isPlain()) return {std::move(source), std::move(dest)};
  const SampleBox box = boxOf(placement.dest, dest);
  return {placed(source, placement, box.width, box.height), cropped(dest, box)};
}

}  // namespace diagnosis
