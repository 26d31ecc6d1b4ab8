#include "diagnosis/undo/UndoColors.h"

#include <algorithm>
#include <cmath>

namespace diagnosis {
namespace {

/// Factors nearer to zero than these leave nothing to multiply.
constexpr double leastGain = 0.05, leastChromaFactor = 0.05;

RangeStep opposite(RangeStep step) {
  switch (step) {
    case RangeStep::Compress:
      return RangeStep::Expand;
    case RangeStep::Expand:
      return RangeStep::Compress;
    case RangeStep::CompressRgb:
      return RangeStep::ExpandRgb;
    case RangeStep::ExpandRgb:
      return RangeStep::CompressRgb;
    case RangeStep::None:
      break;
  }
  return RangeStep::None;
}

/// A hypothesis does range, matrix, tone, range in this order. Backwards that takes two: the latter half first. Tones
/// of R'G'B' are left out, since predictions of them end at white.
Hypothesis undoneLatterHalf(const Hypothesis& done) {
  Hypothesis undone;
  undone.rangeBefore = opposite(done.rangeAfter);
  if (done.tone == ToneStep::PowerLuma || done.tone == ToneStep::PowerLumaCodes) undone.tone = done.tone;
  return undone;
}

Hypothesis undoneCurve(const Hypothesis& done) {
  Hypothesis undone;
  if (done.tone != ToneStep::CurveRgb) return undone;
  undone.tone = done.tone;
  undone.from = done.to;
  undone.to = done.from;
  return undone;
}

Hypothesis undoneFormerHalf(const Hypothesis& done) {
  Hypothesis undone;
  undone.matrix = {done.matrix.taken, done.matrix.meant};
  undone.rangeAfter = opposite(done.rangeBefore);
  return undone;
}

/// Of signals from one encoding to another one, which share their white.
float slopeAtWhite(const Hypothesis& curve) {
  constexpr double step = 1.0 / 256;
  return static_cast<float>((1 - signalOf(curve.to, lightOf(curve.from, 1 - step))) / step);
}

ColorLanes applied(const Prediction& steps, double exponent, const ColorLanes& colors) {
  return steps.afterTone(steps.beforeTone(colors), exponent);
}

}  // namespace

std::string whyLost(const Recipe& recipe) {
  const Hypothesis& hypothesis = recipe.hypothesis;
  if (hypothesis.rangeBefore == RangeStep::ExpandRgb || hypothesis.rangeAfter == RangeStep::ExpandRgb) {
    return "It cannot be undone: the shadows and the highlights are cut off.";
  }
  if (recipe.gain && recipe.gain->gain < leastGain)
    return "It cannot be undone: hardly anything is left of the picture.";
  return {};
}

UndoColors::UndoColors(const Recipe& recipe, const ComparedIn& space)
    : exponent_(1 / recipe.exponent),
      tone_(recipe.hypothesis.tone),
      firstSteps_(undoneLatterHalf(recipe.hypothesis)),
      curveStep_(undoneCurve(recipe.hypothesis)),
      lastSteps_(undoneFormerHalf(recipe.hypothesis)),
      first_(firstSteps_, space),
      curve_(curveStep_, space),
      last_(lastSteps_, space),
      toRgb_(toRgbMatrix(space.matrix)),
      fromRgb_(fromRgbMatrix(space.matrix)),
      toRgbLanes_(laneMatrix(toRgb_)),
      fromRgbLanes_(laneMatrix(fromRgb_)) {
  if (tone_ == ToneStep::CurveRgb) slopeAtWhite_ = slopeAtWhite(curveStep_);
  if (!recipe.gain) return;
  const auto& [gain, offset, chroma, cost] = *recipe.gain;
  lines_[0] = {static_cast<float>(1 / gain), static_cast<float>(-offset / gain)};
  if (std::abs(chroma) > leastChromaFactor) lines_[1] = lines_[2] = {static_cast<float>(1 / chroma), 0};
}

ColorLanes UndoColors::sourcesOf(const ColorLanes& dest) const {
  ColorLanes colors = dest;
  for (std::size_t plane = 0; plane < 3; ++plane) {
    for (float& value : colors[plane]) value = lines_[plane].factor * value + lines_[plane].shift;
  }
  colors = applied(first_, exponent_, colors);
  if (tone_ == ToneStep::PowerRgb) colors = withoutPowerOfRgb(colors);
  if (tone_ == ToneStep::CurveRgb) colors = withoutCurveOfRgb(colors);
  return applied(last_, 1, colors);
}

ColorLanes UndoColors::withoutPowerOfRgb(const ColorLanes& colors) const {
  ColorLanes rgb = product(toRgbLanes_, colors);
  for (Lanes& plane : rgb) {
    Lanes sizes;
    for (std::size_t i = 0; i < laneCount; ++i) sizes[i] = std::abs(plane[i]);
    const Lanes powers = raised(logarithms(sizes), static_cast<float>(exponent_));
    for (std::size_t i = 0; i < laneCount; ++i) plane[i] = std::copysign(powers[i], plane[i]);
  }
  return product(fromRgbLanes_, rgb);
}

ColorLanes UndoColors::withoutCurveOfRgb(const ColorLanes& colors) const {
  const ColorLanes rgb = product(toRgbLanes_, colors);
  ColorLanes sizes = rgb;
  for (Lanes& plane : sizes) {
    for (float& value : plane) value = std::abs(value);
  }
  ColorLanes undone = product(toRgbLanes_, applied(curve_, 1, product(fromRgbLanes_, sizes)));
  for (std::size_t plane = 0; plane < 3; ++plane) {
    for (std::size_t i = 0; i < laneCount; ++i) {
      const float beyondWhite = slopeAtWhite_ * std::max(0.0F, sizes[plane][i] - 1);
      undone[plane][i] = std::copysign(undone[plane][i] + beyondWhite, rgb[plane][i]);
    }
  }
  return product(fromRgbLanes_, undone);
}

Vector3 UndoColors::sourceOf(const Vector3& dest) const {
  ColorLanes colors{};
  for (std::size_t plane = 0; plane < 3; ++plane) colors[plane].fill(static_cast<float>(dest[plane]));
  const ColorLanes sources = sourcesOf(colors);
  return {double{sources[0][0]}, double{sources[1][0]}, double{sources[2][0]}};
}

Vector3 UndoColors::sourceRgbOf(const Vector3& dest) const {
  return product(toRgb_, sourceOf(product(fromRgb_, dest)));
}

}  // namespace diagnosis
