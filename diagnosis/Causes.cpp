#include "diagnosis/Causes.h"

#include <algorithm>
#include <cmath>

#include "diagnosis/CauseFit.h"

namespace diagnosis {
namespace {

/// Where the best known cause leaves more than this, there is another, unknown one.
constexpr double unknownCost = 1.75;
/// A single cause that leaves less than this needs no second one.
constexpr double explainedCost = 0.45;
constexpr double gainComplexity = 2.5, toneComplexity = 6;
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

/// All explanations of one comparison.
struct Explanations {
  std::optional<Hypothesis> relabelling;
  std::vector<CauseFit> known;  ///< the best first
  double identityCost = 0;
  double relabelledCost = 0;
  GainFit gain;
  double toneCost = 0;
};

void explain(Explanations& all, const ColorEvidence& evidence) {
  all.known = likeliestCauses(singleCauses(), evidence.strata, evidence.space);
  all.identityCost = fitCause(singleCauses().front(), evidence.strata, evidence.space).cost;
  all.relabelling = relabelled(evidence.source, evidence.dest, evidence.space);
  if (all.relabelling) {
    all.known.push_back(fitCause(*all.relabelling, evidence.strata, evidence.space));
    all.relabelledCost = all.known.back().cost;
    rank(all.known);
  }
  all.gain = fitGain(evidence.strata);
  all.toneCost = anyToneCost(evidence.strata);
  if (all.known.front().cost <= explainedCost) return;
  const std::vector<CauseFit> pairs = likeliestCauses(pairsOfCauses(), evidence.strata, evidence.space);
  all.known.insert(all.known.end(), pairs.begin(), pairs.end());
  rank(all.known);
}

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

/// Whether luma stays, and only the colours go.
bool isSaturation(const GainFit& fit) {
  constexpr double gainReach = 0.02, codesReach = 1.5;
  return std::abs(fit.gain - 1) <= gainReach && std::abs(lumaCodes * fit.offset) <= codesReach;
}

Cause gainCause(const GainFit& fit, const ColorEvidence& evidence) {
  if (const std::optional<Direction> direction = rangeOf(fit, extentOf(evidence.strata).chroma < leastChroma)) {
    const bool flagged = direction == flaggedDirection(evidence) && evidence.source.model == evidence.dest.model;
    return {.kind = CauseKind::Range, .direction = direction, .where = flagged ? Where::Flags : Where::Codes};
  }
  const bool inverted = fit.gain <= 0;
  if (inverted || isSaturation(fit)) return {.kind = CauseKind::Tone};

  Cause cause{.kind = CauseKind::Gain, .gain = fit.gain, .offset = lumaCodes * fit.offset};
  const double middle = fit.gain * 0.5 + fit.offset - 0.5;
  cause.direction = middle < 0 ? Direction::Darker : Direction::Lighter;
  return cause;
}

/// The causes that one explanation names, and how it compares.
struct Verdict {
  std::vector<Cause> causes;
  double cost = 0, score = 0;
  const CauseFit* fit = nullptr;  ///< of a known cause
};

CauseKind kindOf(const Verdict& verdict) {
  return verdict.causes.front().kind;
}

bool namesTheSame(const Verdict& one, const Verdict& other) {
  return std::equal(one.causes.begin(), one.causes.end(), other.causes.begin(), other.causes.end(),
                    [](const Cause& a, const Cause& b) { return a.kind == b.kind; });
}

std::vector<Verdict> verdictsOf(const Explanations& all, const ColorEvidence& evidence) {
  std::vector<Verdict> verdicts;
  for (const CauseFit& fit : all.known) verdicts.push_back({knownCauses(fit, evidence), fit.cost, fit.score(), &fit});
  verdicts.push_back({{gainCause(all.gain, evidence)}, all.gain.cost, CauseFit::score(all.gain.cost, gainComplexity)});
  verdicts.push_back({{Cause{.kind = CauseKind::Tone}}, all.toneCost, CauseFit::score(all.toneCost, toneComplexity)});
  std::stable_sort(verdicts.begin(), verdicts.end(),
                   [](const Verdict& one, const Verdict& other) { return one.score < other.score; });
  return verdicts;
}

/// The best explanation; where even that leaves too much, and a curve leaves less, an unknown change of tone.
Verdict chosen(const std::vector<Verdict>& verdicts, const Explanations& all, const ColorEvidence& evidence) {
  const Verdict& best = verdicts.front();
  const bool known = best.cost <= unknownCost || (best.cost < 2 * unknownCost && all.toneCost > 0.85 * best.cost);
  if (kindOf(best) == CauseKind::Same) return best;
  if (!known) return {{Cause{.kind = CauseKind::Tone}}, best.cost, best.score};
  const bool sameSamples =
      kindOf(best) == CauseKind::Range && all.relabelling && all.relabelledCost <= best.cost + samplesReach;
  return sameSamples ? Verdict{relabelledCauses(evidence), all.relabelledCost, best.score} : best;
}

/// What differs little, and is not explained by a cause.
bool isTheSame(const Verdict& best, const Explanations& all, const ColorEvidence& evidence) {
  if (evidence.difference > evidence.tolerance) return false;
  if (all.identityCost > colorsApart * evidence.tolerance) return false;
  const bool isTone = kindOf(best) != CauseKind::Range && kindOf(best) != CauseKind::Matrix;
  if (isTone && evidence.difference <= toneShare * evidence.tolerance) return true;
  return kindOf(best) == CauseKind::Same || best.cost > 0.5 * all.identityCost;
}

/// Many colours tell more than few: 0 for fifty.
double colorsOf(const ColorEvidence& evidence) {
  return std::log(std::max(1.0, extentOf(evidence.strata).count) / 50);
}

/// By how much an explanation is better than the next one of another kind, from how many colours, and how much it
/// leaves unexplained.
double confidenceOf(const Verdict& best, double runnerUp, const ColorEvidence& evidence) {
  const double margin = std::min(2.0, (runnerUp - best.score) / std::max(0.3, best.score));
  const double mystery = std::max(0.0, best.cost - 2);
  return logistic(2.8 + 1.9 * margin + colorsOf(evidence) - 0.6 * mystery);
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
  if (evidence.identicalSamples && sameMeaning(evidence.source, evidence.dest)) {
    return {{.kind = CauseKind::Identical, .confidence = 1}};
  }
  if (static_cast<double>(evidence.strata.size()) < fewestColors) {
    return {{.kind = CauseKind::Unreadable, .confidence = 0.9}};
  }
  if (differsByNothing(evidence)) return sameCauses(evidence);
  Explanations all;
  explain(all, evidence);
  const std::vector<Verdict> verdicts = verdictsOf(all, evidence);
  Verdict best = chosen(verdicts, all, evidence);
  if (isTheSame(best, all, evidence)) return sameCauses(evidence);
  if (kindOf(best) == CauseKind::Same) {
    best = {{Cause{.kind = CauseKind::Tone}}, std::min(all.toneCost, all.identityCost), best.score};
  }

  const double confidence = confidenceOf(best, runnerUpScore(best, verdicts), evidence);
  for (Cause& cause : best.causes) {
    if (cause.kind == CauseKind::Power) cause = powerCause(*best.fit, evidence);
    cause.confidence = confidence;
    cause.residual = best.cost;
  }
  return best.causes;
}

double differentConfidence(double score) {
  return logistic(14 * (0.95 - score));
}

}  // namespace diagnosis
