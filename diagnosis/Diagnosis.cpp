#include "diagnosis/Diagnosis.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "diagnosis/Advice.h"
#include "diagnosis/CauseFit.h"
#include "diagnosis/Causes.h"
#include "diagnosis/PlacementSearch.h"
#include "diagnosis/Strata.h"

namespace diagnosis {
namespace {

/// A picture is dark where so many of its samples are not brighter than this.
constexpr double darkShare = 0.85;
constexpr float darkLuma = 16 / static_cast<float>(lumaCodes);
/// A picture that varies by less, in codes of 8 bits, has nothing in it to hold on to.
constexpr double leastDeviation = 5;

bool isDark(const Signal& signal) {
  const auto dark =
      std::count_if(signal.luma().begin(), signal.luma().end(), [](float luma) { return luma <= darkLuma; });
  return static_cast<double>(dark) >= darkShare * static_cast<double>(signal.size());
}

bool areIdentical(const movie::Picture& source, const movie::Picture& dest) {
  return source.model == dest.model && source.width == dest.width && source.height == dest.height &&
         source.planes == dest.planes;
}

/// What the frames of a question have in common.
struct Evidence {
  StrataBuilder strata;
  Correspondence best;
  int frames = 0, dark = 0, unmatched = 0, flat = 0;
  bool identical = false;  ///< the samples of all frames
};

void look(Evidence& evidence, const FramePair& pair, const Question& question, std::uint16_t matrix) {
  ++evidence.frames;
  Signal source = signalOf(*pair.source, question.source, matrix);
  if (question.knownDark || isDark(source)) {
    ++evidence.dark;
    return;
  }
  if (evidence.identical && sameMeaning(question.source, question.dest)) {
    evidence.best = {1, {}, true};
    return;
  }
  Signal dest = signalOf(*pair.dest, question.dest, matrix);
  const PlacementFit fit = findPlacement(source, dest);
  const bool whole = fit.placement.source == Region();
  const bool same = fit.explained >= (whole ? samePictureExplained : samePartExplained);
  const Correspondence found{fit.explained, fit.placement, same};
  if (found.score > evidence.best.score) evidence.best = found;
  if (!same) {
    const ToneFit tone = fitTone(source.luma(), dest.luma());
    const bool flat = tone.sourceDeviation < leastDeviation && tone.destDeviation < leastDeviation;
    ++(flat ? evidence.flat : evidence.unmatched);
    return;
  }
  const AlignedPair aligned_ = aligned(std::move(source), std::move(dest), fit.placement);
  evidence.strata.add(aligned_.source, aligned_.dest);
}

/// The destination's matrix, of an RGB one the source's: its luma is what both sides are compared by.
ComparedIn spaceOf(const Question& question) {
  constexpr std::uint16_t yCgCo = 8;
  constexpr double deepFullCodes = 255.75;
  ComparedIn space;
  if (question.source.depth > 8 && question.dest.depth > 8) space.fullCodes = deepFullCodes;
  for (const SideTags* side : {&question.dest, &question.source}) {
    if (side->model != movie::PictureModel::YCbCr || side->matrixInForce == yCgCo) continue;
    space.matrix = side->matrixInForce;
    break;
  }
  return space;
}

Cause withoutNumber(CauseKind kind, double confidence) {
  return {.kind = kind, .confidence = confidence};
}

/// What can be said without looking at colours, if anything.
std::optional<Cause> plainCause(const Evidence& evidence) {
  if (evidence.dark == evidence.frames) return withoutNumber(CauseKind::Dark, 0.99);
  const int bright = evidence.frames - evidence.dark;
  if (evidence.flat == bright) return withoutNumber(CauseKind::Unreadable, 0.99);
  if (evidence.unmatched + evidence.flat == bright) {
    return withoutNumber(CauseKind::Different, differentConfidence(evidence.best.score));
  }
  return std::nullopt;
}

/// A part of one picture that only looks like the other: its colours have nothing to do with each other.
bool isPlacedByChance(const Finding& finding) {
  constexpr double unrelatedCodes = 5;
  return !finding.correspondence.placement.isPlain() && finding.main().residual > unrelatedCodes;
}

}  // namespace

Finding diagnose(const Question& question) {
  const ComparedIn space = spaceOf(question);
  Evidence evidence;
  evidence.identical = std::all_of(question.frames.begin(), question.frames.end(),
                                   [](const FramePair& pair) { return areIdentical(*pair.source, *pair.dest); });
  for (const FramePair& pair : question.frames) look(evidence, pair, question, space.matrix);

  Finding finding;
  finding.tags = compareTags(question.source, question.dest);
  finding.correspondence = evidence.best;
  finding.frames = evidence.frames;
  finding.unmatchedFrames = evidence.unmatched;
  finding.identicalSamples = evidence.identical;
  if (const std::optional<Cause> cause = plainCause(evidence)) {
    finding.causes = {*cause};
  } else {
    const std::vector<Stratum> strata = withinRgb(evidence.strata.strata(), space.matrix);
    finding.difference = differenceOf(strata);
    finding.curve = fitTone(evidence.strata.calmSource(), evidence.strata.calmDest()).curve;
    finding.causes = causesOf(
        {strata, question.source, question.dest, space, question.tolerance, finding.difference, evidence.identical});
  }
  if (isPlacedByChance(finding)) finding.causes = {withoutNumber(CauseKind::Different, 0.6)};
  finding.action = actionFor(finding);
  return finding;
}

Finding unreadable(const TagComparison& tags) {
  Finding finding;
  finding.causes = {withoutNumber(CauseKind::Unreadable, 1)};
  finding.tags = tags;
  finding.action = actionFor(finding);
  return finding;
}

bool isTold(const Finding& finding) {
  switch (finding.main().kind) {
    case CauseKind::Different:
    case CauseKind::Dark:
    case CauseKind::Unreadable:
      return false;
    default:
      return finding.main().confidence >= leastConfidence;
  }
}

bool isAllClear(const Finding& finding) {
  const CauseKind kind = finding.main().kind;
  return (kind == CauseKind::Identical || kind == CauseKind::Same) && isTold(finding) && !finding.tags.counts();
}

}  // namespace diagnosis
