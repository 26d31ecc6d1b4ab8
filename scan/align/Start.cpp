#include "scan/align/Start.h"

#include <algorithm>
#include <cmath>
#include <deque>
#include <future>
#include <optional>
#include <utility>

#include "scan/align/Probe.h"
#include "scan/align/RegionFit.h"

namespace scan {
namespace {

constexpr double openingSeconds = 4;
constexpr std::size_t mostOpeningFrames = 240;
/// Away from the line, a frame of a moving picture is as much farther.
constexpr double leastContrast = 1;
constexpr double sameDistance = 5;

/// How the opening lies on a line.
struct Lock {
  std::size_t informative = 0, locked = 0;
  double cost = 0;  ///< of informative frames, the distances from the frames next to the line, added up
  bool holds() const { return informative >= 12 && locked * 10 >= informative * 8; }
};

/// Distances from the frames around the one on the line.
struct Around {
  double next = 1e9;                ///< the least within one frame
  double on = 1e9;                  ///< within two
  double least = 1e9, most = -1e9;  ///< of all
};

Around aroundLine(const Moment& moment, const Moments& source, const TimeLine& line) {
  constexpr std::ptrdiff_t near = 2, far = 24;
  const double time = line.at(moment.time);
  const auto nearest = std::min_element(source.begin(), source.end(), [&](const Moment& one, const Moment& other) {
    return std::abs(one.time - time) < std::abs(other.time - time);
  });
  const std::ptrdiff_t middle = nearest - source.begin();
  Around around;
  for (std::ptrdiff_t off = -far; off <= far; ++off) {
    const std::ptrdiff_t i = middle + off;
    if (i < 0 || i >= static_cast<std::ptrdiff_t>(source.size())) continue;
    const auto away = static_cast<double>(distance(moment.signature, source[static_cast<std::size_t>(i)].signature));
    around.least = std::min(around.least, away);
    around.most = std::max(around.most, away);
    if (std::abs(off) <= near) around.on = std::min(around.on, away);
    if (std::abs(off) <= 1) around.next = std::min(around.next, away);
  }
  return around;
}

Lock lockOn(const Moments& dest, const Moments& source, const TimeLine& line) {
  Lock lock;
  for (const Moment& moment : dest) {
    if (moment.signature.isFlat() || source.empty()) continue;
    const Around around = aroundLine(moment, source, line);
    if (around.most - around.least < leastContrast) continue;
    ++lock.informative;
    lock.cost += around.next;
    const bool isLeast = around.on <= around.least + std::max(0.1, 0.1 * around.least);
    if (isLeast && around.on <= sameDistance) ++lock.locked;
  }
  return lock;
}

/// Lines on which both begin together; those on which they end together, too, first.
std::vector<TimeLine> openingLines(const RowShape& source, const RowShape& dest) {
  std::vector<TimeLine> lines = suggestedLines(source, dest);
  std::erase_if(lines, [](const TimeLine& line) { return std::abs(line.offset) > 1e-6; });
  std::stable_partition(lines.begin(), lines.end(), [&](const TimeLine& line) {
    const double frame = source.rate() > 0 ? 1 / source.rate() : 1;
    return std::abs(line.at(dest.seconds) - source.seconds) < 2.5 * frame;
  });
  return lines;
}

/// The part of the source, more exactly; as it was where that makes no difference.
diagnosis::Placement settled(const std::vector<PlanePair>& pairs, const diagnosis::Placement& start) {
  constexpr double clearlyBetter = 0.93, leastMove = 0.001;
  // A picture that is shown whole stays so unless it clearly is not.
  const double better = start.isPlain() ? clearlyBetter : 1;
  if (pairs.empty()) return start;
  const double before = misfitOf(pairs, start);
  const RegionFit fit = refined(pairs, start);
  const diagnosis::Region &from = start.source, &to = fit.placement.source;
  const double moved = std::max({std::abs(from.left - to.left), std::abs(from.top - to.top),
                                 std::abs(from.right - to.right), std::abs(from.bottom - to.bottom)});
  return fit.misfit < better * before && moved > leastMove ? fit.placement : start;
}

/// The source around where an opening lies on a line: far from the beginning, other rates lead elsewhere.
class Surroundings {
 public:
  Surroundings(FrameRow& source, double begin) : source_(source), begin_(begin) {}

