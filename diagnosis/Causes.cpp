#include "diagnosis/Causes.h"

#include <algorithm>
#include <cmath>

#include "diagnosis/Difference.h"
#include "diagnosis/Explanations.h"

namespace diagnosis {
namespace {

/// Where the best known cause leaves more than this, there is another, unknown one.
constexpr double unknownCost = 1.75, pairUnknownCost = 1.2;
constexpr double gainComplexity = 2.5, gainAfterMatrixComplexity = 3.5, toneComplexity = 6;
/// What differs by less than this part of the tolerance is the same, whatever would explain it; unless single colours
/// differ by more than so many times the tolerance.
constexpr double negligibleShare = 0.5, colorsApart = 2.25;
/// And what differs by less than this, where a change of tone is what explains it best: a code that was lost on the way
/// looks like one. Ranges and matrices are found at less.
constexpr double toneShare = 0.75;
/// Samples count as the same where that leaves hardly more than a conversion does.
constexpr double samplesReach = 0.3;
/// Colours nearer to grey than this, on average, say nothing of what became of chroma.
constexpr double leastChroma = 0.01;
/// Fewer colours than this do not tell causes apart.
constexpr double fewestColors = 2;

double logistic(double value) {
  return 1 / (1 + std::exp(-value));
}

Direction directionOf(double exponent) {
  return exponent > 1 ? Direction::Darker : Direction::Lighter;
}

Cause rangeCause(const Hypothesis& hypothesis) {
  const RangeStep step = hypothesis.rangeBefore != RangeStep::None ? hypothesis.rangeBefore : hypothesis.rangeAfter;
  const bool compressed = step == RangeStep::Compress || step == RangeStep::CompressRgb;
  return {.kind = CauseKind::Range,
          .direction = compressed ? Direction::Compressed : Direction::Expanded,
          .where = Where::Codes};
}

/// The direction in which the range would go if the samples were the same; none where both are in one.
std::optional<Direction> flaggedDirection(const ColorEvidence& evidence) {
  if (evidence.source.range == evidence.dest.range) return std::nullopt;
  return evidence.source.range == SampleRange::Video ? Direction::Compressed : Direction::Expanded;
}

std::vector<Cause> relabelledCauses(const ColorEvidence& evidence) {
  std::vector<Cause> causes;
  if (const std::optional<Direction> direction = flaggedDirection(evidence)) {
    causes.push_back({.kind = CauseKind::Range, .direction = direction, .where = Where::Flags});
  }
  if (evidence.source.matrixInForce != evidence.dest.matrixInForce) {
    causes.push_back({.kind = CauseKind::Matrix, .where = Where::Tags});
  }
  return causes;
}

/// The exponent is told of signals from black to white, whatever an equaliser counted from.
Cause powerCause(const CauseFit& fit, const ColorEvidence& evidence) {
  Hypothesis onSignals = *fit.hypothesis;
  if (onSignals.tone == ToneStep::PowerLumaCodes) onSignals.tone = ToneStep::PowerLuma;
  const CauseFit told =
      onSignals.tone == fit.hypothesis->tone ? fit : fitCause(onSignals, evidence.strata, evidence.space);
  return {.kind = CauseKind::Power,
          .exponent = told.exponent,
          .exponentInterval = exponentInterval(told, evidence.strata, evidence.space),
          .direction = directionOf(told.exponent)};
}

/// So small an exponent is what rounding on the way leaves, beside a wrong range or matrix all the more.
bool isNoPower(const CauseFit& fit) {
  const bool besideOthers = fit.hypothesis->hasRange() || fit.hypothesis->hasMatrix();
  return std::abs(std::log(fit.exponent)) < (besideOthers ? 0.03 : 0.008);
}

/// What a hypothesis stands for, without the numbers.
std::vector<Cause> knownCauses(const CauseFit& fit, const ColorEvidence& evidence) {
  const Hypothesis& hypothesis = *fit.hypothesis;
  if (hypothesis.relabelling) return relabelledCauses(evidence);
  std::vector<Cause> causes;
  if (hypothesis.hasRange()) causes.push_back(rangeCause(hypothesis));
  if (hypothesis.hasMatrix()) causes.push_back({.kind = CauseKind::Matrix, .where = Where::Codes});
  if (hypothesis.hasExponent() && !isNoPower(fit)) causes.push_back({.kind = CauseKind::Power});
  if (hypothesis.tone == ToneStep::CurveRgb) causes.push_back({.kind = CauseKind::Tone});
  if (causes.empty()) causes.push_back({.kind = CauseKind::Same});
  return causes;
}

/// Whether a line is that of one range taken for the other, once or twice: deeper codes than 8 bits differ a little in
/// it.
std::optional<Direction> rangeOf(const GainFit& fit, bool grey) {
  constexpr double gainReach = 0.012, codesReach = 2;
  const double compressed = lumaCodes / 255, shift = 16.0 / 255;
  const auto near = [&](double gain, double offset) {
    return std::abs(fit.gain - gain) <= gainReach && std::abs(lumaCodes * (fit.offset - offset)) <= codesReach &&
           (grey || std::abs(fit.chroma / gain - 1) <= 0.05);
  };
  if (near(compressed, shift)) return Direction::Compressed;
  if (near(compressed * compressed, shift * (1 + compressed))) return Direction::Compressed;
  if (near(1 / compressed, -shift / compressed)) return Direction::Expanded;
  if (near(1 / compressed / compressed, -shift * (1 + compressed) / compressed / compressed))
    return Direction::Expanded;
  return std::nullopt;
}

/// Whether luma stays, or hardly changes beside the colours.
bool isSaturation(const GainFit& fit, const std::vector<Stratum>& strata) {
  constexpr double gainReach = 0.02, codesReach = 1.5, mostlyColors = 2;
  if (std::abs(fit.gain - 1) <= gainReach && std::abs(lumaCodes * fit.offset) <= codesReach) return true;
  // Chroma goes with luma, or stays where an equaliser leaves it alone.
  const double ofItsOwn = std::min(std::abs(fit.chroma - fit.gain), std::abs(fit.chroma - 1));
  double luma = 0, chroma = 0;
  for (const Stratum& stratum : strata) {
    const auto& [y, blue, red] = stratum.source;
    luma += stratum.weight * lumaCodes * std::abs((fit.gain - 1) * y + fit.offset);
    chroma += stratum.weight * chromaCodes * ofItsOwn * std::hypot(blue, red);
  }
  return chroma > mostlyColors * luma;
}

Cause gainCause(const GainFit& fit, const ColorEvidence& evidence) {
  if (const std::optional<Direction> direction = rangeOf(fit, extentOf(evidence.strata).chroma < leastChroma)) {
    const bool flagged = direction == flaggedDirection(evidence) && evidence.source.model == evidence.dest.model;
    return {.kind = CauseKind::Range, .direction = direction, .where = flagged ? Where::Flags : Where::Codes};
  }
  const bool inverted = fit.gain <= 0;
  if (inverted || isSaturation(fit, evidence.strata)) return {.kind = CauseKind::Tone};

  Cause cause{.kind = CauseKind::Gain, .gain = fit.gain, .offset = lumaCodes * fit.offset};
  const double middle = fit.gain * 0.5 + fit.offset - 0.5;
  cause.direction = middle < 0 ? Direction::Darker : Direction::Lighter;
  return cause;
}

/// The causes that one explanation names, and how it compares.
struct Verdict {
  std::vector<Cause> causes;
  double cost = 0, score = 0;
  const CauseFit* fit = nullptr;       ///< of a known cause
  const GainFit* gain = nullptr;       ///< of a line
  const Hypothesis* before = nullptr;  ///< what came before that, or all there is
  bool unknown = false;                ///< no known cause explains enough
};

CauseKind kindOf(const Verdict& verdict) {
  return verdict.causes.front().kind;
}

bool namesTheSame(const Verdict& one, const Verdict& other) {
  return std::equal(one.causes.begin(), one.causes.end(), other.causes.begin(), other.causes.end(),
                    [](const Cause& a, const Cause& b) { return a.kind == b.kind; });
}

/// The one first that alone leaves less unexplained.
Verdict matrixAndGain(const Explanations& all, const ColorEvidence& evidence) {
  const GainFit& gain = all.gainAfterMatrix;
  std::vector<Cause> causes{{.kind = CauseKind::Matrix, .where = Where::Codes}, gainCause(gain, evidence)};
  if (all.gain.cost < costOf(*all.matrixBeforeGain, 1, evidence.strata, evidence.space))
    std::swap(causes[0], causes[1]);
  return {.causes = causes,
          .cost = gain.cost,
          .score = CauseFit::score(gain.cost, gainAfterMatrixComplexity),
          .gain = &gain,
          .before = all.matrixBeforeGain};
}

std::vector<Verdict> verdictsOf(const Explanations& all, const ColorEvidence& evidence) {
  std::vector<Verdict> verdicts;
  for (const CauseFit& fit : all.known) verdicts.push_back({knownCauses(fit, evidence), fit.cost, fit.score(), &fit});
  verdicts.push_back({.causes = {gainCause(all.gain, evidence)},
                      .cost = all.gain.cost,
                      .score = CauseFit::score(all.gain.cost, gainComplexity),
                      .gain = &all.gain});
  if (all.matrixBeforeGain != nullptr) verdicts.push_back(matrixAndGain(all, evidence));
  verdicts.push_back({{Cause{.kind = CauseKind::Tone}}, all.toneCost, CauseFit::score(all.toneCost, toneComplexity)});
  std::stable_sort(verdicts.begin(), verdicts.end(),
                   [](const Verdict& one, const Verdict& other) { return one.score < other.score; });
  return verdicts;
}

/// What differs once an explanation is undone, as differenceOf().
double differenceLeft(const Verdict& verdict, const ColorEvidence& evidence) {
  if (verdict.fit != nullptr) {
    const auto& [hypothesis, exponent, cost] = *verdict.fit;
    return differenceOf(carriedBy(*hypothesis, exponent, evidence.strata, evidence.space));
  }
  if (verdict.gain == nullptr) return 0;
  if (verdict.before == nullptr) return differenceOf(carriedBy(*verdict.gain, evidence.strata));
  return differenceOf(carriedBy(*verdict.gain, carriedBy(*verdict.before, 1, evidence.strata, evidence.space)));
}

/// Whether an explanation leaves so little that it can be told. Two causes together come halfway near to anything; and
/// what leaves as much as it finds explains nothing.
bool isKnown(const Verdict& best, const Explanations& all, const ColorEvidence& evidence) {
  constexpr double leastShare = 0.25;
  if (differenceLeft(best, evidence) > (1 - leastShare) * evidence.difference) return false;
  if (best.causes.size() > 1) return best.cost <= pairUnknownCost;
  const bool ofNoCause = kindOf(best) == CauseKind::Tone && best.fit == nullptr;
  return best.cost <= unknownCost || (!ofNoCause && best.cost < 2 * unknownCost && all.toneCost > 0.85 * best.cost);
}

/// The best explanation; where even that leaves too much, an unknown change of tone.
Verdict chosen(const std::vector<Verdict>& verdicts, const Explanations& all, const ColorEvidence& evidence) {
  const Verdict& best = verdicts.front();
  if (kindOf(best) == CauseKind::Same) return best;
  if (!isKnown(best, all, evidence)) {
    return {.causes = {Cause{.kind = CauseKind::Tone}}, .cost = best.cost, .score = best.score, .unknown = true};
  }
  const bool sameSamples =
      kindOf(best) == CauseKind::Range && all.relabelling && all.relabelledCost <= best.cost + samplesReach;
  return sameSamples ? Verdict{.causes = relabelledCauses(evidence),
                               .cost = all.relabelledCost,
                               .score = best.score,
                               .before = &*all.relabelling}
                     : best;
}

/// Whether luma shifted by one number, as conversions shift it that cut off instead of rounding, explains as much.
bool isCutOff(const Verdict& best, const ColorEvidence& evidence) {
  return shiftedCost(evidence.strata) <= best.cost + samplesReach;
}

/// What differs little, and is not explained by a cause.
bool isTheSame(const Verdict& best, const Explanations& all, const ColorEvidence& evidence) {
  if (evidence.difference > evidence.tolerance) return false;
  if (all.identityCost > colorsApart * evidence.tolerance) return false;
  const bool isTone = kindOf(best) != CauseKind::Range && kindOf(best) != CauseKind::Matrix;
  if (isTone && (evidence.difference <= toneShare * evidence.tolerance || isCutOff(best, evidence))) return true;
  return kindOf(best) == CauseKind::Same || best.cost > 0.5 * all.identityCost;
}

/// Many colours tell more than few: 0 for fifty.
double colorsOf(const ColorEvidence& evidence) {
  return std::log(std::max(1.0, extentOf(evidence.strata).count) / 50);
}

/// By how much an explanation is better than the next one of another kind, from how many colours, and how much it
/// leaves unexplained.
double confidenceOf(const Verdict& best, double runnerUp, const ColorEvidence& evidence) {
  // That it is none of the known ones is the surer the less they explain; how much is left then says nothing.
  if (best.unknown) return logistic(2.0 + 0.5 * colorsOf(evidence));
  const double margin = std::min(2.0, (runnerUp - best.score) / std::max(0.3, best.score));
  const double mystery = std::max(0.0, best.cost - 2);
  return logistic(2.8 + 1.9 * margin + colorsOf(evidence) - 0.6 * mystery);
}

/// What is left unexplained where one of the causes of a hypothesis was not.
double costWithout(CauseKind kind, const CauseFit& fit, const ColorEvidence& evidence) {
  Hypothesis others = *fit.hypothesis;
  if (kind == CauseKind::Range) others.rangeBefore = others.rangeAfter = RangeStep::None;
  if (kind == CauseKind::Matrix) others.matrix = MatrixStep();
  if (kind == CauseKind::Power || kind == CauseKind::Tone) others.tone = ToneStep::None;
  return costOf(others, fit.exponent, evidence.strata, evidence.space);
}

/// Of two causes of a hypothesis, the one without which more is left.
void putWeightiestFirst(Verdict& best, const ColorEvidence& evidence) {
  if (best.fit == nullptr || best.fit->hypothesis->relabelling || best.causes.size() != 2) return;
  std::vector<Cause>& causes = best.causes;
  const double withoutFirst = costWithout(causes[0].kind, *best.fit, evidence);
  if (costWithout(causes[1].kind, *best.fit, evidence) > withoutFirst) std::swap(causes[0], causes[1]);
}

std::optional<Recipe> recipeOf(const Verdict& verdict) {
  if (verdict.fit != nullptr) {
    Recipe recipe{*verdict.fit->hypothesis, verdict.fit->exponent, std::nullopt};
    if (recipe.hypothesis.hasExponent() && isNoPower(*verdict.fit)) recipe.hypothesis.tone = ToneStep::None;
    return recipe;
  }
  if (verdict.gain == nullptr && verdict.before == nullptr) return std::nullopt;
  Recipe recipe;
  if (verdict.before != nullptr) recipe.hypothesis = *verdict.before;
  if (verdict.gain != nullptr) recipe.gain = *verdict.gain;
  return recipe;
}

double runnerUpScore(const Verdict& best, const std::vector<Verdict>& verdicts) {
  for (const Verdict& verdict : verdicts) {
    if (!namesTheSame(verdict, best)) return verdict.score;
  }
  return best.score;
}

bool differsByNothing(const ColorEvidence& evidence) {
  return evidence.difference <= negligibleShare * evidence.tolerance &&
         fitCause(Hypothesis(), evidence.strata, evidence.space).cost <= colorsApart * evidence.tolerance;
}

std::vector<Cause> sameCauses(const ColorEvidence& evidence) {
  const double confidence = logistic(2.5 + 2.0 * (evidence.tolerance - evidence.difference) + 0.8 * colorsOf(evidence));
  const double residual = fitCause(Hypothesis(), evidence.strata, evidence.space).cost;
  return {{.kind = CauseKind::Same, .confidence = confidence, .residual = residual}};
}

}  // namespace

std::vector<Cause> causesOf(const ColorEvidence& evidence) {
  return toldCauses(evidence).causes;
}

ToldCauses toldCauses(const ColorEvidence& evidence) {
  if (evidence.identicalSamples && sameMeaning(evidence.source, evidence.dest)) {
    return {{{.kind = CauseKind::Identical, .confidence = 1}}, std::nullopt};
  }
  if (static_cast<double>(evidence.strata.size()) < fewestColors) {
    return {{{.kind = CauseKind::Unreadable, .confidence = 0.9}}, std::nullopt};
  }
  if (differsByNothing(evidence)) return {sameCauses(evidence), std::nullopt};
  Explanations all;
  explain(all, evidence);
  const std::vector<Verdict> verdicts = verdictsOf(all, evidence);
  Verdict best = chosen(verdicts, all, evidence);
  if (isTheSame(best, all, evidence)) return {sameCauses(evidence), std::nullopt};
  if (kindOf(best) == CauseKind::Same) {
    const double cost = std::min(all.toneCost, all.identityCost);
    best = {
        .causes = {Cause{.kind = CauseKind::Tone}}, .cost = cost, .score = best.score, .unknown = cost > unknownCost};
  }

  putWeightiestFirst(best, evidence);
  const double confidence = confidenceOf(best, runnerUpScore(best, verdicts), evidence);
  for (Cause& cause : best.causes) {
    if (cause.kind == CauseKind::Power) cause = powerCause(*best.fit, evidence);
    cause.confidence = confidence;
    cause.residual = best.cost;
  }
  return {best.causes, recipeOf(best)};
}

double differentConfidence(double score) {
  return logistic(14 * (0.95 - score));
}

}  // namespace diagnosis
