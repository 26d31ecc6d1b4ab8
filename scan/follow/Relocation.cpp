#include "scan/follow/Relocation.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace scan {
namespace {

constexpr double secondsBefore = 1, secondsAfter = 6;  // of the source, around the place of a loss
constexpr double surelySame = 4.5, hopeful = 10;
/// Other tones than the one that was lost: what a signature does not bear by itself.
constexpr double otherTones[] = {0.45, 0.67, 1.5, 2.2};

/// What a place has to be.
struct Wanted {
  double cost = surelySame;                  ///< less than that
  double frames = BurstFit::framesOfAPlace;  ///< of the source that it fits nearly as well
};

/// Of a shot whose camera stands still all places look alike. What is not far from one is found from there.
Wanted wantedFor(const Relocation::Loss& loss) {
  constexpr double clearlyLess = 0.5;
  if (loss.farness >= Track::costOfNone) return {};
  return {std::min(surelySame, clearlyLess * loss.farness), 2 * static_cast<double>(loss.reach)};
}

std::optional<Course> courseOf(const Moments& burst, const Moments& stretch, double rate, double exponent,
                               Wanted& wanted) {
  const std::optional<BurstFit> fit = BurstCosts(burst, stretch).fit(rate);
  if (!fit || fit->cost >= wanted.cost || !fit->tells(wanted.frames)) return std::nullopt;
  wanted.cost = fit->cost;
  return Course{fit->line(), exponent};
}

}  // namespace

Relocation::Relocation(const FrameRow& source, const diagnosis::Placement& placement, Stop stop)
    : source_(source.copy()), placement_(placement), stop_(std::move(stop)) {}

std::optional<Course> Relocation::nearby(const Loss& loss) {
  if (keptLoss_ != loss.firstFrame) {
    kept_ = clipBetween(*source_, loss.sourceTime - secondsBefore, loss.sourceTime + secondsAfter);
    keptLoss_ = loss.firstFrame;
  }
  Wanted wanted = wantedFor(loss);
  std::optional<Course> best;
  const auto tryTone = [&](double exponent) {
    const Moments stretch = kept_.moments(placement_.source, exponent);
    if (const auto course = courseOf(loss.burst, stretch, loss.course.line.rate, exponent, wanted)) best = course;
  };
  tryTone(loss.course.exponent);
  if (best) return best;
  if (loss.course.exponent != 1) tryTone(1);
  for (const double exponent : otherTones) tryTone(exponent);
  return best;
}

std::optional<Course> Relocation::anywhere(const Loss& loss) {
  constexpr double lookedAround = 0.7, indexReach = 2.5;
  const double begin = loss.burst.front().time, end = loss.burst.back().time;
  Wanted wanted = wantedFor(loss);
  std::optional<Course> best;
  const auto tryBetween = [&](double from, double to, double rate) {
    const Moments stretch = clipBetween(*source_, from, to).moments(placement_.source, loss.course.exponent);
    if (const auto course = courseOf(loss.burst, stretch, rate, loss.course.exponent, wanted)) best = course;
  };
  for (const TimeLine& line : loss.known) {
    if (!(line == loss.course.line)) tryBetween(line.at(begin) - lookedAround, line.at(end) + lookedAround, line.rate);
  }
  if (best) return best;
  if (!index_) {
    constexpr double tooWide = 4.5;
    index_ = std::make_unique<SourceIndex>(SourceIndex::of(*source_, SourceIndex::Density::SyncFrames, stop_));
    if (index_->widestGap() > tooWide) {
      index_ = std::make_unique<SourceIndex>(SourceIndex::of(*source_, SourceIndex::Density::Even, stop_));
    }
  }
  for (const SourceIndex::Hit& hit : index_->nearest(loss.burst, placement_.source, 2, 3)) {
    if (hit.cost > hopeful) break;
    tryBetween(hit.sourceTime - indexReach, hit.sourceTime + indexReach, loss.course.line.rate);
  }
  return best;
}

}  // namespace scan
