#include "scan/follow/FrameExponent.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

namespace scan {
namespace {

using diagnosis::Signal;

constexpr float sourceMargin = 0.02F, destMargin = 0.01F;
constexpr float calmReach = 6 / static_cast<float>(diagnosis::lumaCodes);
constexpr float chromaReach = 0.04F;
constexpr std::size_t fewestSamples = 30;

/// Weights by the logarithm of the exponent.
class Histogram {
 public:
  void add(double value, double weight) {
    const double bin = std::clamp((value + reach) / width, 0.0, static_cast<double>(bins.size()) - 1);
    bins[static_cast<std::size_t>(bin)] += weight;
    total += weight;
  }
  /// Below which the share of all weights lies.
  double quantile(double share) const {
    double left = share * total;
    for (std::size_t i = 0; i < bins.size(); ++i) {
      if (bins[i] >= left && bins[i] > 0) return -reach + width * (static_cast<double>(i) + left / bins[i]);
      left -= bins[i];
    }
    return 0;
  }
  double weights() const { return total; }

 private:
  static constexpr double reach = 2, width = 0.002;
  std::array<double, 2000> bins{};
  double total = 0;
};

/// What an exponent adds the same to wherever luma is, ln(-ln luma), and how much it moves luma there, -luma ln luma.
struct Level {
  float level = 0, moved = 0;
};

/// Looked up between the points of a table: within 0.00002 of the level. Logarithms took longer
/// than all the rest.
class LevelTable {
 public:
  LevelTable() {
    for (std::size_t i = 1; i < count; ++i) {
      const double luma = static_cast<double>(i) / count, logarithm = std::log(luma);
      points[i] = {static_cast<float>(std::log(-logarithm)), static_cast<float>(-luma * logarithm)};
    }
  }
  /// Luma within `destMargin` of black or white has none.
  Level at(float luma) const {
    const float place = luma * count;
    const auto below = static_cast<std::size_t>(place);
    const float part = place - static_cast<float>(below);
    const Level &low = points[below], &high = points[below + 1];
    return {low.level + part * (high.level - low.level), low.moved + part * (high.moved - low.moved)};
  }

 private:
  static constexpr std::size_t count = 4096;
  std::array<Level, count> points{};
};

bool isWithin(float value, float margin) {
  return value > margin && value < 1 - margin;
}

bool isCalm(const std::vector<float>& luma, std::size_t at, std::size_t width) {
  const auto near = [&](std::size_t other) { return std::abs(luma[other] - luma[at]) <= calmReach; };
  return near(at - 1) && near(at + 1) && near(at - width) && near(at + width);
}

}  // namespace

std::optional<FrameExponent> exponentOf(const Signal& source, const Signal& dest) {
  const auto width = static_cast<std::size_t>(source.width), height = static_cast<std::size_t>(source.height);
  static const LevelTable table;
  Histogram histogram;
  double levels = 0;
  std::size_t count = 0;
  for (std::size_t y = 1; y + 1 < height; ++y) {
    for (std::size_t x = 1; x + 1 < width; ++x) {
      const std::size_t at = y * width + x;
      const float s = source.luma()[at], d = dest.luma()[at];
      if (!isWithin(s, sourceMargin) || !isWithin(d, destMargin)) continue;
      if (!isCalm(source.luma(), at, width) || !isCalm(dest.luma(), at, width)) continue;
      const Level shown = table.at(s);
      const float blue = source.planes[1][at] / chromaReach, red = source.planes[2][at] / chromaReach;
      const double weight = double{shown.moved} / (1 + double{blue} * double{blue} + double{red} * double{red});
      histogram.add(double{table.at(d).level} - double{shown.level}, weight);
      levels += weight * double{shown.level};
      ++count;
    }
  }
  if (count < fewestSamples || histogram.weights() <= 0) return std::nullopt;
  return FrameExponent{.logExponent = histogram.quantile(0.5),
                       .spread = (histogram.quantile(0.75) - histogram.quantile(0.25)) / 2,
                       .weight = histogram.weights(),
                       .level = levels / histogram.weights()};
}

}  // namespace scan
