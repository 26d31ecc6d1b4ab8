#pragma once

#include <array>
#include <cstddef>
#include <vector>

#include "diagnosis/Placement.h"

namespace scan {

/// Luma, 0 to 1 from black to white, row by row.
struct LumaPlane {
  int width = 0, height = 0;
  std::vector<float> samples;
};

LumaPlane lumaOf(const diagnosis::Signal& signal);

constexpr int signatureWidth = 32, signatureHeight = 18;

/// A picture in means of blocks: roots of luma, less their mean, over their standard deviation. What multiplies or
/// shifts luma leaves it nearly as it is, and so does what raises it to an exponent that is not far from 1.
struct Signature {
  std::array<float, std::size_t{signatureWidth} * signatureHeight> values{};
  float mean = 0;       ///< of the roots of luma, 0 to 1
  float deviation = 0;  ///< of the roots of luma, 0 to 1: below flatDeviation there is nothing in it to go by
  bool isFlat() const;
};
constexpr float flatDeviation = 0.02F;

/// Of a part of a picture. `exponent`: what luma is raised to before, so that it looks as the other side does.
Signature signatureOf(const LumaPlane& luma, const diagnosis::Region& part = {}, double exponent = 1);

/// How far two signatures are apart: a mean of absolute differences. 0.2 to 2 for two encodings of one picture, 10 and
/// more for pictures of different shots; about 45 for such as have nothing to do with each other, as black and white.
float distance(const Signature& one, const Signature& other);

/// The share of the second in what is best mixed of two to give a third, 0 to 1, and how far that mixture is from it.
struct Mixture {
  float share = 0;
  float distance = 0;
};
Mixture mixtureOf(const Signature& first, const Signature& second, const Signature& wanted);

/// A picture in fewer samples, each the mean over an exact area of a part of it.
LumaPlane areaMeans(const LumaPlane& luma, const diagnosis::Region& part, int width, int height);

}  // namespace scan
