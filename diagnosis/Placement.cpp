#include "diagnosis/Placement.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <utility>

namespace diagnosis {
namespace {

/// Two neighbours along an axis, and the share of the second.
struct Tap {
  std::uint32_t first = 0, second = 0;
  float share = 0;
};

Tap tapAt(double place, int samples) {
  const double position = std::clamp(place * samples - 0.5, 0.0, samples - 1.0);
  const double floor = std::floor(position);
  const auto first = static_cast<std::uint32_t>(floor);
  return {first, std::min(first + 1, static_cast<std::uint32_t>(samples - 1)), static_cast<float>(position - floor)};
}

/// Along one axis of the source: for each sample of the result where it is taken, at one place, or at two where several
/// samples become one.
struct AxisTaps {
  std::vector<Tap> taps;
  std::size_t each = 1;
  bool isCopy = true;  ///< each sample of the result is one of the source's, in their order
};

AxisTaps axisTaps(double begin, double end, int samples, int results, bool mirrored) {
  AxisTaps axis;
  axis.each = (end - begin) * samples > 1.2 * results ? 2 : 1;
  const std::size_t count = axis.each * static_cast<std::size_t>(results);
  axis.taps.reserve(count);
  axis.isCopy = results == samples;
  for (std::size_t i = 0; i < count; ++i) {
    const double place = (static_cast<double>(i) + 0.5) / static_cast<double>(count);
    const Tap tap = tapAt(begin + (mirrored ? 1.0 - place : place) * (end - begin), samples);
    axis.isCopy = axis.isCopy && tap.first == i && tap.share == 0;
    axis.taps.push_back(tap);
  }
  return axis;
}

float between(float first, float second, float share) {
  return first + share * (second - first);
}

/// Rows become columns.
std::vector<float> transposed(const std::vector<float>& plane, std::size_t width) {
  const std::size_t height = plane.size() / width;
  std::vector<float> result(plane.size());
  for (std::size_t y = 0; y < height; ++y) {
    for (std::size_t x = 0; x < width; ++x) result[x * height + y] = plane[y * width + x];
  }
  return result;
}

/// A row of the source, or a mean of two, between rows; and its last sample once more.
void takeRow(std::vector<float>& line, const std::vector<float>& plane, const Tap* taps, std::size_t each) {
  const std::size_t width = line.size() - 1;
  const float weight = 1 / static_cast<float>(each);
  for (std::size_t i = 0; i < each; ++i) {
    const float* const top = &plane[taps[i].first * width];
    const float* const bottom = &plane[taps[i].second * width];
    const float share = taps[i].share;
    if (each == 1 && share == 0) {
      std::copy(top, top + width, line.begin());
    } else if (i == 0) {
      for (std::size_t x = 0; x < width; ++x) line[x] = weight * between(top[x], bottom[x], share);
    } else {
      for (std::size_t x = 0; x < width; ++x) line[x] += weight * between(top[x], bottom[x], share);
    }
  }
  line[width] = line[width - 1];
}

/// The samples of a row of the result. The line goes on by one sample, the last one's neighbour.
void takeSamples(std::vector<float>& row, const std::vector<float>& line, const AxisTaps& across) {
  const float* const in = line.data();
  const auto taken = [in](const Tap& tap) {
    const float* const first = in + tap.first;
    return between(first[0], first[1], tap.share);
  };
  const Tap* tap = across.taps.data();
  if (across.isCopy) {  // an export within bars above and below keeps its columns
    std::copy(line.begin(), line.end() - 1, row.begin());
  } else if (across.each == 1) {
    for (float& sample : row) sample = taken(*tap++);
  } else {
    for (float& sample : row) {
      sample = 0.5F * (taken(tap[0]) + taken(tap[1]));
      tap += 2;
    }
  }
}

/// A plane taken at other places, of which it has so many across and down: down first, which is the same for all
/// columns.
std::vector<float> resampled(const std::vector<float>& plane, std::size_t planeWidth, const AxisTaps& across,
                             const AxisTaps& down) {
  std::vector<float> result, row(across.taps.size() / across.each), line(planeWidth + 1);
  result.reserve(row.size() * down.taps.size() / down.each);
  for (auto tap = down.taps.begin(); tap != down.taps.end(); tap += static_cast<std::ptrdiff_t>(down.each)) {
    takeRow(line, plane, &*tap, down.each);
    takeSamples(row, line, across);
    result.insert(result.end(), row.begin(), row.end());
  }
  return result;
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

Signal sourceUpon(const Signal& source, const Placement& placement, int width, int height) {
  const Region& part = placement.source;
  // The result's columns come of the source's rows where it is transposed.
  const bool turned = placement.transposed;
  const AxisTaps across = turned ? axisTaps(part.top, part.bottom, source.height, width, placement.mirroredX)
                                 : axisTaps(part.left, part.right, source.width, width, placement.mirroredX);
  const AxisTaps down = turned ? axisTaps(part.left, part.right, source.width, height, placement.mirroredY)
                               : axisTaps(part.top, part.bottom, source.height, height, placement.mirroredY);
  const auto sourceWidth = static_cast<std::size_t>(source.width),
             sourceHeight = static_cast<std::size_t>(source.height);
  Signal result{width, height, {}};
  for (std::size_t plane = 0; plane < 3; ++plane) {
    const std::vector<float>& from = source.planes[plane];
    if (from.empty()) continue;
    result.planes[plane] = turned ? resampled(transposed(from, sourceWidth), sourceHeight, across, down)
                                  : resampled(from, sourceWidth, across, down);
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
