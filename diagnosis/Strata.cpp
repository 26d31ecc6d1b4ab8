#include "diagnosis/Strata.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>

#include "diagnosis/ToneCurve.h"

namespace diagnosis {
namespace {

/// Samples across and down that are taken together.
constexpr int blockSide = 4;
/// The calmest blocks are taken until there are so many of all, and all whose luma keeps within these codes of 8 bits.
constexpr double calmShare = 0.3, calmCodes = 4;

constexpr int lumaBins = 24, chromaBins = 13;
constexpr std::size_t fewest = 4, most = 100;

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

std::size_t binOf(float value, float low, float high, int bins) {
  return static_cast<std::size_t>(
      std::clamp((value - low) / (high - low) * static_cast<float>(bins), 0.0F, static_cast<float>(bins) - 0.5F));
}

std::size_t lumaBin(float luma) {
  return binOf(luma, -0.1F, 1.1F, lumaBins);
}

std::size_t cellOf(float luma, float pb, float pr) {
  return (lumaBin(luma) * chromaBins + binOf(pb, -0.5F, 0.5F, chromaBins)) * chromaBins +
         binOf(pr, -0.5F, 0.5F, chromaBins);
}

/// For each level of luma the activity up to which blocks are taken: highlights are restless, and rare.
using LevelLimits = std::array<float, lumaBins>;

LevelLimits calmLimits(const Signal& blocks, const std::vector<float>& activity) {
  std::array<std::vector<float>, lumaBins> byLevel;
  for (std::size_t i = 0; i < activity.size(); ++i) byLevel[lumaBin(blocks.luma()[i])].push_back(activity[i]);
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

/// The mean of what lies near the median. Sorts.
double robustMean(std::vector<float>& values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  const float median = *middle;
  std::vector<float> distances;
  distances.reserve(values.size());
  for (const float value : values) distances.push_back(std::abs(value - median));
  const auto half = distances.begin() + static_cast<std::ptrdiff_t>(distances.size() / 2);
  std::nth_element(distances.begin(), half, distances.end());
  const float reach = 3 * *half + 1 / static_cast<float>(lumaCodes);
  double sum = 0, count = 0;
  for (const float value : values) {
    if (std::abs(value - median) > reach) continue;
    sum += double{value};
    ++count;
  }
  return sum / count;
}

}  // namespace

void StrataBuilder::add(const Signal& source, const Signal& dest) {
  const int width = std::max(1, source.width / blockSide), height = std::max(1, source.height / blockSide);
  const Signal sourceBlocks = reduced(source, width, height), destBlocks = reduced(dest, width, height);
  const std::vector<float> activity = activityOf(source, sourceBlocks);
  const LevelLimits limits = calmLimits(sourceBlocks, activity);
  const std::vector<bool> covered = coveredSamples(sourceBlocks, destBlocks);
  for (std::size_t at = 0; at < activity.size(); ++at) {
    if (activity[at] > limits[lumaBin(sourceBlocks.luma()[at])] || covered[at]) continue;
    activity_.push_back(activity[at]);
    for (std::size_t plane = 0; plane < 3; ++plane) {
      calm_[0][plane].push_back(sourceBlocks.planes[plane][at]);
      calm_[1][plane].push_back(destBlocks.planes[plane][at]);
    }
  }
}

StrataBuilder::Cells StrataBuilder::cells() const {
  const std::size_t samples = calmSource().size();
  std::vector<std::size_t> cellOfSample(samples);
  Cells cells(static_cast<std::size_t>(lumaBins) * chromaBins * chromaBins);
  for (std::size_t i = 0; i < samples; ++i) {
    cellOfSample[i] = cellOf(calm_[0][0][i], calm_[0][1][i], calm_[0][2][i]);
    ++cells[cellOfSample[i]].count;
  }
  std::vector<std::size_t> seen(cells.size());
  for (std::size_t i = 0; i < samples; ++i) {
    Cell& cell = cells[cellOfSample[i]];
    if (cell.count < fewest) continue;
    const std::size_t every = (cell.count + most - 1) / most;
    if (seen[cellOfSample[i]]++ % every == 0) cell.members.push_back(i);
  }
  return cells;
}

Stratum StrataBuilder::stratumOf(const Cell& cell) const {
  const auto members = static_cast<double>(cell.members.size()), count = static_cast<double>(cell.count);
  Stratum stratum;
  stratum.samples = count;
  stratum.weight = count / (count + 5.0);
  for (const std::size_t i : cell.members) stratum.spread += double{activity_[i]} / members;
  std::vector<float> changes;
  for (std::size_t plane = 0; plane < 3; ++plane) {
    changes.clear();
    for (const std::size_t i : cell.members) {
      stratum.source[plane] += double{calm_[0][plane][i]} / members;
      changes.push_back(calm_[1][plane][i] - calm_[0][plane][i]);
    }
    stratum.dest[plane] = stratum.source[plane] + robustMean(changes);
  }
  return stratum;
}

std::vector<Stratum> StrataBuilder::strata() const {
  std::vector<Stratum> result;
  for (const Cell& cell : cells()) {
    if (!cell.members.empty()) result.push_back(stratumOf(cell));
  }
  return result;
}

std::vector<Stratum> withinRgb(std::vector<Stratum> strata, std::uint16_t matrix) {
  constexpr double reach = 0.015;
  const Matrix3 toRgb = toRgbMatrix(matrix);
  const auto beyond = std::stable_partition(strata.begin(), strata.end(), [&](const Stratum& stratum) {
    const Vector3 rgb = product(toRgb, stratum.source);
    return std::all_of(rgb.begin(), rgb.end(), [](double value) { return value >= -reach && value <= 1 + reach; });
  });
  const auto within = beyond - strata.begin();
  if (within >= 6 && 3 * within >= static_cast<std::ptrdiff_t>(strata.size())) strata.erase(beyond, strata.end());
  return strata;
}

StrataExtent extentOf(const std::vector<Stratum>& strata) {
  double weights = 0, squares = 0;
  for (const Stratum& stratum : strata) {
    weights += stratum.weight;
    squares += stratum.weight * (stratum.source[1] * stratum.source[1] + stratum.source[2] * stratum.source[2]);
  }
  return {static_cast<double>(strata.size()), weights > 0 ? std::sqrt(squares / weights) : 0.0};
}

}  // namespace diagnosis
