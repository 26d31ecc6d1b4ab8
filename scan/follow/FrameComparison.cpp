#include "scan/follow/FrameComparison.h"

#include <algorithm>
#include <optional>

#include "scan/follow/FrameExponent.h"

namespace scan {
namespace {

/// The frame that was decided for, or one next to it where that is clearly more like it: of another frame rate, which
/// of two is shown goes to and fro. Null where none is kept.
const ReadFrame* bestBeside(const ReadFrame& frame, std::int64_t number, const SourceWindow& source) {
  constexpr float clearly = 0.7F;
  const ReadFrame* best = source.frame(number);
  if (best == nullptr) return nullptr;
  float least = clearly * farness(frame.signature, best->signature);
  for (const std::int64_t other : {number - 1, number + 1}) {
    const ReadFrame* const beside = source.frame(other);
    if (beside == nullptr) continue;
    const float away = farness(frame.signature, beside->signature);
    if (away < least) best = beside, least = away;
  }
  return best;
}

/// Whether a neighbour mixed in explains it much better.
bool isBlended(const ReadFrame& frame, const ReadFrame& shown, float alone, const SourceWindow& source) {
  constexpr float pure = 0.2F, muchBetter = 0.75F, leastMotion = 1;
  const auto number = static_cast<std::int64_t>(shown.number);
  for (const std::int64_t other : {number - 1, number + 1}) {
    const ReadFrame* const neighbour = source.frame(other);
    if (neighbour == nullptr || distance(neighbour->signature, shown.signature) < leastMotion) continue;
    const Mixture mixture = mixtureOf(shown.signature, neighbour->signature, frame.signature);
    const bool isMixture = mixture.share > pure && mixture.share < 1 - pure;
    if (isMixture && mixture.distance < muchBetter * alone) return true;
  }
  return false;
}

diagnosis::Signal reducedTo(const diagnosis::Signal& signal, int width, int height) {
  return diagnosis::reduced(signal, std::min(width, signal.width), std::min(height, signal.height));
}

void setExponent(FrameMatch& match, const diagnosis::Signal& source, const diagnosis::Signal& dest) {
  const std::optional<FrameExponent> exponent = exponentOf(source, dest);
  if (!exponent) return;
  match.logExponent = static_cast<float>(exponent->logExponent);
  match.spread = static_cast<float>(exponent->spread);
  match.weight = static_cast<float>(exponent->weight);
  match.level = static_cast<float>(exponent->level);
}

void measure(FrameMatch& match, const ReadFrame& frame, const ReadFrame& shown, const diagnosis::Placement& placement,
             Evidence& evidence) {
  constexpr int width = 80, height = 45;
  const bool wanted = evidence.wants(frame.number) && isEvidence(match);
  if (wanted || !placement.isPlain()) {
    const diagnosis::AlignedPair pair = alignedThumbnails(shown.thumbnail, frame.thumbnail, placement);
    if (wanted) evidence.add(frame.number, pair);
    setExponent(match, reducedTo(pair.source, width, height), reducedTo(pair.dest, width, height));
  } else {
    setExponent(match, diagnosis::reduced(shown.thumbnail.signal, width, height),
                diagnosis::reduced(frame.thumbnail.signal, width, height));
  }
}

}  // namespace

float farness(const Signature& dest, const Signature& source) {
  constexpr float dim = 0.05F, least = 0.4F;
  const float deviation = std::max(dest.deviation, source.deviation);
  return distance(dest, source) * std::clamp(deviation / dim, least, 1.0F);
}

FrameMatch matched(const ReadFrame& frame, const Tracked& tracked, const SourceWindow& source,
                   const diagnosis::Placement& placement, Evidence& evidence) {
  FrameMatch match;
  match.distance = tracked.distance;
  match.flat = frame.signature.isFlat();
  const ReadFrame* const shown = tracked.source ? bestBeside(frame, *tracked.source, source) : nullptr;
  if (shown == nullptr) return match;
  match.source = static_cast<std::int32_t>(shown->number);
  match.distance = farness(frame.signature, shown->signature);
  match.identical = frame.thumbnail.digest != 0 && frame.thumbnail.digest == shown->thumbnail.digest;
  match.blended = isBlended(frame, *shown, match.distance, source);
  measure(match, frame, *shown, placement, evidence);
  return match;
}

bool isEvidence(const FrameMatch& match) {
  return match.isMatched() && !match.flat && !match.blended;
}

diagnosis::AlignedPair alignedThumbnails(const Thumbnail& source, const Thumbnail& dest,
                                         const diagnosis::Placement& placement) {
  return diagnosis::aligned(source.signal, dest.signal, placement);
}

}  // namespace scan
