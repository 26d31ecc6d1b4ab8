#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "diagnosis/Signal.h"

namespace diagnosis {

/// Where a source luma went: both in codes of 8 bits, black 16, white 235.
struct CurvePoint {
  double source = 0, dest = 0;
  friend bool operator==(const CurvePoint&, const CurvePoint&) = default;
};

/// The destination's luma as a function of the source's, by rising source; levels with few samples are left out. Two
/// lumas of as many samples.
std::vector<CurvePoint> toneCurve(const std::vector<float>& source, const std::vector<float>& dest);

/// Levels of luma, which is not far from 0 and 1, and how wide each of them is.
constexpr std::size_t toneLevels = 64;
constexpr float lowestToneLevel = -0.1F, highestToneLevel = 1.15F;
constexpr double toneLevelWidth = double{highestToneLevel - lowestToneLevel} / double{toneLevels};

/// For each sample of a luma, which level it is of.
std::vector<std::uint8_t> levelsOf(const std::vector<float>& luma);

/// A luma less its mean, and scaled so that its squares add up to 1; all 0 where it does not vary.
std::vector<float> standardised(std::vector<float> luma);

/// How much of either of two standardised() destinations the means of the source's levels explain, of all of the
/// pictures: quicker than a ToneFit, and rougher.
std::array<double, 2> explainedRoughly(const std::vector<std::uint8_t>& levels, const std::vector<float>& one,
                                       const std::vector<float>& other);

}  // namespace diagnosis
