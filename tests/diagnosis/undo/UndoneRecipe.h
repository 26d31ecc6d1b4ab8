#pragma once

#include <cstdint>
#include <vector>

#include "diagnosis/Causes.h"

namespace diagnosis::test {

/// A change with a name.
struct NamedRecipe {
  const char* name;
  Recipe recipe;
};

inline Recipe toneRecipe(ToneStep tone, double exponent) {
  Recipe recipe;
  recipe.hypothesis.tone = tone;
  recipe.exponent = exponent;
  return recipe;
}

inline Recipe rangeRecipe(RangeStep before, RangeStep after) {
  Recipe recipe;
  recipe.hypothesis.rangeBefore = before;
  recipe.hypothesis.rangeAfter = after;
  return recipe;
}

inline Recipe matrixRecipe(std::uint16_t meant, std::uint16_t taken) {
  Recipe recipe;
  recipe.hypothesis.matrix = {meant, taken};
  return recipe;
}

inline Recipe curveRecipe(TransferCurve from, TransferCurve to) {
  Recipe recipe;
  recipe.hypothesis.tone = ToneStep::CurveRgb;
  recipe.hypothesis.from = from;
  recipe.hypothesis.to = to;
  return recipe;
}

inline Recipe gainRecipe(double gain, double offset, double chroma) {
  Recipe recipe;
  recipe.gain = GainFit{.gain = gain, .offset = offset, .chroma = chroma, .cost = 0};
  return recipe;
}

/// What a recipe makes of colours, in the Y'PbPr of the space's matrix. Made once for all of them.
class Change {
 public:
  /// `recipe` outlives it.
  Change(const Recipe& recipe, const ComparedIn& space) : recipe_(recipe), prediction_(recipe.hypothesis, space) {}

  Vector3 operator()(const Vector3& source) const {
    ColorLanes colors{};
    for (std::size_t plane = 0; plane < 3; ++plane) colors[plane].fill(static_cast<float>(source[plane]));
    colors = prediction_.afterTone(prediction_.beforeTone(colors), recipe_.exponent);
    const Vector3 dest{double{colors[0][0]}, double{colors[1][0]}, double{colors[2][0]}};
    if (!recipe_.gain) return dest;
    return {recipe_.gain->gain * dest[0] + recipe_.gain->offset, recipe_.gain->chroma * dest[1],
            recipe_.gain->chroma * dest[2]};
  }

 private:
  const Recipe& recipe_;
  Prediction prediction_;
};

/// All kinds of change that can be undone.
inline std::vector<NamedRecipe> undoableRecipes() {
  Recipe several = toneRecipe(ToneStep::PowerLuma, 1.2);
  several.hypothesis.matrix = {6, 1};
  several.hypothesis.rangeBefore = RangeStep::Compress;
  Recipe reversed = toneRecipe(ToneStep::PowerRgb, 0.8);
  reversed.hypothesis.rangeAfter = RangeStep::Compress;
  Recipe curveAndRange = curveRecipe({Transfer::Srgb}, {Transfer::Bt709});
  curveAndRange.hypothesis.rangeAfter = RangeStep::Compress;
  Recipe matrixAndGain = matrixRecipe(1, 6);
  matrixAndGain.gain = gainRecipe(0.9, 0.02, 0.8).gain;
  return {{"power-rgb", toneRecipe(ToneStep::PowerRgb, 1.25)},
          {"power-rgb-lighter", toneRecipe(ToneStep::PowerRgb, 0.817)},
          {"power-luma", toneRecipe(ToneStep::PowerLuma, 1.2)},
          {"power-luma-lighter", toneRecipe(ToneStep::PowerLuma, 0.82)},
          {"power-codes", toneRecipe(ToneStep::PowerLumaCodes, 1.2)},
          {"srgb-as-709", curveRecipe({Transfer::Srgb}, {Transfer::Bt709})},
          {"power-as-srgb", curveRecipe({Transfer::Power, 2.4}, {Transfer::Srgb})},
          {"compressed", rangeRecipe(RangeStep::None, RangeStep::Compress)},
          {"compressed-twice", rangeRecipe(RangeStep::Compress, RangeStep::Compress)},
          {"compressed-rgb", rangeRecipe(RangeStep::None, RangeStep::CompressRgb)},
          {"expanded", rangeRecipe(RangeStep::None, RangeStep::Expand)},
          {"matrix-601-as-709", matrixRecipe(6, 1)},
          {"matrix-709-as-601", matrixRecipe(1, 6)},
          {"matrix-2020-as-709", matrixRecipe(9, 1)},
          {"gain", gainRecipe(0.85, 0.02, 0.85)},
          {"gain-luma", gainRecipe(0.85, 0.02, 1)},
          {"saturation", gainRecipe(1, 0, 0.7)},
          {"several", several},
          {"reversed", reversed},
          {"curve-and-range", curveAndRange},
          {"matrix-and-gain", matrixAndGain}};
}

/// Calls for colours of a lattice of R'G'B', both ends included.
template <typename Visit>
void forColors(int steps, Visit visit) {
  const auto at = [&](int step) { return static_cast<double>(step) / steps; };
  for (int red = 0; red <= steps; ++red) {
    for (int green = 0; green <= steps; ++green) {
      for (int blue = 0; blue <= steps; ++blue) visit(Vector3{at(red), at(green), at(blue)});
    }
  }
}

}  // namespace diagnosis::test
