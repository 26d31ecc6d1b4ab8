#include "diagnosis/numbers/Resampling.h"

#include <algorithm>

namespace diagnosis {
namespace {

Tap tapAt(double place, int samples) {
  const double position = std::clamp(place * samples - 0.5, 0.0, samples - 1.0);
  const auto first = static_cast<std::uint32_t>(position);  // cut off: it is not negative
  return {first, std::min(first + 1, static_cast<std::uint32_t>(samples - 1)), static_cast<float>(position - first)};
}

float between(float first, float second, float share) {
  return first + share * (second - first);
}

/// A row of the plane, or a mean of two, between rows.
void takeRow(std::vector<float>& line, const std::vector<float>& plane, const Tap* taps, std::size_t each) {
  const std::size_t width = line.size();
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
}

/// The samples of a row of the result.
void takeSamples(float* row, const std::vector<float>& line, const AxisTaps& across) {
  const float* const in = line.data();
  const auto taken = [in](const Tap& tap) { return between(in[tap.first], in[tap.second], tap.share); };
  const Tap* tap = across.taps.data();
  if (across.isCopy) {  // an export within bars above and below keeps its columns
    std::copy(line.begin(), line.end(), row);
  } else if (across.each == 1) {
    for (std::size_t x = 0; x < across.taps.size(); ++x) row[x] = taken(tap[x]);
  } else {
    for (std::size_t x = 0; x < across.results(); ++x, tap += 2) row[x] = 0.5F * (taken(tap[0]) + taken(tap[1]));
  }
}

/// A column of the result, from columns that are as long.
void takeColumn(float* column, const float* columns, std::size_t length, const Tap* taps, std::size_t each) {
  const float *const first = columns + taps[0].first * length, *const second = columns + taps[0].second * length;
  const float share = taps[0].share;
  if (each == 1) {
    for (std::size_t y = 0; y < length; ++y) column[y] = between(first[y], second[y], share);
    return;
  }
  const float *const third = columns + taps[1].first * length, *const fourth = columns + taps[1].second * length;
  const float otherShare = taps[1].share;
  for (std::size_t y = 0; y < length; ++y) {
    column[y] = 0.5F * (between(first[y], second[y], share) + between(third[y], fourth[y], otherShare));
  }
}

}  // namespace

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

std::vector<float> transposed(const std::vector<float>& plane, std::size_t width) {
  const std::size_t height = plane.size() / width;
  std::vector<float> result(plane.size());
  for (std::size_t y = 0; y < height; ++y) {
    for (std::size_t x = 0; x < width; ++x) result[x * height + y] = plane[y * width + x];
  }
  return result;
}

std::vector<float> resampled(const std::vector<float>& plane, std::size_t planeWidth, const AxisTaps& across,
                             const AxisTaps& down) {
  const std::size_t width = across.results(), height = down.results();
  std::vector<float> result(width * height), line(planeWidth);
  for (std::size_t y = 0; y < height; ++y) {
    takeRow(line, plane, &down.taps[y * down.each], down.each);
    takeSamples(&result[y * width], line, across);
  }
  return result;
}

std::vector<float> linesTakenOf(const std::vector<float>& plane, std::size_t planeWidth, const AxisTaps& down) {
  const std::size_t height = down.results();
  std::vector<float> columns(planeWidth * height), line(planeWidth);
  for (std::size_t y = 0; y < height; ++y) {
    takeRow(line, plane, &down.taps[y * down.each], down.each);
    for (std::size_t x = 0; x < planeWidth; ++x) columns[x * height + y] = line[x];
  }
  return columns;
}

std::vector<float> columnsTakenOf(const std::vector<float>& columns, std::size_t length, const AxisTaps& across) {
  std::vector<float> result(across.results() * length);
  for (std::size_t x = 0; x < across.results(); ++x) {
    takeColumn(&result[x * length], columns.data(), length, &across.taps[x * across.each], across.each);
  }
  return result;
}

}  // namespace diagnosis
