#include "scan/align/RegionFit.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>

#include "diagnosis/numbers/Statistics.h"
#include "scan/align/FrameRow.h"

namespace scan {
namespace {

using diagnosis::Placement;
using diagnosis::Region;

/// Left, top, right, bottom.
using Sides = std::array<double, 4>;

Sides sidesOf(const Region& region) {
  return {region.left, region.top, region.right, region.bottom};
}

Region regionOf(const Sides& sides) {
  return {sides[0], sides[1], sides[2], sides[3]};
}

/// Roots of luma.
void takeRoots(LumaPlane& plane) {
  for (float& value : plane.samples) value = std::sqrt(std::max(0.0F, value));
}

/// What brings values to mean 0 and deviation 1; none where they hardly differ.
struct Norm {
  double mean = 0, scale = 1;
};

std::optional<Norm> normOf(const std::vector<float>& values) {
  double sum = 0, squares = 0;
  for (const float value : values) {
    sum += double{value};
    squares += double{value} * double{value};
  }
  const double count = static_cast<double>(values.size()), mean = sum / count;
  const double deviation = std::sqrt(std::max(0.0, squares / count - mean * mean));
  if (deviation < double{flatDeviation}) return std::nullopt;
  return Norm{mean, 1 / deviation};
}

/// A pair at one size: the destination's part normalised, the source as a whole.
struct LevelPair {
  LumaPlane source;
  LumaPlane dest;
};

struct LevelSize {
  int width = 0, height = 0;
};

std::vector<LevelPair> levelPairs(const std::vector<PlanePair>& pairs, const Placement& placement,
                                  const LevelSize& size) {
  std::vector<LevelPair> result;
  const auto samples = [](int count, double share, int most) {
    return std::clamp(static_cast<int>(std::lround(count / std::max(share, 0.1))), 8, most);
  };
  for (const PlanePair& pair : pairs) {
    // As many samples across the part of the source that is shown as across the destination's.
    LevelPair level{areaMeans(pair.source, {}, samples(size.width, placement.source.width(), pair.source.width),
                              samples(size.height, placement.source.height(), pair.source.height)),
                    areaMeans(pair.dest, placement.dest, size.width, size.height)};
    takeRoots(level.source);
    takeRoots(level.dest);
    const std::optional<Norm> norm = normOf(level.dest.samples);
    if (!norm) continue;
    for (float& value : level.dest.samples) {
      value = static_cast<float>((double{value} - norm->mean) * norm->scale);
    }
    result.push_back(std::move(level));
  }
  return result;
}

/// The source at places of a part of it, and its slopes there, across and down.
struct SampledSource {
  std::vector<float> values, across, down;
};

SampledSource sampledAt(const LumaPlane& source, const Region& part, int width, int height) {
  SampledSource result;
  const auto stride = static_cast<std::size_t>(source.width);
  const auto taps = [](double place, int samples) {
    const double position = std::clamp(place * samples - 0.5, 0.0, samples - 1.001);
    const double first = std::floor(position);
    return std::pair(static_cast<std::size_t>(first), static_cast<float>(position - first));
  };
  for (int row = 0; row < height; ++row) {
    const auto [y, down] = taps(part.top + (row + 0.5) / height * part.height(), source.height);
    for (int column = 0; column < width; ++column) {
      const auto [x, across] = taps(part.left + (column + 0.5) / width * part.width(), source.width);
      const float* const top = &source.samples[y * stride + x];
      const float* const bottom = top + stride;
      const float upper = top[0] + across * (top[1] - top[0]), lower = bottom[0] + across * (bottom[1] - bottom[0]);
      result.values.push_back(upper + down * (lower - upper));
      result.across.push_back(((1 - down) * (top[1] - top[0]) + down * (bottom[1] - bottom[0])) *
                              static_cast<float>(source.width));
      result.down.push_back((lower - upper) * static_cast<float>(source.height));
    }
  }
  return result;
}

/// The normal equations of one step.
struct Normals {
  diagnosis::Equations<4> rows{};
  double misfit = 0, samples = 0;

