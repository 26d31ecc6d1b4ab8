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

/// The luma of a destination, ready to be held against many sources.
struct ToneTarget {
  explicit ToneTarget(const Signal& dest);
  ToneTarget(int itsWidth, int itsHeight, std::vector<double> itsLuma);
  int width = 0, height = 0;
  std::vector<double> luma;
  double squares = 0;  ///< their sum
};

/// How much of the destination's luma a tone curve of the source explains, with what another matrix mixes of the
/// source's chroma into it: a share of its variance, 0 to 1; 0 where it has none. The seventh part of the picture that
/// it explains worst does not count: a subtitle or a logo covers no more. Of pictures of one size; the source may come
/// without chroma.
double explainedShare(const Signal& source, const ToneTarget& dest);

/// For each sample of a luma, which of 64 levels it is of.
std::vector<std::uint8_t> levelsOf(const std::vector<float>& luma);

/// A luma less its mean, and scaled so that its squares add up to 1; all 0 where it does not vary.
std::vector<float> standardised(std::vector<float> luma);

/// How much of either of two standardised() destinations the means of the source's levels explain, of all of the
/// pictures: quicker than explainedShare(), and rougher.
std::array<double, 2> explainedRoughly(const std::vector<std::uint8_t>& levels, const std::vector<float>& one,
                                       const std::vector<float>& other);

/// Where something lies over the destination that is not in the source: parts that the tone curve misses by far.
/// One for each sample.
std::vector<bool> coveredSamples(const Signal& source, const Signal& dest);

}  // namespace diagnosis
