#include "diagnosis/Blocks.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

#include "diagnosis/ToneCurve.h"

namespace diagnosis {
namespace {

/// The calmest blocks are taken until there are so many of all, and all whose luma keeps within these codes of 8 bits.
constexpr double calmShare = 0.3, calmCodes = 4;

constexpr std::size_t lumaLevels = 24;

/// How far luma moves within each block of a signal that has become `blocks`: the mean distance from the block's mean.
std::vector<float> activityOf(const Signal& signal, const Signal& blocks) {
  const std::vector<std::size_t> columns = blockEnds(signal.width, blocks.width),
                                 rows = blockEnds(signal.height, blocks.height);
  const auto width = static_cast<std::size_t>(signal.width);
  std::vector<float> activity(blocks.size()), means(width), distances(width);
  for (std::size_t row = 0, top = 0; row < rows.size(); top = rows[row++]) {
    for (std::size_t column = 0, x = 0; column < columns.size(); ++column) {
      for (; x < columns[column]; ++x) means[x] = blocks.luma()[row * columns.size() + column];
    }
    std::fill(distances.begin(), distances.end(), 0.0F);
    for (std::size_t y = top; y < rows[row]; ++y) {
      const float* const line = &signal.luma()[y * width];
      for (std::size_t x = 0; x < width; ++x) distances[x] += std::abs(line[x] - means[x]);
    }
    meansOf(distances, columns, rows[row] - top, &activity[row * columns.size()]);
  }
  return activity;
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

Blocks blocksOf(const AlignedPair& pair, int side) {
  const int width = std::max(1, pair.source.width / side), height = std::max(1, pair.source.height / side);
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
