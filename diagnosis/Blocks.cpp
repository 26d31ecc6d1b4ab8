#include "diagnosis/Blocks.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

#include "diagnosis/ToneFit.h"

namespace diagnosis {
namespace {

/// The calmest blocks are taken until there are so many of all, and all whose samples keep within these codes of 8
/// bits.
constexpr double calmShare = 0.3, calmCodes = 4;

constexpr std::size_t lumaLevels = 24;

/// How far the samples of a plane move within each block of a signal that has become `blocks`: the mean distance from
/// the block's mean.
std::vector<float> activityOf(const Signal& signal, const Signal& blocks, std::size_t plane) {
  const std::vector<std::size_t> columns = blockEnds(signal.width, blocks.width),
                                 rows = blockEnds(signal.height, blocks.height);
  const auto width = static_cast<std::size_t>(signal.width);
  const std::vector<float>&samples = signal.planes[plane], &blockMeans = blocks.planes[plane];
  std::vector<float> activity(blocks.size()), means(width), distances(width);
  for (std::size_t row = 0, top = 0; row < rows.size(); top = rows[row++]) {
    for (std::size_t column = 0, x = 0; column < columns.size(); ++column) {
      for (; x < columns[column]; ++x) means[x] = blockMeans[row * columns.size() + column];
    }
    std::fill(distances.begin(), distances.end(), 0.0F);
    for (std::size_t y = top; y < rows[row]; ++y) {
      const float* const line = &samples[y * width];
      for (std::size_t x = 0; x < width; ++x) distances[x] += std::abs(line[x] - means[x]);
    }
    meansOf(distances, columns, rows[row] - top, &activity[row * columns.size()]);
  }
  return activity;
}

/// In the plane where they move most: where two colours of one luma meet, a mean depends on where the block lies, too.
std::vector<float> mostActivity(const Signal& signal, const Signal& blocks, std::vector<float> luma) {
  for (const std::size_t plane : {1U, 2U}) {
    const std::vector<float> chroma = activityOf(signal, blocks, plane);
    std::transform(luma.begin(), luma.end(), chroma.begin(), luma.begin(),
                   [](float one, float other) { return std::max(one, other); });
  }
  return luma;
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
  blocks.activity = activityOf(pair.source, blocks.source, 0);
  blocks.covered = coveredSamples(blocks.source, blocks.dest);
  const std::vector<float> most =
      pair.resampled ? mostActivity(pair.source, blocks.source, blocks.activity) : blocks.activity;
  const LevelLimits limits = calmLimits(blocks.source, most);
  for (std::size_t at = 0; at < most.size(); ++at) {
    blocks.calm.push_back(most[at] <= limits[levelOf(blocks.source.luma()[at])]);
  }
  return blocks;
}

}  // namespace diagnosis