  struct Read {
    double from, to;  ///< seconds
    Clip clip;
    Moments moments;  ///< of all of each picture
  };

  const Read& on(const TimeLine& line) {
    constexpr double margin = 0.7, negligible = 0.4;
    const double from = line.at(begin_) - margin, to = line.at(begin_ + openingSeconds) + margin;
    for (const Read& each : read_) {
      if (from > each.from - negligible && to < each.to + negligible) return each;
    }
    Clip clip = clipBetween(source_, from, to);
    Moments moments = clip.moments({});
    return read_.emplace_back(Read{from, to, std::move(clip), std::move(moments)});
  }

 private:
  FrameRow& source_;
  double begin_;
  std::deque<Read> read_;
};

/// The line on which the opening lies, of several the one that fits clearly better, or comes first.
std::optional<TimeLine> lockedLine(const Moments& dest, Surroundings& source, const std::vector<TimeLine>& lines) {
  constexpr double clearlyBetter = 0.9;
  std::optional<TimeLine> best;
  double least = 0;
  for (const TimeLine& line : lines) {
    const Lock lock = lockOn(dest, source.on(line).moments, line);
    if (!lock.holds() || (best && lock.cost >= clearlyBetter * least)) continue;
    best = line;
    least = lock.cost;
  }
  return best;
}

/// Whether the opening of both is enough to begin with.
std::optional<Beginning> fromOpening(FrameRow& source, FrameRow& dest, const FrameRange& range) {
  const double begin = dest.timeOf(range.first);
  const std::size_t last =
      std::min({frameAt(dest, begin + openingSeconds) + 1, range.end, range.first + mostOpeningFrames});
  const std::vector<TimeLine> lines = openingLines(source.shape(), dest.shape());
  if (lines.empty()) return std::nullopt;
  Surroundings surroundings(source, begin);
  auto reading = std::async(std::launch::async | std::launch::deferred, [&] { surroundings.on(lines.front()); });
  const Clip destClip = clipOf(dest, {range.first, last});
  reading.get();
  const std::optional<TimeLine> line = lockedLine(destClip.moments({}), surroundings, lines);
  if (!line) return std::nullopt;
  Beginning beginning;
  beginning.result = Beginning::Result::Found;
  beginning.lines = {*line};
  beginning.placement = settled(pairsAt(surroundings.on(*line).clip, destClip, *line, 5), {});
  // One shot tells that some of the source is cut away; how much, several do.
  if (!beginning.placement.isPlain()) {
    beginning.placement = settled(Probe(source, dest, range, {}).pairsOn(*line), beginning.placement);
  }
  return beginning;
}

/// Lines through what the first one leaves over.
void addFurtherLines(Beginning& beginning, const Probe::Found& found) {
  constexpr std::size_t mostLines = 4;
  std::vector<BurstFit> left = found.fits;
  std::vector<std::size_t> explained = found.line->agreeing;
  while (beginning.lines.size() < mostLines) {
    for (std::size_t i = explained.size(); i-- > 0;) {
      left.erase(left.begin() + static_cast<std::ptrdiff_t>(explained[i]));
    }
    const std::optional<LineThrough> line = bestLine(left, {beginning.lines.front().rate});
    if (!line) break;
    beginning.lines.push_back(line->line);
    explained = line->agreeing;
  }
}

/// In the order in which they are worth a try, by how near the index's entries come.
std::vector<diagnosis::Placement> promising(Probe& probe, const std::vector<diagnosis::Placement>& placements,
                                            double exponent, std::size_t most) {
  std::vector<std::pair<double, diagnosis::Placement>> ranked;
  ranked.reserve(placements.size());
  for (const diagnosis::Placement& each : placements) ranked.emplace_back(probe.roughCost({each, exponent}), each);
  std::stable_sort(ranked.begin(), ranked.end(),
                   [](const auto& one, const auto& other) { return one.first < other.first; });
  std::vector<diagnosis::Placement> result;
  for (std::size_t i = 0; i < std::min(most, ranked.size()); ++i) result.push_back(ranked[i].second);
  return result;
}

struct Best {
  std::optional<Probe::Found> found;
  std::optional<Probe::Found> still;  ///< pictures are the same that do not move
  double stillCost = 1e9;

