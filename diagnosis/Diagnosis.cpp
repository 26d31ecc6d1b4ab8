#include "diagnosis/Diagnosis.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <utility>

#include "diagnosis/Advice.h"
#include "diagnosis/Causes.h"
#include "diagnosis/Difference.h"
#include "diagnosis/LocalChange.h"
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

/// Whether luma hardly varies. Lines are added up side by side, and then all of them.
bool isFlat(const Signal& signal) {
  const auto width = static_cast<std::size_t>(signal.width);
  std::vector<float> sums(width), squares(width);
  for (const float* line = signal.luma().data(); line != signal.luma().data() + signal.size(); line += width) {
    for (std::size_t x = 0; x < width; ++x) {
      sums[x] += line[x];
      squares[x] += line[x] * line[x];
    }
  }
  const double sum = std::accumulate(sums.begin(), sums.end(), 0.0);
  const double count = std::max(1.0, static_cast<double>(signal.size()));
  const double scatter = std::accumulate(squares.begin(), squares.end(), 0.0) - sum * sum / count;
  return lumaCodes * std::sqrt(std::max(0.0, scatter) / count) < leastDeviation;
}

bool areIdentical(const movie::Picture& source, const movie::Picture& dest) {
  return source.model == dest.model && source.width == dest.width && source.height == dest.height &&
         source.planes == dest.planes;
}

/// A pair that shows the same picture: what became of its colours, and of its places.
struct MatchedFrame {
  StrataBuilder strata;
  double changeByPlace = 0;
};

/// What the frames of a question are.
struct Evidence {
  std::vector<MatchedFrame> matched;
  Correspondence best, bestUnmatched;
  int frames = 0, dark = 0, unmatched = 0, flat = 0;
  bool identical = false;  ///< the samples of all frames
};

void keepBetter(Correspondence& best, const Correspondence& found) {
  if (found.score >= best.score) best = found;
}

/// How one picture is laid upon the other.
using Place = PlacementFit (*)(const Signal& source, const Signal& dest);

void look(Evidence& evidence, const FramePair& pair, const Question& question, std::uint16_t matrix, Place place) {
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
  const PlacementFit fit = place(source, dest);
  const bool whole = fit.placement.source == Region();
  if (fit.explained < (whole ? samePictureExplained : samePartExplained)) {
    ++(isFlat(source) && isFlat(dest) ? evidence.flat : evidence.unmatched);
    keepBetter(evidence.bestUnmatched, {fit.explained, fit.placement, false});
    return;
  }
  keepBetter(evidence.best, {fit.explained, fit.placement, true});
  const Blocks blocks = blocksOf(aligned(std::move(source), std::move(dest), fit.placement));
  MatchedFrame& frame = evidence.matched.emplace_back();
  frame.strata.add(blocks);
  frame.changeByPlace = changeByPlace(blocks);
}

Cause withoutNumber(CauseKind kind, double confidence) {
  return {.kind = kind, .confidence = confidence};
}

/// What can be said without looking at colours, if anything. Other pictures are told where they are most of them.
std::optional<Cause> plainCause(const Evidence& evidence) {
  if (evidence.dark == evidence.frames) return withoutNumber(CauseKind::Dark, 0.99);
  const int bright = evidence.frames - evidence.dark;
  if (evidence.flat == bright) return withoutNumber(CauseKind::Unreadable, 0.99);
  if (2 * evidence.unmatched > bright - evidence.flat) {
    return withoutNumber(CauseKind::Different, differentConfidence(evidence.bestUnmatched.score));
  }
  return std::nullopt;
}

/// What frames that show the same pictures tell together.
struct Told {
  std::vector<Cause> causes;
  std::vector<CurvePoint> curve;
  double difference = 0;
  bool inPlaces = false;  ///< only places of the pictures differ
};

/// What is the same as a whole, but not in places of it: no cause does that.
void tellPlaces(Told& told, double changeByPlace, double tolerance) {
  const double confidence = 1 / (1 + std::exp(-1 - 2 * (changeByPlace - tolerance)));
  told.causes = {{.kind = CauseKind::Tone, .confidence = confidence, .residual = changeByPlace}};
  told.difference = changeByPlace;
  told.inPlaces = true;
}

double differenceOf(const MatchedFrame& frame, const ComparedIn& space) {
  return std::max(differenceOf(withinRgb(frame.strata.strata(), space.matrix)), frame.changeByPlace);
}

Told toldOf(const std::vector<MatchedFrame>& frames, const Question& question, const ComparedIn& space,
            bool identical) {
  StrataBuilder all;
  for (const MatchedFrame& frame : frames) all.add(frame.strata);
  const std::vector<Stratum> strata = withinRgb(all.strata(), space.matrix);
  Told told;
  told.difference = differenceOf(strata);
  told.curve = toneCurve(all.calmSource(), all.calmDest());
  told.causes =
      causesOf({strata, question.source, question.dest, space, question.tolerance, told.difference, identical});
  return told;
}

