#pragma once

#include <cstdint>
#include <vector>

#include "diagnosis/Signal.h"

namespace diagnosis {

/// Where a source luma went: both in codes of 8 bits, black 16, white 235.
struct CurvePoint {
  double source = 0, dest = 0;
  friend bool operator==(const CurvePoint&, const CurvePoint&) = default;
};

/// The destination's luma as a function of the source's.
struct ToneFit {
  std::vector<CurvePoint> curve;                  ///< by rising source; bins with few samples are left out
  double sourceDeviation = 0, destDeviation = 0;  ///< standard deviations of luma, in codes of 8 bits
};

/// Two lumas of as many samples.
ToneFit fitTone(const std::vector<float>& source, const std::vector<float>& dest);

/// How much of the destination's luma a tone curve of the source explains, with what another matrix mixes of the
/// source's chroma into it: a share of its variance, 0 to 1; 0 where it has none. The seventh part of the picture that
/// it explains worst does not count: a subtitle or a logo covers no more. Of pictures of one size; the source may come
/// without chroma.
double explainedShare(const Signal& source, const Signal& dest);

/// For each sample of a luma, which of 64 levels it is of.
std::vector<std::uint8_t> levelsOf(const std::vector<float>& luma);

/// A luma less its mean, and scaled so that its squares add up to 1; all 0 where it does not vary.
std::vector<float> standardised(std::vector<float> luma);

/// How much of a standardised() destination the means of the source's levels explain, of all of two pictures: quicker
/// than explainedShare(), and rougher.
double explainedRoughly(const std::vector<std::uint8_t>& levels, const std::vector<float>& dest);

/// Where something lies over the destination that is not in the source: parts that the tone curve misses by far.
/// One for each sample.
std::vector<bool> coveredSamples(const Signal& source, const Signal& dest);

}  // namespace diagnosis
