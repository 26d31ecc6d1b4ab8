#include "diagnosis/Strata.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>

namespace diagnosis {
namespace {

/// Steps from a sample to its neighbours are counted up to this many codes of 8 bits.
constexpr int steepest = 24;
/// The calmest samples are taken until there are so many, and all whose steps are within these codes.
constexpr std::size_t calmEnough = 12000;
constexpr int calmSteps = 4;

constexpr int lumaBins = 24, chromaBins = 13;
constexpr std::size_t fewest = 12, most = 160;

float step(const std::vector<float>& luma, std::size_t at, std::size_t width) {
  const float across = std::max(std::abs(luma[at] - luma[at - 1]), std::abs(luma[at] - luma[at + 1]));
  const float down = std::max(std::abs(luma[at] - luma[at - width]), std::abs(luma[at] - luma[at + width]));
  return std::max(across, down);
}

/// Of each sample within, the steps to its neighbours, in whole codes.
struct Steps {
  std::vector<std::uint8_t> codes;
  std::array<std::size_t, steepest + 1> counts{};
  int taken = 0;  ///< samples with so many are calm
};

Steps stepsOf(const Signal& source, const Signal& dest) {
  const auto width = static_cast<std::size_t>(source.width), height = static_cast<std::size_t>(source.height);
  Steps steps;
  steps.codes.assign(source.size(), steepest);
  for (std::size_t y = 1; y + 1 < height; ++y) {
    for (std::size_t x = 1; x + 1 < width; ++x) {
      const std::size_t at = y * width + x;
      const float larger = std::max(step(source.luma(), at, width), step(dest.luma(), at, width));
      steps.codes[at] = static_cast<std::uint8_t>(std::min(larger * static_cast<float>(lumaCodes), float{steepest}));
      ++steps.counts[steps.codes[at]];
    }
  }
  std::size_t calm = 0;
  for (int codes = 0; codes < steepest; ++codes) {
    calm += steps.counts[static_cast<std::size_t>(codes)];
    steps.taken = codes;
    if (codes >= calmSteps && calm >= calmEnough) break;
  }
  return steps;
}

std::size_t cellOf(float luma, float pb, float pr) {
  const auto bin = [](float value, float low, float high, int bins) {
    return static_cast<std::size_t>(
        std::clamp((value - low) / (high - low) * static_cast<float>(bins), 0.0F, static_cast<float>(bins) - 0.5F));
  };
  return (bin(luma, -0.1F, 1.1F, lumaBins) * chromaBins + bin(pb, -0.5F, 0.5F, chromaBins)) * chromaBins +
         bin(pr, -0.5F, 0.5F, chromaBins);
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
  if (source.width < 3 || source.height < 3) return;
  const Steps steps = stepsOf(source, dest);
  for (std::size_t at = 0; at < source.size(); ++at) {
    if (steps.codes[at] > steps.taken || steps.codes[at] >= steepest) continue;
    for (std::size_t plane = 0; plane < 3; ++plane) {
      calm_[0][plane].push_back(source.planes[plane][at]);
      calm_[1][plane].push_back(dest.planes[plane][at]);
    }
  }
}

std::vector<Stratum> StrataBuilder::strata() const {
  const std::size_t samples = calmSource().size();
  std::vector<std::uint16_t> cells(samples);
  std::vector<std::uint32_t> counts(static_cast<std::size_t>(lumaBins) * chromaBins * chromaBins);
  for (std::size_t i = 0; i < samples; ++i) {
    cells[i] = static_cast<std::uint16_t>(cellOf(calm_[0][0][i], calm_[0][1][i], calm_[0][2][i]));
    ++counts[cells[i]];
  }
  // Of a colour that many samples have, every so-manieth.
  std::vector<std::vector<std::uint32_t>> members(counts.size());
  std::vector<std::uint32_t> seen(counts.size());
  for (std::size_t i = 0; i < samples; ++i) {
    const std::uint32_t count = counts[cells[i]];
    if (count < fewest) continue;
    const std::uint32_t every = static_cast<std::uint32_t>((count + most - 1) / most);
    if (seen[cells[i]]++ % every == 0) members[cells[i]].push_back(static_cast<std::uint32_t>(i));
  }

  std::vector<Stratum> result;
  std::vector<float> changes;
  for (std::size_t cell = 0; cell < members.size(); ++cell) {
    if (members[cell].empty()) continue;
    Stratum stratum;
    const double count = counts[cell];
    stratum.samples = count;
    stratum.weight = count / (count + 20.0);
    for (std::size_t plane = 0; plane < 3; ++plane) {
      double sum = 0;
      changes.clear();
      for (const std::uint32_t i : members[cell]) {
        sum += double{calm_[0][plane][i]};
        changes.push_back(calm_[1][plane][i] - calm_[0][plane][i]);
      }
      stratum.source[plane] = sum / static_cast<double>(members[cell].size());
      stratum.dest[plane] = stratum.source[plane] + robustMean(changes);
    }
    result.push_back(stratum);
  }
  return result;
}

StrataExtent extentOf(const std::vector<Stratum>& strata) {
  StrataExtent extent;
  double weights = 0, luma = 0, lumaSquares = 0, chromaSquares = 0;
  for (const Stratum& stratum : strata) {
    const double y = stratum.source[0] * lumaCodes;
    weights += stratum.weight;
    luma += stratum.weight * y;
    lumaSquares += stratum.weight * y * y;
    chromaSquares += stratum.weight * (stratum.source[1] * stratum.source[1] + stratum.source[2] * stratum.source[2]);
  }
  extent.count = static_cast<double>(strata.size());
  if (weights <= 0) return extent;
  extent.chroma = std::sqrt(chromaSquares / weights);
  extent.lumaDeviation = std::sqrt(std::max(0.0, lumaSquares / weights - luma * luma / weights / weights));
  return extent;
}

}  // namespace diagnosis