/// Frames whose colours are the same together need not be so place by place, nor each alone: the one that differs most
/// is told of.
void lookAtEachFrame(Finding& finding, Told& told, const Evidence& evidence, const Question& question,
                     const ComparedIn& space) {
  const auto isSame = [&] { return told.causes.front().kind == CauseKind::Same; };
  if (!isSame()) return;
  const bool several = evidence.matched.size() > 1;
  double most = question.tolerance;
  const MatchedFrame* worst = nullptr;
  for (const MatchedFrame& frame : evidence.matched) {
    const double difference = several ? differenceOf(frame, space) : frame.changeByPlace;
    if (several && difference > question.tolerance) ++finding.differingFrames;
    if (difference > most) most = difference, worst = &frame;
  }
  if (worst == nullptr) return;
  if (several) told = toldOf({*worst}, question, space, false);
  if (isSame()) tellPlaces(told, worst->changeByPlace, question.tolerance);
}

/// Other pictures, or nothing to tell from: no number is meant.
void tellNoNumbers(Finding& finding) {
  finding.curve.clear();
  finding.difference = 0;
  finding.differingFrames = 0;
  finding.inPlaces = false;
}

void tellDifferent(Finding& finding, const Correspondence& correspondence, double confidence) {
  finding.causes = {withoutNumber(CauseKind::Different, confidence)};
  finding.correspondence = correspondence;
  finding.correspondence.same = false;
  tellNoNumbers(finding);
}

/// A part of one picture that only looks like the other: its colours have nothing to do with each other.
bool isPlacedByChance(const Finding& finding) {
  constexpr double unrelatedCodes = 5;
  return !finding.correspondence.placement.isPlain() && finding.main().residual > unrelatedCodes;
}

void tellColors(Finding& finding, const Evidence& evidence, const Question& question, const ComparedIn& space) {
  Told told = toldOf(evidence.matched, question, space, evidence.identical);
  lookAtEachFrame(finding, told, evidence, question, space);
  finding.causes = std::move(told.causes);
  finding.curve = std::move(told.curve);
  finding.difference = told.difference;
  finding.inPlaces = told.inPlaces;
  finding.correspondence = evidence.best;
  if (finding.main().kind == CauseKind::Unreadable) tellNoNumbers(finding);
  // Some of the destination shows something else, whatever the rest is.
  if (finding.main().kind == CauseKind::Same && evidence.unmatched > 0) {
    tellDifferent(finding, evidence.bestUnmatched, differentConfidence(evidence.bestUnmatched.score));
  }
}

Evidence gathered(const Question& question, const ComparedIn& space, Place place) {
  Evidence evidence;
  evidence.identical = std::all_of(question.frames.begin(), question.frames.end(),
                                   [](const FramePair& pair) { return areIdentical(*pair.source, *pair.dest); });
  for (const FramePair& pair : question.frames) look(evidence, pair, question, space.matrix, place);
  return evidence;
}

Finding findingOf(const Evidence& evidence, const Question& question, const ComparedIn& space) {
  Finding finding;
  finding.tags = compareTags(question.source, question.dest);
  finding.frames = evidence.frames;
  finding.darkFrames = evidence.dark;
  finding.unmatchedFrames = evidence.unmatched;
  finding.identicalSamples = evidence.identical;
  if (const std::optional<Cause> cause = plainCause(evidence)) {
    finding.causes = {*cause};
    finding.correspondence = evidence.bestUnmatched;
  } else {
    tellColors(finding, evidence, question, space);
  }
  return finding;
}

}  // namespace

ComparedIn comparedIn(const SideTags& source, const SideTags& dest) {
  constexpr std::uint16_t yCgCo = 8;
  constexpr double deepFullCodes = 255.75;
  ComparedIn space;
  if (source.depth > 8 && dest.depth > 8) space.fullCodes = deepFullCodes;
  for (const SideTags* side : {&dest, &source}) {
    if (side->model != movie::PictureModel::YCbCr || side->matrixInForce == yCgCo) continue;
    space.matrix = side->matrixInForce;
    break;
  }
  return space;
}

Finding diagnose(const Question& question) {
  const ComparedIn space = comparedIn(question.source, question.dest);
  Finding finding = findingOf(gathered(question, space, findPlacement), question, space);
  if (isPlacedByChance(finding)) {
    // It may be the same as it lies: gradients and plain shapes lie upon themselves in many ways.
    const Correspondence chance = finding.correspondence;
    finding = findingOf(gathered(question, space, plainPlacement), question, space);
    if (finding.main().kind == CauseKind::Different) tellDifferent(finding, chance, 0.6);
  }
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
