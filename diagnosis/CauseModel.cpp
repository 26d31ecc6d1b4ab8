#include "diagnosis/CauseModel.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace diagnosis {
namespace {

constexpr double blackCode = 16;

/// In single precision, which is several times quicker and off by far less than a code.
double power(double value, double exponent) {
  return double{std::pow(static_cast<float>(value), static_cast<float>(exponent))};
}

/// What lies below black becomes black.
float logarithm(double value) {
  return value <= 0 ? -std::numeric_limits<float>::infinity() : std::log2(static_cast<float>(value));
}

/// What has this logarithm, to a power.
double raised(float logarithm, double exponent) {
  return double{std::exp2(static_cast<float>(exponent) * logarithm)};
}

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

/// Y'CbCr of one range read as if it were of the other.
Vector3 rangedYCbCr(bool compress, const Vector3& signal, double fullCodes) {
  const double chroma = chromaCodes / fullCodes;
  if (compress) {
    return {(lumaCodes * signal[0] + blackCode) / fullCodes, signal[1] * chroma, signal[2] * chroma};
  }
  return {(fullCodes * signal[0] - blackCode) / lumaCodes, signal[1] / chroma, signal[2] / chroma};
}

Vector3 rangedRgb(bool compress, Vector3 rgb, double fullCodes) {
  for (double& value : rgb) {
    value = compress ? (lumaCodes * value + blackCode) / fullCodes
                     : std::clamp((fullCodes * value - blackCode) / lumaCodes, 0.0, 1.0);
  }
  return rgb;
}

}  // namespace

double lightOf(const TransferCurve& curve, double signal) {
  if (signal <= 0) return signal;
  switch (curve.kind) {
    case Transfer::Srgb:  // IEC 61966-2-1
      return signal <= 0.04045 ? signal / 12.92 : power((signal + 0.055) / 1.055, 2.4);
    case Transfer::Bt709:
      return signal < 0.081 ? signal / 4.5 : power((signal + 0.099) / 1.099, 1 / 0.45);
    case Transfer::Linear:
      return signal;
    case Transfer::Power:
      break;
  }
  return power(signal, curve.exponent);
}

double signalOf(const TransferCurve& curve, double light) {
  if (light <= 0) return light;
  switch (curve.kind) {
    case Transfer::Srgb:
      return light <= 0.0031308 ? 12.92 * light : 1.055 * power(light, 1 / 2.4) - 0.055;
    case Transfer::Bt709:
      return light < 0.018 ? 4.5 * light : 1.099 * power(light, 0.45) - 0.099;
    case Transfer::Linear:
      return light;
    case Transfer::Power:
      break;
  }
  return power(light, 1 / curve.exponent);
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
      fullCodes_(space.fullCodes),
      toRgb_(toRgbMatrix(space.matrix)),
      fromRgb_(fromRgbMatrix(space.matrix)),
      matrix_(product(fromRgb_, product(matrixStep(hypothesis.matrix), toRgb_))) {}

Vector3 Prediction::ranged(RangeStep step, const Vector3& signal) const {
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

Prediction::Before Prediction::beforeTone(const Vector3& source) const {
  if (hypothesis_.relabelling) {
    Vector3 result = product(hypothesis_.relabelling->matrix, source);
    for (std::size_t i = 0; i < 3; ++i) result[i] += hypothesis_.relabelling->shift[i];
    return {result};
  }
  Before before{ranged(hypothesis_.rangeBefore, source)};
  if (hypothesis_.hasMatrix()) before.signal = product(matrix_, before.signal);
  const double luma = before.signal[0];
  switch (hypothesis_.tone) {
    case ToneStep::PowerRgb: {
      const Vector3 rgb = product(toRgb_, before.signal);
      for (std::size_t i = 0; i < 3; ++i) before.logarithms[i] = logarithm(std::min(rgb[i], 1.0));
      break;
    }
    case ToneStep::PowerLuma:
      before.logarithms[0] = logarithm(luma);
      break;
    case ToneStep::PowerLumaCodes:
      before.logarithms[0] = logarithm((blackCode + lumaCodes * luma) / fullCodes_);
      break;
    case ToneStep::None:
    case ToneStep::CurveRgb:
      break;
  }
  return before;
}

Vector3 Prediction::toned(const Before& before, double exponent) const {
  Vector3 result = before.signal;
  switch (hypothesis_.tone) {
    case ToneStep::None:
      break;
    case ToneStep::PowerRgb:
      for (std::size_t i = 0; i < 3; ++i) result[i] = raised(before.logarithms[i], exponent);
      return product(fromRgb_, result);
    case ToneStep::PowerLuma:
      result[0] = raised(before.logarithms[0], exponent);
      break;
    case ToneStep::PowerLumaCodes:
      result[0] = (raised(before.logarithms[0], exponent) * fullCodes_ - blackCode) / lumaCodes;
      break;
    case ToneStep::CurveRgb:
      result = product(toRgb_, result);
      for (double& value : result) value = signalOf(hypothesis_.to, lightOf(hypothesis_.from, std::min(value, 1.0)));
      return product(fromRgb_, result);
  }
  return result;
}

Vector3 Prediction::afterTone(const Before& before, double exponent) const {
  return hypothesis_.relabelling ? before.signal : ranged(hypothesis_.rangeAfter, toned(before, exponent));
}

}  // namespace diagnosis
