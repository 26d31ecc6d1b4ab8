#include "scan/align/Probe.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "diagnosis/numbers/Statistics.h"
#include "scan/align/RegionFit.h"

namespace scan {
namespace {

constexpr double burstSeconds = 2;
/// Around an entry of the index that a burst may begin or end with, at the fastest usual rate.
constexpr double stretchReach = 2.5;
constexpr std::size_t mostBurstFrames = 120, mostStretchFrames = 320;
/// Pictures that show the same are not farther apart, however badly encoded and roughly placed.
constexpr double sameCost = 5;
/// How entries of the index are picked for a burst.
struct Picking {
  std::size_t most = 0;
  double apart = 0;    ///< in seconds
  double hopeful = 0;  ///< farther ones are not of the burst's shot
};
/// A burst of some length has an entry within it, or next to it; a few frames need not.
constexpr Picking longBurst{3, 3, 15}, shortBurst{8, 1.5, 26};
constexpr std::size_t enough = 3;

/// Some of many, evenly.
Moments thinned(const Moments& moments, std::size_t count) {
  Moments result;
  const std::size_t every = std::max<std::size_t>(1, moments.size() / count);
  for (std::size_t i = 0; i < moments.size(); i += every) result.push_back(moments[i]);
  return result;
}

/// Where bursts begin: spread over the range in an order that soon covers it, at frames that are quick to have.
std::vector<FrameRange> burstPlaces(const FrameRow& dest, const FrameRange& range) {
  const std::vector<std::size_t> sync = dest.syncFrames();
  const double begin = dest.timeOf(range.first), end = dest.timeOf(range.end);
  std::vector<FrameRange> places;
  for (const int part : {11, 5, 17, 2, 21, 8, 14, 19, 3, 23, 6, 12}) {
    const double time = begin + (end - begin) * part / 24;
    std::size_t first = frameAt(dest, std::max(begin, std::min(time, end - burstSeconds)));
    const auto after = std::upper_bound(sync.begin(), sync.end(), first);
    if (after != sync.begin()) {
      const std::size_t before = *(after - 1);
      if (before >= range.first && dest.timeOf(first) - dest.timeOf(before) < (end - begin) / 24) first = before;
    }
    std::size_t last = std::min(range.end, frameAt(dest, dest.timeOf(first) + burstSeconds) + 1);
    last = std::min(last, first + mostBurstFrames);
    const bool overlaps = std::any_of(places.begin(), places.end(),
                                      [&](const FrameRange& each) { return first < each.end && each.first < last; });
    if (last > first && !overlaps) places.push_back({first, last});
  }
  return places;
}

}  // namespace

Moments Clip::moments(const diagnosis::Region& part, double exponent) const {
  Moments moments;
  for (const Frame& frame : frames) moments.push_back({frame.time, signatureOf(frame.luma, part, exponent)});
  return moments;
}

Moments Clip::someMoments(std::size_t count, const diagnosis::Region& part) const {
  const std::size_t every = std::max<std::size_t>(1, frames.size() / count);
  Moments moments;
  moments.reserve(frames.size() / every + 1);
  for (std::size_t i = 0; i < frames.size(); i += every) {
    moments.push_back({frames[i].time, signatureOf(frames[i].luma, part)});
  }
  return moments;
}

Clip clipOf(FrameRow& row, const FrameRange& range) {
  Clip clip;
  for (std::size_t frame = range.first; frame < range.end; ++frame) {
    const movie::Result<Thumbnail> thumbnail = row.thumbnail(frame);
    if (!thumbnail) break;
    clip.frames.push_back({row.timeOf(frame), areaMeans(lumaOf(thumbnail->signal), {}, clipWidth, clipHeight)});
  }
  return clip;
}

Clip clipBetween(FrameRow& row, double begin, double end) {
  const RowShape shape = row.shape();
  if (end <= row.timeOf(0) || begin >= row.timeOf(shape.frames)) return {};
  const std::size_t first = frameAt(row, begin), last = frameAt(row, end) + 1;
  return clipOf(row, {first, std::min({last, shape.frames, first + mostStretchFrames})});
}

std::vector<PlanePair> pairsAt(const Clip& source, const Clip& dest, const TimeLine& line, std::size_t every) {
  std::vector<PlanePair> pairs;
  for (std::size_t i = 0; i < dest.frames.size(); i += every) {
    const double time = line.at(dest.frames[i].time);
    const auto nearest = std::min_element(
        source.frames.begin(), source.frames.end(),
        [&](const auto& one, const auto& other) { return std::abs(one.time - time) < std::abs(other.time - time); });
    if (nearest != source.frames.end()) pairs.push_back({nearest->luma, dest.frames[i].luma});
  }
  return pairs;
}

Probe::Probe(FrameRow& source, FrameRow& dest, const FrameRange& range, Stop stop)
    : source_(source),
      dest_(dest),
      stop_(std::move(stop)),
      rates_(usualRates(source.shape(), dest.shape())),
      places_(burstPlaces(dest, range)) {}

const Clip& Probe::burst(std::size_t number) {
  const auto known = bursts_.find(number);
  if (known != bursts_.end()) return known->second;
  return bursts_.emplace(number, clipOf(dest_, places_[number])).first->second;
}

const Clip& Probe::stretch(double sourceTime) {
  const long key = std::lround(sourceTime * 10);
  const auto known = stretches_.find(key);
  if (known != stretches_.end()) return known->second;
  constexpr std::size_t most = 24;
  if (stretches_.size() >= most) stretches_.clear();
  return stretches_.emplace(key, clipBetween(source_, sourceTime - stretchReach, sourceTime + stretchReach))
      .first->second;
}

SourceIndex& Probe::index() {
  using Density = SourceIndex::Density;
  if (index_) return *index_;
  const auto made = [&](Density density) {
    return std::make_unique<SourceIndex>(SourceIndex::of(source_, density, stop_));
  };
  if (places_.size() < enough) {
    index_ = made(Density::Dense);
    return *index_;
  }
  constexpr double tooWide = 4.5;
  index_ = made(Density::SyncFrames);
  if (index_->widestGap() > tooWide || index_->size() < 2) index_ = made(Density::Even);
  return *index_;
}

std::optional<BurstFit> Probe::fitOf(const Clip& clip, const Manner& manner) {
  constexpr double wellEnough = 0.5;
  const Picking& picking = places_.size() < enough ? shortBurst : longBurst;
  const Moments moments = clip.moments(manner.placement.dest);
  std::optional<BurstFit> best;
  double before = 0;
  for (const SourceIndex::Hit& hit :
       index().nearest(thinned(moments, 24), manner.placement.source, picking.most, picking.apart)) {
    if (hit.cost > picking.hopeful) break;
    // One that is much nearer than the next one is it.
    if (best && before < wellEnough * hit.cost && best->cost < sameCost) break;
    before = hit.cost;
    const Moments source = stretch(hit.sourceTime).moments(manner.placement.source, manner.exponent);
    const std::optional<BurstFit> fit = bestFit(moments, source, rates_);
    if (fit && (!best || fit->cost < best->cost)) best = fit;
  }
  return best;
}

Probe::Found Probe::lookFor(const Manner& manner, std::size_t mostBursts) {
  constexpr double wideEnough = 0.45;
  Found found{manner, {}, {}, std::nullopt, 1e9, false};
  const double length = dest_.timeOf(places_.empty() ? 0 : dest_.shape().frames) - dest_.timeOf(0);
  const std::size_t count = std::min(mostBursts, places_.size());
  const std::size_t needed = std::min(enough, places_.size());
  for (std::size_t i = 0; i < count; ++i) {
    if (stop_ && stop_()) break;
    const std::optional<BurstFit> fit = fitOf(burst(i), manner);
    if (fit && fit->cost <= sameCost) (fit->isInformative() ? found.fits : found.stillFits).push_back(*fit);
    found.line = bestLine(found.fits, rates_);
    if (!found.line) continue;
    if (found.line->agreeing.size() >= needed && (found.line->span >= wideEnough * length || needed < enough)) break;
  }
  if (!found.line) return found;
  std::vector<double> costs;
  for (const std::size_t i : found.line->agreeing) costs.push_back(found.fits[i].cost);
  found.cost = diagnosis::medianOf(costs);
  found.agreed = found.line->agreeing.size() >= needed;
  if (!found.agreed && !found.stillFits.empty()) supportByStill(found);
  return found;
}

/// Where most pictures do not move, few bursts tell a place: the one that the others lie on, too.
void Probe::supportByStill(Found& found) {
  constexpr std::size_t mostTried = 4;
  const std::size_t needed = std::min(enough, places_.size());
  std::vector<LineThrough> lines{*found.line};
  for (std::size_t i = 0; i < found.fits.size() && lines.size() < mostTried; ++i) {
    const std::vector<std::size_t>& agreeing = found.line->agreeing;
    const bool isOn = std::find(agreeing.begin(), agreeing.end(), i) != agreeing.end();
    if (!isOn) lines.push_back({found.fits[i].line(), {i}, 1, 0});
  }
  for (const LineThrough& line : lines) {
    const Support support = supportOf(line.line, found.manner);
    if (support.agreeing < needed || 3 * support.agreeing < 2 * support.telling) continue;
    found.line = line;
    found.cost = found.fits[line.agreeing.front()].cost;
    found.agreed = true;
    return;
  }
}

Probe::Support Probe::supportOf(const TimeLine& line, const Manner& manner) {
  Support support;
  for (const auto& [number, clip] : bursts_) {
    const Moments moments = clip.someMoments(12, manner.placement.dest);
    const bool tells =
        std::any_of(moments.begin(), moments.end(), [](const Moment& moment) { return !moment.signature.isFlat(); });
    if (!tells) continue;
    ++support.telling;
    const double begin = line.at(clip.frames.front().time), end = line.at(clip.frames.back().time);
    const Moments source = clipBetween(source_, begin, end).moments(manner.placement.source, manner.exponent);
    const std::optional<double> cost = BurstCosts(moments, source).costOf(line);
    if (cost && *cost <= sameCost) ++support.agreeing;
  }
  return support;
}

bool Probe::isFlat() {
  for (std::size_t number = 0; number < places_.size(); ++number) {
    for (const Moment& moment : burst(number).moments({})) {
      if (!moment.signature.isFlat()) return false;
    }
  }
  for (std::size_t entry = 0; entry < index().size(); ++entry) {
    if (!signatureOf(index().picture(entry)).isFlat()) return false;
  }
  return !places_.empty() && index().size() > 0;
}

double Probe::roughCost(const Manner& manner) {
  double sum = 0;
  for (std::size_t i = 0; i < std::min<std::size_t>(enough, places_.size()); ++i) {
    const auto hits = index().nearest(burst(i).someMoments(24, manner.placement.dest), manner.placement.source, 1, 1);
    sum += hits.empty() ? 30 : hits.front().cost;
  }
  return sum;
}

Probe::Manner Probe::adjusted(const Manner& manner) {
  constexpr double hopeful = 20;
  const std::size_t fewest = std::min(enough, places_.size());
  std::vector<PlanePair> pairs;
  for (std::size_t i = 0; i < places_.size(); ++i) {
    const Clip& clip = burst(i);
    const auto hits = index().nearest(clip.moments(manner.placement.dest), manner.placement.source, 1, 1);
    if (hits.empty() || hits.front().cost > hopeful) continue;
    const auto frame = std::find_if(clip.frames.begin(), clip.frames.end(),
                                    [&](const Clip::Frame& each) { return each.time == hits.front().destTime; });
    pairs.push_back({index().picture(hits.front().entry), frame->luma});
  }
  if (pairs.size() < fewest) return manner;
  return {refined(pairs, manner.placement).placement, manner.exponent};
}

void Probe::addPairs(std::vector<PlanePair>& pairs, const Clip& clip, const TimeLine& line) {
  constexpr std::size_t everyFrame = 6;
  if (clip.frames.empty()) return;
  const Clip source = clipBetween(source_, line.at(clip.frames.front().time), line.at(clip.frames.back().time));
  const std::vector<PlanePair> found = pairsAt(source, clip, line, everyFrame);
  pairs.insert(pairs.end(), found.begin(), found.end());
}

std::vector<PlanePair> Probe::pairsOn(const Found& found) {
  std::vector<PlanePair> pairs;
  for (const auto& [number, clip] : bursts_) {
    if (clip.frames.empty()) continue;
    const double middle = (clip.frames.front().time + clip.frames.back().time) / 2;
    const bool isOnLine = std::any_of(found.line->agreeing.begin(), found.line->agreeing.end(),
                                      [&](std::size_t i) { return std::abs(found.fits[i].destTime - middle) < 1e-6; });
    if (isOnLine) addPairs(pairs, clip, found.line->line);
  }
  return pairs;
}

std::vector<PlanePair> Probe::pairsOn(const TimeLine& line) {
  constexpr std::size_t few = 4;
  std::vector<PlanePair> pairs;
  for (std::size_t i = 0; i < std::min(few, places_.size()); ++i) addPairs(pairs, burst(i), line);
  return pairs;
}

Boxes Probe::boxes() {
  constexpr std::size_t someFrames = 8, mostStretches = 12;
  std::vector<LumaPlane> sources, dests;
  for (std::size_t number = 0; number < places_.size(); ++number) {
    const Clip& clip = burst(number);
    for (std::size_t i = 0; i < clip.frames.size(); i += someFrames) dests.push_back(clip.frames[i].luma);
  }
  const RowShape shape = source_.shape();
  const std::vector<std::size_t> sync = source_.syncFrames();
  for (std::size_t i = 0; i < mostStretches && !sync.empty(); ++i) {
    const Clip clip =
        clipOf(source_, {sync[i * sync.size() / mostStretches], sync[i * sync.size() / mostStretches] + 1});
    for (const Clip::Frame& frame : clip.frames) sources.push_back(frame.luma);
  }
  return {pictureBox(sources), pictureBox(dests), shape.aspect, dest_.shape().aspect};
}

}  // namespace scan
