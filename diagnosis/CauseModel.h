#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

#include "diagnosis/Finding.h"
#include "diagnosis/Signal.h"
#include "diagnosis/numbers/Lanes.h"

namespace diagnosis {

/// Ways to mistake one range for the other, of Y'CbCr codes or of R'G'B' ones.
enum class RangeStep { None, Compress, Expand, CompressRgb, ExpandRgb };

/// Y'CbCr of the matrix `meant` decoded as if it were of the matrix `taken`; the same for none.
struct MatrixStep {
  std::uint16_t meant = 1, taken = 1;
};

enum class ToneStep {
  None,
  PowerRgb,        ///< each of R', G' and B' raised to an exponent
  PowerLuma,       ///< luma alone
  PowerLumaCodes,  ///< luma counted from code 0 to 255, as equalisers do that know of no range
  CurveRgb,        ///< light encoded by one transfer function, taken for another's
};

/// Encodings of light: 1.961, 2.2 and the like are pure exponents.
enum class Transfer { Srgb, Bt709, Linear, Power };
struct TransferCurve {
  Transfer kind = Transfer::Power;
  double exponent = 1;  ///< for Power
};
double lightOf(const TransferCurve& curve, double signal);
double signalOf(const TransferCurve& curve, double light);

/// Two sides as they are tagged: the step from source to destination when the samples are the same.
struct Relabelling {
  Matrix3 matrix{};
  Vector3 shift{};
};

/// What may have been done to a picture, in this order: range, matrix, tone, range.
struct Hypothesis {
  RangeStep rangeBefore = RangeStep::None;
  MatrixStep matrix;
  ToneStep tone = ToneStep::None;
  TransferCurve from, to;  ///< for CurveRgb
  RangeStep rangeAfter = RangeStep::None;
  std::optional<Relabelling> relabelling;  ///< instead of all the others
  double complexity = 0;                   ///< how much better than a simpler one it has to fit

  bool hasExponent() const {
    return tone == ToneStep::PowerRgb || tone == ToneStep::PowerLuma || tone == ToneStep::PowerLumaCodes;
  }
  bool hasMatrix() const { return matrix.meant != matrix.taken; }
  bool hasRange() const { return rangeBefore != RangeStep::None || rangeAfter != RangeStep::None; }
};

/// The single causes, of which the first is none; and the pairs of causes that go together.
const std::vector<Hypothesis>& singleCauses();
const std::vector<Hypothesis>& pairsOfCauses();

/// The same samples under the other side's tags; none where that changes nothing, or where one side is RGB.
std::optional<Hypothesis> relabelled(const SideTags& source, const SideTags& dest, const ComparedIn& space);

/// The same with all its numbers: a power of the signal with an offset, and a line below a bend. A pure exponent has
/// neither.
struct Encoding {
  float exponent = 1, offset = 0;
  float slope = 1, bend = 0;  ///< the line's, light over signal; and the signal up to which it goes
  float lightOfBend = 0;
};

/// A hypothesis on colours of the Y'PbPr of a common matrix.
class Prediction {
 public:
  Prediction(const Hypothesis& hypothesis, const ComparedIn& space);

  /// Everything before the tone; of a relabelling, all there is.
  struct Before {
    ColorLanes signal{};      ///< Y'PbPr
    ColorLanes logarithms{};  ///< of what an exponent raises
  };
  Before beforeTone(const ColorLanes& source) const;
  /// What becomes of it. `exponent` where the hypothesis has one.
  ColorLanes afterTone(const Before& before, double exponent) const;

 private:
  ColorLanes toned(const Before& before, float exponent) const;
  ColorLanes ranged(RangeStep step, const ColorLanes& signal) const;
  const Hypothesis& hypothesis_;
  float fullCodes_;
  LaneMatrix toRgb_, fromRgb_;
  LaneMatrix matrix_{};  ///< of the hypothesis, or of its relabelling, from Y'PbPr to Y'PbPr
  Encoding from_, to_;
};

}  // namespace diagnosis
