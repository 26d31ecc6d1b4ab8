#include "diagnosis/Blocks.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

#include "diagnosis/ToneCurve.h"

namespace diagnosis {
namespace {

/// Samples across and down that are taken together.
constexpr int blockSide = 4;
/// The calmest blocks are taken until there are so many of all, and all whose luma keeps within these codes of 8 bits.
constexpr double calmShare = 0.3, calmCodes = 4;

constexpr std::size_t lumaLevels = 24;

/// How far luma moves within each block of a signal that has become `blocks`: the mean distance from the block's mean.
std::vector<float> activityOf(const Signal& signal, const Signal& blocks) {
  Signal distances{signal.width, signal.height, {std::vector<float>(signal.size()), {}, {}}};
  for (std::size_t y = 0, at = 0; y < static_cast<std::size_t>(signal.height); ++y) {
    const std::size_t row = y * static_cast<std::size_t>(blocks.height) / static_cast<std::size_t>(signal.height) *
                            static_cast<std::size_t>(blocks.width);
    for (std::size_t x = 0; x < static_cast<std::size_t>(signal.width); ++x, ++at) {
      const std::size_t column = x * static_cast<std::size_t>(blocks.width) / static_cast<std::size_t>(signal.width);
      distances.planes[0][at] = std::abs(signal.luma()[at] - blocks.luma()[row + column]);
    }
  }
  return reduced(distances, blocks.width, blocks.height).planes[0];
}

std::size_t levelOf(float luma) {
  constexpr float lowest = -0.1F, highest = 1.1F, last = static_cast<float>(lumaLevels) - 0.5F;
  return static_cast<std::size_t>(
      std::clamp((luma - lowest) / (highest - lowest) * static_cast<float>(lumaLevels), 0.0F, last));
}

/// For each level of luma the activity up to which blocks are taken: highlights are restless, and rare.
using LevelLimits = std::array<float, lumaLevels>;

LevelLimits calmLimits(const Signal& blocks, const std::vector<float>& activity) {
  std::array<std::vector<float>, lumaLevels> byLevel;
  for (std::size_t i = 0; i < activity.size(); ++i) byLevel[levelOf(blocks.luma()[i])].push_back(activity[i]);
  LevelLimits limits{};
  for (std::size_t level = 0; level < byLevel.size(); ++level) {
    std::vector<float>& values = byLevel[level];
    limits[level] = static_cast<float>(calmCodes / lumaCodes);
    if (values.empty()) continue;
    const auto place = values.begin() + static_cast<std::ptrdiff_t>(calmShare * static_cast<double>(values.size()));
    std::nth_element(values.begin(), place, values.end());
    limits[level] = std::max(limits[level], *place);
  }
  return limits;
}

}  // namespace

Blocks blocksOf(const AlignedPair& pair) {
  const int width = std::max(1, pair.source.width / blockSide), height = std::max(1, pair.source.height / blockSide);
  Blocks blocks{reduced(pair.source, width, height), reduced(pair.dest, width, height), {}, {}, {}};
  blocks.activity = activityOf(pair.source, blocks.source);
  blocks.covered = coveredSamples(blocks.source, blocks.dest);
  const LevelLimits limits = calmLimits(blocks.source, blocks.activity);
  for (std::size_t at = 0; at < blocks.activity.size(); ++at) {
    blocks.calm.push_back(blocks.activity[at] <= limits[levelOf(blocks.source.luma()[at])]);
  }
  return blocks;
}

}  // namespace diagnosis
