#include "diagnosis/Strata.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>

#include "diagnosis/numbers/Statistics.h"

namespace diagnosis {
namespace {

constexpr int lumaBins = 24, chromaBins = 13;
constexpr std::size_t fewest = 4, most = 100;

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

/// The mean of what lies near the median. Sorts.
double robustMean(std::vector<float>& values) {
  const float median = medianOf(values);
  std::vector<float> distances;
  distances.reserve(values.size());
  for (const float value : values) distances.push_back(std::abs(value - median));
  const float reach = 3 * medianOf(distances) + 1 / static_cast<float>(lumaCodes);
  double sum = 0, count = 0;
  for (const float value : values) {
    if (std::abs(value - median) > reach) continue;
    sum += double{value};
    ++count;
  }
  return sum / count;
}

}  // namespace

void StrataBuilder::add(const Blocks& blocks) {
  for (std::size_t at = 0; at < blocks.activity.size(); ++at) {
    if (!blocks.calm[at] || blocks.covered[at]) continue;
    activity_.push_back(blocks.activity[at]);
    for (std::size_t plane = 0; plane < 3; ++plane) {
      calm_[0][plane].push_back(blocks.source.planes[plane][at]);
      calm_[1][plane].push_back(blocks.dest.planes[plane][at]);
    }
  }
}

void StrataBuilder::add(const StrataBuilder& other) {
  const auto append = [](std::vector<float>& to, const std::vector<float>& from) {
    to.insert(to.end(), from.begin(), from.end());
  };
  append(activity_, other.activity_);
  for (const std::size_t side : {0U, 1U}) {
    for (std::size_t plane = 0; plane < 3; ++plane) append(calm_[side][plane], other.calm_[side][plane]);
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
