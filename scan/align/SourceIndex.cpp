#include "scan/align/SourceIndex.h"

#include <algorithm>
#include <cmath>

namespace scan {
namespace {

constexpr int entryWidth = 64, entryHeight = 36;
constexpr std::size_t mostEntries = 4096;
constexpr double syncSpacing = 2, evenSpacing = 1, denseSpacing = 0.2;  // seconds
constexpr float highestRoot = 1.1F;

std::vector<std::uint8_t> rootsOf(const LumaPlane& luma) {
  std::vector<std::uint8_t> roots;
  for (const float value : areaMeans(luma, {}, entryWidth, entryHeight).samples) {
    const float root = std::min(std::sqrt(std::max(0.0F, value)), highestRoot);
    roots.push_back(static_cast<std::uint8_t>(std::lround(root / highestRoot * 255)));
  }
  return roots;
}

LumaPlane planeOf(const std::vector<std::uint8_t>& roots) {
  LumaPlane plane{entryWidth, entryHeight, std::vector<float>(roots.size())};
  std::transform(roots.begin(), roots.end(), plane.samples.begin(), [](std::uint8_t root) {
    const float value = static_cast<float>(root) / 255 * highestRoot;
    return value * value;
  });
  return plane;
}

/// At least so far apart, from among those.
std::vector<std::size_t> spaced(const FrameRow& row, const std::vector<std::size_t>& frames, double spacing) {
  std::vector<std::size_t> result;
  double next = -spacing;
  for (const std::size_t frame : frames) {
    const double time = row.timeOf(frame);
    if (!result.empty() && time < next) continue;
    result.push_back(frame);
    next = time + spacing * 0.99;
  }
  return result;
}

std::vector<std::size_t> evenFrames(const FrameRow& row, double spacing) {
  const RowShape shape = row.shape();
  std::vector<std::size_t> frames;
  for (double time = row.timeOf(0); time < row.timeOf(shape.frames); time += spacing) {
    frames.push_back(frameAt(row, time));
  }
  return frames;
}

}  // namespace

SourceIndex SourceIndex::of(FrameRow& row, Density density, const Stop& stop) {
  SourceIndex index;
  const RowShape shape = row.shape();
  if (shape.frames == 0) return index;
  const double least = shape.seconds / static_cast<double>(mostEntries);
  const auto spacing = [&](double wanted) { return std::max(wanted, least); };
  const std::vector<std::size_t> frames =
      density == Density::SyncFrames ? spaced(row, row.syncFrames(), spacing(syncSpacing))
                                     : evenFrames(row, spacing(density == Density::Even ? evenSpacing : denseSpacing));
  for (const std::size_t frame : frames) {
    if (stop && stop()) break;
    const movie::Result<Thumbnail> thumbnail = row.thumbnail(frame);
    if (thumbnail) index.entries_.push_back({row.timeOf(frame), rootsOf(lumaOf(thumbnail->signal))});
  }
  return index;
}

double SourceIndex::widestGap() const {
  double widest = 0;
  for (std::size_t i = 1; i < entries_.size(); ++i) {
    widest = std::max(widest, entries_[i].time - entries_[i - 1].time);
  }
  return widest;
}

LumaPlane SourceIndex::picture(std::size_t entry) const {
  return planeOf(entries_[entry].roots);
}

std::vector<SourceIndex::Hit> SourceIndex::nearest(const Moments& burst, const diagnosis::Region& part,
                                                   std::size_t most, double apart) const {
  std::vector<Hit> hits;
  for (std::size_t i = 0; i < entries_.size(); ++i) {
    const Signature signature = signatureOf(picture(i), part);
    Hit hit{i, entries_[i].time, 0, 1e9};
    for (const Moment& moment : burst) {
      if (moment.signature.isFlat()) continue;
      const auto cost = static_cast<double>(distance(signature, moment.signature));
      if (cost < hit.cost) hit.cost = cost, hit.destTime = moment.time;
    }
    if (hit.cost < 1e9) hits.push_back(hit);
  }
  std::stable_sort(hits.begin(), hits.end(), [](const Hit& one, const Hit& other) { return one.cost < other.cost; });
  std::vector<Hit> result;
  for (const Hit& hit : hits) {
    if (result.size() == most) break;
    const bool near = std::any_of(result.begin(), result.end(),
                                  [&](const Hit& each) { return std::abs(each.sourceTime - hit.sourceTime) < apart; });
    if (!near) result.push_back(hit);
  }
  return result;
}

}  // namespace scan
