#include "diagnosis/PlacementTrial.h"

#include <algorithm>

#include "diagnosis/numbers/Resampling.h"

namespace diagnosis {
namespace {

/// The luma of a picture, column by column.
Signal lumaColumns(const Signal& signal) {
  return {signal.height, signal.width, {transposed(signal.luma(), static_cast<std::size_t>(signal.width)), {}, {}}};
}

/// What the lines that are taken depend on.
Placement linesOf(Placement placement) {
  (placement.transposed ? placement.source.top : placement.source.left) = 0;
  (placement.transposed ? placement.source.bottom : placement.source.right) = 1;
  placement.mirroredX = false;
  return placement;
}

}  // namespace

PlacementTrial::PlacementTrial(const Signal& source, const Signal& dest, const Region& destPart)
    : source_(source), dest_(dest), target_(lumaColumns(dest), Lines::Columns), destPart_(destPart) {}

std::vector<float> PlacementTrial::plane(std::size_t which, const Placement& placement) {
  const PlacedTaps taps = tapsOf(source_, placement, dest_.width, dest_.height);
  LinesTaken& lines = linesTaken_[which];
  const Placement asked = linesOf(placement);
  if (lines.columns.empty() || !(lines.of == asked)) {
    const std::vector<float>& from = source_.planes[which];
    const auto width = static_cast<std::size_t>(source_.width), height = static_cast<std::size_t>(source_.height);
    lines = {asked, taps.turned ? linesTakenOf(transposed(from, width), height, taps.down)
                                : linesTakenOf(from, width, taps.down)};
  }
  return columnsTakenOf(lines.columns, taps.down.results(), taps.across);
}

PlacementTrial::Try& PlacementTrial::tried(const Placement& placement) {
  const auto known = std::find(placements_.begin(), placements_.end(), placement);
  if (known != placements_.end()) return tries_[static_cast<std::size_t>(known - placements_.begin())];
  placements_.push_back(placement);
  return tries_.emplace_back(Try{ToneFit(plane(0, placement), target_)});
}

PlacementFit PlacementTrial::fit(Placement placement, GoneBy goneBy) {
  placement.dest = destPart_;
  Try& tried = this->tried(placement);
  if (goneBy == GoneBy::Luma || !tried.luma.asksForChroma()) return {placement, tried.luma.byLuma()};
  if (!tried.byColors) tried.byColors = tried.luma.withChroma(plane(1, placement), plane(2, placement));
  return {placement, *tried.byColors};
}

const Placement& PlacementTrial::crop() {
  if (!crop_) crop_ = bestCrop(source_, dest_);
  return *crop_;
}

}  // namespace diagnosis