  void add(const Sides& slopes, double error, double weight) {
    for (std::size_t i = 0; i < 4; ++i) {
      for (std::size_t j = 0; j < 4; ++j) rows[i][j] += weight * slopes[i] * slopes[j];
      rows[i][4] -= weight * slopes[i] * error;
    }
    misfit += std::abs(error);
    ++samples;
  }

  Sides solution() const {
    diagnosis::Equations<4> regular = rows;
    for (std::size_t i = 0; i < 4; ++i) regular[i][i] = regular[i][i] * 1.001 + 1e-9;
    return diagnosis::solved(regular);
  }
};

void addPair(Normals& normals, const LevelPair& pair, const Region& part) {
  const int width = pair.dest.width, height = pair.dest.height;
  const SampledSource source = sampledAt(pair.source, part, width, height);
  const std::optional<Norm> norm = normOf(source.values);
  if (!norm) return;
  std::size_t at = 0;
  for (int row = 0; row < height; ++row) {
    const double v = (row + 0.5) / height;
    for (int column = 0; column < width; ++column, ++at) {
      const double u = (column + 0.5) / width;
      const double across = double{source.across[at]} * norm->scale, down = double{source.down[at]} * norm->scale;
      const double error = (double{source.values[at]} - norm->mean) * norm->scale - double{pair.dest.samples[at]};
      constexpr double small = 0.15;
      const double weight = 1 / std::max(1.0, std::abs(error) / small);
      normals.add({across * (1 - u), down * (1 - v), across * u, down * v}, error, weight);
    }
  }
}

Normals normalsOf(const std::vector<LevelPair>& pairs, const Sides& sides) {
  Normals normals;
  for (const LevelPair& pair : pairs) addPair(normals, pair, regionOf(sides));
  return normals;
}

double misfitAt(const std::vector<LevelPair>& pairs, const Sides& sides) {
  const Normals normals = normalsOf(pairs, sides);
  return normals.samples > 0 ? normals.misfit / normals.samples : 1e9;
}

/// A part of the source never leaves it, nor becomes empty.
Sides held(Sides sides) {
  constexpr double least = 0.1;
  for (const std::size_t axis : {0U, 1U}) {
    sides[axis] = std::clamp(sides[axis], 0.0, 1 - least);
    sides[axis + 2] = std::clamp(sides[axis + 2], sides[axis] + least, 1.0);
  }
  return sides;
}

constexpr LevelSize levels[] = {{40, 22}, {80, 45}, {thumbnailWidth, thumbnailHeight}};

}  // namespace

RegionFit refined(const std::vector<PlanePair>& pairs, const Placement& start) {
  constexpr int mostSteps = 10;
  constexpr double largestStep = 0.03, smallestStep = 1e-4;
  Placement placement = start;
  for (const LevelSize& size : levels) {
    if (pairs.empty() || size.width > pairs.front().dest.width) break;
    const std::vector<LevelPair> level = levelPairs(pairs, placement, size);
    Sides sides = sidesOf(placement.source);
    double misfit = misfitAt(level, sides);
    for (int step = 0; step < mostSteps; ++step) {
      const Sides move = normalsOf(level, sides).solution();
      Sides next = sides;
      double most = 0;
      for (std::size_t i = 0; i < 4; ++i) {
        const double by = std::isfinite(move[i]) ? std::clamp(move[i], -largestStep, largestStep) : 0.0;
        next[i] += by;
        most = std::max(most, std::abs(by));
      }
      next = held(next);
      const double reached = misfitAt(level, next);
      if (reached >= misfit) break;
      sides = next;
      misfit = reached;
      if (most < smallestStep) break;
    }
    placement.source = regionOf(sides);
  }
  return {placement, misfitOf(pairs, placement)};
}

double misfitOf(const std::vector<PlanePair>& pairs, const Placement& placement) {
  return misfitAt(levelPairs(pairs, placement, levels[1]), sidesOf(placement.source));
}

}  // namespace scan
