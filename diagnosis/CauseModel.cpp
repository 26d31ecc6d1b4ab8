#include "diagnosis/CauseModel.h"

#include <algorithm>
#include <cmath>

namespace diagnosis {
namespace {

constexpr double blackCode = 16;

struct RangeErrors {
  std::vector<Hypothesis> once, twice;
};

RangeErrors rangeErrors() {
  RangeErrors errors;
  for (const RangeStep step : {RangeStep::Compress, RangeStep::Expand, RangeStep::CompressRgb, RangeStep::ExpandRgb}) {
    Hypothesis hypothesis;
    hypothesis.rangeAfter = step;
    hypothesis.complexity = 1;
    errors.once.push_back(hypothesis);
    hypothesis.rangeBefore = step;  // the same mistake twice: in the samples, and in what is said of them
    hypothesis.complexity = 1.5;
    errors.twice.push_back(hypothesis);
  }
  return errors;
}

std::vector<Hypothesis> powers() {
  std::vector<Hypothesis> all;
  for (const auto& [tone, complexity] : {std::pair{ToneStep::PowerRgb, 1.0}, std::pair{ToneStep::PowerLuma, 1.2},
                                         std::pair{ToneStep::PowerLumaCodes, 1.4}}) {
    Hypothesis hypothesis;
    hypothesis.tone = tone;
    hypothesis.complexity = complexity;
    all.push_back(hypothesis);
  }
  return all;
}

std::vector<Hypothesis> curves() {
  const std::vector<TransferCurve> encodings{{Transfer::Srgb},       {Transfer::Bt709},        {Transfer::Linear},
                                             {Transfer::Power, 1.8}, {Transfer::Power, 1.961}, {Transfer::Power, 2.2},
                                             {Transfer::Power, 2.4}, {Transfer::Power, 2.6}};
  std::vector<Hypothesis> all;
  for (const TransferCurve& from : encodings) {
    for (const TransferCurve& to : encodings) {
      const auto isCurved = [](const TransferCurve& curve) {
        return curve.kind == Transfer::Srgb || curve.kind == Transfer::Bt709;
      };
      if ((!isCurved(from) && !isCurved(to)) || from.kind == to.kind) continue;
      Hypothesis hypothesis;
      hypothesis.tone = ToneStep::CurveRgb;
      hypothesis.from = from;
      hypothesis.to = to;
      hypothesis.complexity = 1;
      all.push_back(hypothesis);
    }
  }
  return all;
}

std::vector<Hypothesis> matrices() {
  std::vector<Hypothesis> all;
  constexpr std::uint16_t known[] = {1, 6, 9};
  for (const std::uint16_t meant : known) {
    for (const std::uint16_t taken : known) {
      if (meant == taken) continue;
      Hypothesis hypothesis;
      hypothesis.matrix = {meant, taken};
      hypothesis.complexity = 1;
      all.push_back(hypothesis);
    }
  }
  return all;
}

/// Both at once; the range before or after the tone.
void addPairs(std::vector<Hypothesis>& all, const std::vector<Hypothesis>& first,
              const std::vector<Hypothesis>& second) {
  for (const Hypothesis& one : first) {
    for (const Hypothesis& other : second) {
      Hypothesis both = other;
      both.complexity = one.complexity + other.complexity;
      if (one.hasMatrix()) both.matrix = one.matrix;
      if (!one.hasRange()) {
        all.push_back(both);
        continue;
      }
      both.rangeAfter = one.rangeAfter;
      all.push_back(both);
      std::swap(both.rangeBefore, both.rangeAfter);
      all.push_back(both);
    }
  }
}

Matrix3 matrixStep(const MatrixStep& step) {
  return product(toRgbMatrix(step.taken), fromRgbMatrix(step.meant));
}

/// y = factor * x + shift.
struct RangeLine {
  float factor = 1, shift = 0;
};

void carryAlong(const RangeLine& line, Lanes& values) {
  for (float& value : values) value = line.factor * value + line.shift;
}

/// Luma, or R', G' and B', of one range read as if it were of the other.
RangeLine rangeLine(bool compress, float fullCodes) {
  const auto black = static_cast<float>(blackCode), codes = static_cast<float>(lumaCodes);
  return compress ? RangeLine{codes / fullCodes, black / fullCodes} : RangeLine{fullCodes / codes, -black / codes};
}

ColorLanes rangedYCbCr(bool compress, ColorLanes signal, float fullCodes) {
  const float chroma = static_cast<float>(chromaCodes) / fullCodes;
  carryAlong(rangeLine(compress, fullCodes), signal[0]);
  for (const std::size_t plane : {1U, 2U}) carryAlong({compress ? chroma : 1 / chroma, 0}, signal[plane]);
  return signal;
}

ColorLanes rangedRgb(bool compress, ColorLanes rgb, float fullCodes) {
  for (Lanes& values : rgb) {
    carryAlong(rangeLine(compress, fullCodes), values);
    if (compress) continue;
    for (float& value : values) value = std::clamp(value, 0.0F, 1.0F);
  }
  return rgb;
}

Encoding encodingOf(const TransferCurve& curve) {
  switch (curve.kind) {
    case Transfer::Srgb:  // IEC 61966-2-1
      return {2.4F, 0.055F, 1 / 12.92F, 0.04045F, 0.0031308F};
    case Transfer::Bt709:
      return {1 / 0.45F, 0.099F, 1 / 4.5F, 0.081F, 0.018F};
    case Transfer::Linear:
    case Transfer::Power:
      break;
  }
  return {.exponent = curve.kind == Transfer::Linear ? 1.0F : static_cast<float>(curve.exponent)};
}

/// The logarithms of the light of signals.
Lanes lightLogarithms(const Encoding& curve, const Lanes& signals) {
  Lanes base, exponents;
  for (std::size_t i = 0; i < laneCount; ++i) {
    const float power = (signals[i] + curve.offset) / (1 + curve.offset), line = curve.slope * signals[i];
    base[i] = signals[i] <= curve.bend ? line : power;
    exponents[i] = signals[i] <= curve.bend ? 1.0F : curve.exponent;
  }
  Lanes light = logarithms(base);
  for (std::size_t i = 0; i < laneCount; ++i) light[i] *= exponents[i];
  return light;
}

Lanes signalsOf(const Encoding& curve, const Lanes& lightLogarithms) {
  Lanes signals = raised(lightLogarithms, 1 / curve.exponent);
  if (curve.bend <= 0) return signals;
  const Lanes light = raised(lightLogarithms, 1);
  for (std::size_t i = 0; i < laneCount; ++i) {
    const float power = (1 + curve.offset) * signals[i] - curve.offset, line = light[i] / curve.slope;
    signals[i] = light[i] <= curve.lightOfBend ? line : power;
  }
  return signals;
}

/// From signals of one encoding to those of another one. What is not above black stays.
Lanes transferred(const Encoding& from, const Encoding& to, const Lanes& signals) {
  Lanes result = signalsOf(to, lightLogarithms(from, signals));
  for (std::size_t i = 0; i < laneCount; ++i) result[i] = signals[i] > 0 ? result[i] : signals[i];
  return result;
}

double transferred(const TransferCurve& from, const TransferCurve& to, double signal) {
  const Lanes result = transferred(encodingOf(from), encodingOf(to), Lanes{static_cast<float>(signal)});
  return double{result.front()};
}

Lanes upToOne(Lanes values) {
  for (float& value : values) value = std::min(value, 1.0F);
  return values;
}

}  // namespace

double lightOf(const TransferCurve& curve, double signal) {
  return transferred(curve, {Transfer::Linear}, signal);
}

double signalOf(const TransferCurve& curve, double light) {
  return transferred({Transfer::Linear}, curve, light);
}

const std::vector<Hypothesis>& singleCauses() {
  static const std::vector<Hypothesis> causes = [] {
    std::vector<Hypothesis> all{Hypothesis()};
    const RangeErrors range = rangeErrors();
    for (const auto& family : {range.once, range.twice, matrices(), powers(), curves()}) {
      all.insert(all.end(), family.begin(), family.end());
    }
    return all;
  }();
  return causes;
}

const std::vector<Hypothesis>& pairsOfCauses() {
  static const std::vector<Hypothesis> causes = [] {
    const std::vector<Hypothesis> ranges = rangeErrors().once, everyPower = powers(),
                                  twoPowers{everyPower[0], everyPower[1]};
    std::vector<Hypothesis> all;
    addPairs(all, ranges, twoPowers);
    addPairs(all, matrices(), everyPower);  // exporters that lose the matrix's tag have such equalisers
    addPairs(all, ranges, matrices());
    addPairs(all, ranges, curves());
    return all;
  }();
  return causes;
}

std::optional<Hypothesis> relabelled(const SideTags& source, const SideTags& dest, const ComparedIn& space) {
  using Model = movie::PictureModel;
  if ((source.model == Model::YCbCr) != (dest.model == Model::YCbCr)) return std::nullopt;
  if (source.range == dest.range && source.matrixInForce == dest.matrixInForce) return std::nullopt;

  Hypothesis hypothesis;
  hypothesis.complexity = 0.5;
  Matrix3 into = fromRgbMatrix(space.matrix), outOf = toRgbMatrix(space.matrix);
  if (source.model == Model::YCbCr) {
    into = product(into, toRgbMatrix(dest.matrixInForce));
    outOf = product(fromRgbMatrix(source.matrixInForce), outOf);
  }
  Vector3 scale{1, 1, 1}, shift{};
  if (source.range != dest.range) {
    const bool compress = source.range == SampleRange::Video;
    const bool rgb = source.model != Model::YCbCr;
    const Vector3 full{space.fullCodes, space.fullCodes, space.fullCodes};
    scale = compress ? Vector3{lumaCodes, rgb ? lumaCodes : chromaCodes, rgb ? lumaCodes : chromaCodes} : full;
    const Vector3 to =
        compress ? full : Vector3{lumaCodes, rgb ? lumaCodes : chromaCodes, rgb ? lumaCodes : chromaCodes};
    for (std::size_t i = 0; i < 3; ++i) {
      scale[i] /= to[i];
      if (i == 0 || rgb) shift[i] = (compress ? blackCode : -blackCode) / to[i];
    }
  }
  for (std::size_t row = 0; row < 3; ++row) {
    for (double& value : outOf[row]) value *= scale[row];
  }
  hypothesis.relabelling = Relabelling{product(into, outOf), product(into, shift)};
  return hypothesis;
}

Prediction::Prediction(const Hypothesis& hypothesis, const ComparedIn& space)
    : hypothesis_(hypothesis),
      fullCodes_(static_cast<float>(space.fullCodes)),
      toRgb_(laneMatrix(toRgbMatrix(space.matrix))),
      fromRgb_(laneMatrix(fromRgbMatrix(space.matrix))),
      from_(encodingOf(hypothesis.from)),
      to_(encodingOf(hypothesis.to)) {
  if (hypothesis.relabelling) {
    matrix_ = laneMatrix(hypothesis.relabelling->matrix);
  } else if (hypothesis.hasMatrix()) {
    const Matrix3 onSignals = product(matrixStep(hypothesis.matrix), toRgbMatrix(space.matrix));
    matrix_ = laneMatrix(product(fromRgbMatrix(space.matrix), onSignals));
  }
}

ColorLanes Prediction::ranged(RangeStep step, const ColorLanes& signal) const {
  switch (step) {
    case RangeStep::None:
      break;
    case RangeStep::Compress:
    case RangeStep::Expand:
      return rangedYCbCr(step == RangeStep::Compress, signal, fullCodes_);
    case RangeStep::CompressRgb:
    case RangeStep::ExpandRgb:
      return product(fromRgb_, rangedRgb(step == RangeStep::CompressRgb, product(toRgb_, signal), fullCodes_));
  }
  return signal;
}

Prediction::Before Prediction::beforeTone(const ColorLanes& source) const {
  if (hypothesis_.relabelling) {
    Before before{product(matrix_, source), {}};
    for (std::size_t plane = 0; plane < 3; ++plane) {
      carryAlong({1, static_cast<float>(hypothesis_.relabelling->shift[plane])}, before.signal[plane]);
    }
    return before;
  }
  Before before{ranged(hypothesis_.rangeBefore, source), {}};
  if (hypothesis_.hasMatrix()) before.signal = product(matrix_, before.signal);
  switch (hypothesis_.tone) {
    case ToneStep::PowerRgb: {
      const ColorLanes rgb = product(toRgb_, before.signal);
      for (std::size_t plane = 0; plane < 3; ++plane) before.logarithms[plane] = logarithms(upToOne(rgb[plane]));
      break;
    }
    case ToneStep::PowerLuma:
      before.logarithms[0] = logarithms(before.signal[0]);
      break;
    case ToneStep::PowerLumaCodes: {
      Lanes codes = before.signal[0];
      carryAlong(rangeLine(true, fullCodes_), codes);
      before.logarithms[0] = logarithms(codes);
      break;
    }
    case ToneStep::None:
    case ToneStep::CurveRgb:
      break;
  }
  return before;
}

ColorLanes Prediction::toned(const Before& before, float exponent) const {
  ColorLanes result = before.signal;
  switch (hypothesis_.tone) {
    case ToneStep::None:
      break;
    case ToneStep::PowerRgb:
      for (std::size_t plane = 0; plane < 3; ++plane) result[plane] = raised(before.logarithms[plane], exponent);
      return product(fromRgb_, result);
    case ToneStep::PowerLuma:
      result[0] = raised(before.logarithms[0], exponent);
      break;
    case ToneStep::PowerLumaCodes:
      result[0] = raised(before.logarithms[0], exponent);
      carryAlong(rangeLine(false, fullCodes_), result[0]);
      break;
    case ToneStep::CurveRgb:
      result = product(toRgb_, result);
      for (Lanes& values : result) values = transferred(from_, to_, upToOne(values));
      return product(fromRgb_, result);
  }
  return result;
}

ColorLanes Prediction::afterTone(const Before& before, double exponent) const {
  return hypothesis_.relabelling ? before.signal
                                 : ranged(hypothesis_.rangeAfter, toned(before, static_cast<float>(exponent)));
}

}  // namespace diagnosis
