#include "scan/align/Region.h"

#include <algorithm>
#include <cmath>

namespace scan {
namespace {

using diagnosis::Placement;
using diagnosis::Region;

/// Lit is what is above code 24 of 8 bits.
constexpr float litLuma = 8.0F / 219;
constexpr double leastShare = 0.25;  ///< of a side, that a box keeps

struct LineSpan {
  int first = 0, end = 0;
};

/// From the first line that is lit to the last.
LineSpan litSpan(const std::vector<int>& litFrames, int needed) {
  LineSpan span{0, static_cast<int>(litFrames.size())};
  while (span.first < span.end && litFrames[static_cast<std::size_t>(span.first)] < needed) ++span.first;
  while (span.end > span.first && litFrames[static_cast<std::size_t>(span.end - 1)] < needed) --span.end;
  return span;
}

/// Of lines, in how many frames each is lit over more than half of its length.
struct LitLines {
  std::vector<int> rows, columns;
  int frames = 0;

  void add(const LumaPlane& frame) {
    const auto width = static_cast<std::size_t>(frame.width), height = static_cast<std::size_t>(frame.height);
    rows.resize(height);
    columns.resize(width);
    std::vector<std::size_t> row(height), column(width);
    for (std::size_t y = 0, at = 0; y < height; ++y) {
      for (std::size_t x = 0; x < width; ++x, ++at) {
        if (frame.samples[at] <= litLuma) continue;
        ++row[y];
        ++column[x];
      }
    }
    // A column may lie between bars at the top and bottom, a row between those at the sides: half of the lit part.
    const std::size_t most = std::max(*std::max_element(row.begin(), row.end()) * height,
                                      *std::max_element(column.begin(), column.end()) * width);
    if (most < width * height / 10) return;
    const std::size_t widest = *std::max_element(row.begin(), row.end());
    const std::size_t highest = *std::max_element(column.begin(), column.end());
    for (std::size_t y = 0; y < height; ++y) rows[y] += 2 * row[y] > widest ? 1 : 0;
    for (std::size_t x = 0; x < width; ++x) columns[x] += 2 * column[x] > highest ? 1 : 0;
    ++frames;
  }
};

/// As parts of the whole; one line further in where there is a bar, since the edge's line is half of it bar.
void setSides(double& low, double& high, const LineSpan& span, int lines) {
  const int first = span.first > 0 ? span.first + 1 : 0, end = span.end < lines ? span.end - 1 : lines;
  if (end - first < leastShare * lines) return;
  low = static_cast<double>(first) / lines;
  high = static_cast<double>(end) / lines;
}

bool isNear(const Region& one, const Region& other) {
  constexpr double reach = 0.01;
  return std::abs(one.left - other.left) < reach && std::abs(one.top - other.top) < reach &&
         std::abs(one.right - other.right) < reach && std::abs(one.bottom - other.bottom) < reach;
}

void add(std::vector<Placement>& placements, const Region& source, const Region& dest) {
  const bool known = std::any_of(placements.begin(), placements.end(), [&](const Placement& each) {
    return isNear(each.source, source) && isNear(each.dest, dest);
  });
  if (!known) placements.push_back({.source = source, .dest = dest});
}

Region scaledAbout(const Region& region, double x, double y, double widthShare, double heightShare) {
  const double width = region.width() * widthShare, height = region.height() * heightShare;
  const double left = region.left + (region.width() - width) * x, top = region.top + (region.height() - height) * y;
  return {left, top, left + width, top + height};
}

/// The middle of a part of the source that has the shape of a part of the destination.
Region croppedToShape(const Region& source, double sourceAspect, const Region& dest, double destAspect) {
  const double from = sourceAspect * source.width() / source.height();
  const double to = destAspect * dest.width() / dest.height();
  return from > to ? scaledAbout(source, 0.5, 0.5, to / from, 1) : scaledAbout(source, 0.5, 0.5, 1, from / to);
}

/// Along one axis: to where the source ends, if a box that is up to `reach` too small explains that it does not show to
/// there; else by half of that.
void widen(double& sourceLow, double& sourceHigh, double& destLow, double& destHigh, double reach) {
  const double scale = (sourceHigh - sourceLow) / std::max(1e-6, destHigh - destLow);
  const auto by = [&](double room, double source) {
    const double whole = source / scale;
    return std::min(room, whole <= reach ? whole : reach / 2);
  };
  const double low = by(destLow, sourceLow), high = by(1 - destHigh, 1 - sourceHigh);
  sourceLow = std::max(0.0, sourceLow - low * scale);
  sourceHigh = std::min(1.0, sourceHigh + high * scale);
  destLow -= low;
  destHigh += high;
}

/// What rounding leaves at the source's own edges.
void snap(Region& region) {
  constexpr double reach = 0.0025;
  for (double* const low : {&region.left, &region.top}) *low = *low < reach ? 0 : *low;
  for (double* const high : {&region.right, &region.bottom}) *high = *high > 1 - reach ? 1 : *high;
}

}  // namespace

Region pictureBox(const std::vector<LumaPlane>& frames) {
  LitLines lit;
  for (const LumaPlane& frame : frames) lit.add(frame);
  Region box;
  if (lit.frames == 0) return box;
  const int needed = std::max(1, lit.frames / 50);
  setSides(box.top, box.bottom, litSpan(lit.rows, needed), static_cast<int>(lit.rows.size()));
  setSides(box.left, box.right, litSpan(lit.columns, needed), static_cast<int>(lit.columns.size()));
  return box;
}

std::vector<Placement> likelyPlacements(const Boxes& boxes) {
  const Region all;
  std::vector<Placement> placements;
  add(placements, all, all);
  add(placements, boxes.source, boxes.dest);
  add(placements, all, boxes.dest);
  add(placements, boxes.source, all);
  add(placements, boxes.dest, boxes.dest);
  const Region shaped = croppedToShape(boxes.source, boxes.sourceAspect, boxes.dest, boxes.destAspect);
  add(placements, shaped, boxes.dest);
  for (const double zoom : {1.03, 1.06, 1.12, 1.2, 1.33}) {
    add(placements, scaledAbout(shaped, 0.5, 0.5, 1 / zoom, 1 / zoom), boxes.dest);
  }
  return placements;
}

std::vector<Placement> otherPlacements(const Boxes& boxes) {
  std::vector<Placement> placements;
  const Region shaped = croppedToShape(boxes.source, boxes.sourceAspect, boxes.dest, boxes.destAspect);
  for (const double share : {0.92, 0.84, 0.76, 0.68, 0.6, 0.52}) {
    const int steps = static_cast<int>(std::ceil((1 - share) / 0.06));
    for (int row = 0; row <= steps; ++row) {
      for (int column = 0; column <= steps; ++column) {
        const double x = static_cast<double>(column) / steps, y = static_cast<double>(row) / steps;
        const double width = share * std::min(1.0, shaped.width() / boxes.source.width());
        const double height = share * std::min(1.0, shaped.height() / boxes.source.height());
        add(placements, scaledAbout(boxes.source, x, y, width, height), boxes.dest);
      }
    }
  }
  return placements;
}

Placement widened(const Placement& placement, int width, int height) {
  constexpr double samples = 2.1;  // that pictureBox() leaves out at most
  Placement result = placement;
  widen(result.source.left, result.source.right, result.dest.left, result.dest.right, samples / width);
  widen(result.source.top, result.source.bottom, result.dest.top, result.dest.bottom, samples / height);
  snap(result.source);
  return result;
}

}  // namespace scan
