#pragma once

#include <string>

#include "diagnosis/Causes.h"
#include "diagnosis/numbers/Lanes.h"

namespace diagnosis {

/// Why nothing brings back what a recipe was applied to: a sentence. Empty where something does.
std::string whyLost(const Recipe& recipe);

/// What a recipe made of colours, undone: Prediction, and the line after it, backwards. A pure function.
class UndoColors {
 public:
  /// Of a recipe that changed samples, which is one without a relabelling, and for which whyLost() has nothing to say.
  /// `space`: what the recipe is of.
  UndoColors(const Recipe& recipe, const ComparedIn& space);
  UndoColors(const UndoColors&) = delete;
  UndoColors& operator=(const UndoColors&) = delete;

  /// The source's colours of a destination's, both in the Y'PbPr of the space's matrix. Lines, and
  /// powers and curves of R'G'B', go on beyond black and white, where a table of them needs points; a power of luma
  /// ends at black.
  ColorLanes sourcesOf(const ColorLanes& dest) const;

  /// The same of one colour.
  Vector3 sourceOf(const Vector3& dest) const;
  /// The same in R'G'B', black 0 and white 1: what an application sees that decodes each side as it is tagged.
  Vector3 sourceRgbOf(const Vector3& dest) const;

 private:
  struct Line {
    float factor = 1, shift = 0;
  };
  ColorLanes withoutPowerOfRgb(const ColorLanes& colors) const;
  ColorLanes withoutCurveOfRgb(const ColorLanes& colors) const;

  double exponent_;  ///< that undoes the recipe's
  ToneStep tone_;
  float slopeAtWhite_ = 1;                         ///< of a curve that is undone
  std::array<Line, 3> lines_{};                    ///< of luma and of the chroma signals
  Hypothesis firstSteps_, curveStep_, lastSteps_;  ///< in the order in which they are undone
  Prediction first_, curve_, last_;
  Matrix3 toRgb_, fromRgb_;
  LaneMatrix toRgbLanes_, fromRgbLanes_;
};

}  // namespace diagnosis