  void keep(Probe::Found next, Probe& probe) {
    const std::size_t needed = std::min<std::size_t>(3, probe.mostBursts());
    if (next.fits.empty() && next.stillFits.size() >= std::max<std::size_t>(1, needed)) keepStill(next);
    if (!next.agreed) return;
    if (!found || next.cost < found->cost) found = std::move(next);
  }
  bool isGood() const { return (found && found->cost < 2) || (!found && stillCost < 1); }

 private:
  void keepStill(const Probe::Found& next) {
    double cost = 0;
    for (const BurstFit& fit : next.stillFits) cost = std::max(cost, fit.cost);
    if (cost < stillCost) still = next, stillCost = cost;
  }
};

Best probed(Probe& probe, const Stop& stop) {
  constexpr std::size_t few = 5, mostTried = 4;
  constexpr double acceptable = 4;
  Best best;
  best.keep(probe.lookFor({}, probe.mostBursts()), probe);
  if (best.isGood()) return best;
  const Boxes boxes = probe.boxes();
  const auto tryAll = [&](const std::vector<diagnosis::Placement>& placements, double exponent) {
    for (const diagnosis::Placement& each : promising(probe, placements, exponent, mostTried)) {
      if (best.isGood() || (stop && stop())) return;
      const bool isPlain = each == diagnosis::Placement();
      const Probe::Manner manner{each, exponent};
      Probe::Found found = probe.lookFor(isPlain ? manner : probe.adjusted(manner), few);
      // Cuts leave few bursts to each line.
      if (!found.agreed && found.fits.size() > 1) found = probe.lookFor(found.manner, probe.mostBursts());
      best.keep(std::move(found), probe);
    }
  };
  tryAll(likelyPlacements(boxes), 1);
  for (const double exponent : {2.0, 0.5}) {
    if (!best.found) tryAll({diagnosis::Placement(), {.source = boxes.source, .dest = boxes.dest}}, exponent);
  }
  if (!best.found || best.found->cost > acceptable) tryAll(otherPlacements(boxes), 1);
  return best;
}

/// The part of the source, and where that changes the places that were found by it, those and the part again: of a
/// picture that pans, a wrong part looks like another time.
void refine(Probe::Found& found, Probe& probe) {
  const diagnosis::Placement before = found.manner.placement;
  found.manner.placement = settled(probe.pairsOn(found), before);
  if (found.manner.placement == before) return;
  Probe::Found again = probe.lookFor(found.manner, probe.mostBursts());
  if (!again.agreed) return;
  found = std::move(again);
  found.manner.placement = settled(probe.pairsOn(found), found.manner.placement);
}

/// Of pictures that do not move: what begins or ends together where that shows them, else where most of them are found
/// first; one that is held for longer than in the source is a frame of it, standing.
Beginning stillBeginning(const Probe::Found& still, const RowShape& source, const RowShape& dest, Probe& probe) {
  std::vector<TimeLine> lines = openingLines(source, dest);
  for (const BurstFit& fit : still.stillFits) lines.push_back(fit.line());
  for (const BurstFit& fit : still.stillFits) lines.push_back({0, fit.sourceTime});
  TimeLine best = lines.front();
  std::size_t most = 0;
  for (const TimeLine& line : lines) {
    const std::size_t agreeing = probe.supportOf(line, still.manner).agreeing;
    if (agreeing > most) best = line, most = agreeing;
  }
  return {Beginning::Result::Still, {best}, still.manner.placement, still.manner.exponent, true};
}

}  // namespace

Beginning beginningOf(FrameRow& source, FrameRow& dest, const StartOptions& options, const Stop& stop) {
  if (!options.align) return {Beginning::Result::Found, {{1, 0}}, {}, 1, false};
  if (const auto opening = fromOpening(source, dest, options.range)) return *opening;
  Probe probe(source, dest, options.range, stop);
  Best best = probed(probe, stop);
  Beginning beginning;
  beginning.isProbed = true;
  if (!best.found) {
    if (best.still) return stillBeginning(*best.still, source.shape(), dest.shape(), probe);
    if (!(stop && stop()) && probe.isFlat()) {
      return {Beginning::Result::Still, openingLines(source.shape(), dest.shape()), {}, 1, true};
    }
    return beginning;
  }
  refine(*best.found, probe);
  beginning.result = Beginning::Result::Found;
  beginning.lines = {best.found->line->line};
  beginning.exponent = best.found->manner.exponent;
  addFurtherLines(beginning, *best.found);
  beginning.placement = best.found->manner.placement;
  return beginning;
}

}  // namespace scan
