#include "diagnosis/PlacementSearch.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

#include "diagnosis/ToneCurve.h"

namespace diagnosis {
namespace {

/// Luma at most this is bar.
constexpr float barLuma = 0.06F;
/// Bars are looked for where a quarter of the picture stays.
constexpr double leastPicture = 0.25;
/// A placement that explains less is not near the right one.
constexpr double worthRefining = 0.5;
/// A plain placement that explains so much is taken without looking further; one that explains so much, without looking
/// for bars and turns.
constexpr double plainEnough = 0.995, nearlyPlain = 0.985;
/// A part of the source is looked for where all of it explains less.
constexpr double wholeEnough = 0.96;

/// A placement that explains so much is the right one.
constexpr double nothingLeft = 0.998;

/// The size in which placements are tried, and compared.
constexpr int triedWidth = 80, triedHeight = 60;

/// How many lines from the start of an axis are black: `brightIn` tells how many samples of a line are not.
template <typename BrightIn>
int blackLines(int lines, int samples, BrightIn brightIn) {
  int line = 0;
  while (line < lines && brightIn(line) * 100 <= samples) ++line;
  return line;
}

bool isBright(float luma) {
  return luma > barLuma;
}

int brightInRow(const Signal& signal, int row) {
  const auto begin = signal.luma().begin() + std::ptrdiff_t{row} * signal.width;
  return static_cast<int>(std::count_if(begin, begin + signal.width, isBright));
}

int brightInColumn(const Signal& signal, int column) {
  int bright = 0;
  for (int row = 0; row < signal.height; ++row) {
    const auto begin = signal.luma().begin() + std::ptrdiff_t{row} * signal.width;
    bright += isBright(begin[column]) ? 1 : 0;
  }
  return bright;
}

/// Luma alone, in fewer samples.
Signal reducedLuma(const Signal& signal, int width, int height) {
  return {width, height, {reduced(signal.luma(), signal.width, signal.height, width, height), {}, {}}};
}

/// By what placements are compared: luma alone is quicker, and enough where no other matrix mixed colours into it.
enum class By { Luma, Colors };

/// The source and the luma of a part of the destination in one small size, on which the source's place is tried. The
/// placements are of that part.
class Trial {
 public:
  Trial(const Signal& source, const Signal& dest, const Region& part, int width, int height, By by = By::Colors)
      : part_(part),
        by_(by),
        source_(reduced(source, width, height)),
        sourceLuma_{width, height, {source_.planes[0], {}, {}}},
        dest_(part == Region() ? reducedLuma(dest, width, height)
                               : reducedLuma(lumaOfPart(dest, part), width, height)) {}

  PlacementFit fit(const Placement& placement) const {
    return {onPart(placement), explainedShare(placed(by_ == By::Luma ? sourceLuma_ : source_, placement), dest_)};
  }
  PlacementFit roughFit(const Placement& placement) const {
    return {onPart(placement), explainedRoughly(placed(sourceLuma_, placement).luma(), dest_.luma())};
  }

 private:
  Placement onPart(Placement placement) const {
    placement.dest = part_;
    return placement;
  }
  Signal placed(const Signal& source, Placement placement) const {
    placement.dest = Region();
    return placement.isPlain() ? source : sourceUpon(source, placement, dest_.width, dest_.height);
  }
  Region part_;
  By by_;
  Signal source_, sourceLuma_, dest_;
};

PlacementFit better(const PlacementFit& one, const PlacementFit& other) {
  return other.explained > one.explained ? other : one;
}

std::vector<Placement> turned(const Placement& upright) {
  std::vector<Placement> all;
  for (const bool transposed : {false, true}) {
    for (const bool mirroredX : {false, true}) {
      for (const bool mirroredY : {false, true}) {
        Placement placement = upright;
        placement.transposed = transposed;
        placement.mirroredX = mirroredX;
        placement.mirroredY = mirroredY;
        all.push_back(placement);
      }
    }
  }
  return all;
}

/// A part of an axis that an export may have kept of it.
struct KeptPart {
  double begin = 0, end = 1;
};

std::vector<KeptPart> partsOf(double kept) {
  std::vector<KeptPart> parts;
  const int steps = static_cast<int>(std::lround((1.0 - kept) / 0.05));
  for (int step = 0; step <= steps; ++step) {
    const double begin = (1.0 - kept) * step / steps;
    parts.push_back({begin, begin + kept});
  }
  return parts;
}

/// Of the source: a zoom, or a strip of its width or of its height.
std::vector<Region> usualCrops() {
  std::vector<Region> crops{Region()};
  for (const double kept : {0.95, 0.9, 0.8, 0.75, 0.7, 0.6, 0.5}) {
    const std::vector<KeptPart> parts = partsOf(kept);
    for (const KeptPart& across : parts) {
      crops.push_back({across.begin, 0, across.end, 1});
      crops.push_back({0, across.begin, 1, across.end});
      for (const KeptPart& down : parts) crops.push_back({across.begin, down.begin, across.end, down.end});
    }
  }
  return crops;
}

/// The best of all usual crops, upright and mirrored: of many in a small size, of the most promising in a larger one.
Placement bestCrop(const Trial& small, const Trial& larger) {
  constexpr std::size_t promising = 40;
  static const std::vector<Region> crops = usualCrops();
  std::vector<PlacementFit> fits;
  fits.reserve(2 * crops.size());
  for (const bool mirrored : {false, true}) {
    for (const Region& crop : crops) fits.push_back(small.roughFit({.mirroredX = mirrored, .source = crop}));
  }
  const auto end = fits.begin() + static_cast<std::ptrdiff_t>(std::min(promising, fits.size()));
  std::partial_sort(fits.begin(), end, fits.end(),
                    [](const PlacementFit& one, const PlacementFit& other) { return one.explained > other.explained; });
  PlacementFit best;
  for (auto fit = fits.begin(); fit != end; ++fit) best = better(best, larger.roughFit(fit->placement));
  return best.placement;
}

/// Whether a move is worth it: it explains some of what was left.
bool isWorth(const PlacementFit& moved, const PlacementFit& best) {
  return moved.explained - best.explained > 0.03 * (1.0 - best.explained);
}

/// Moves the four edges of the source's region by ever smaller steps as long as that explains more.
PlacementFit refined(const Trial& trial, const Placement& start) {
  constexpr double largest = 0.02, smallest = 0.002;
  PlacementFit best = trial.fit(start);
  for (double step = largest; step >= smallest && best.explained < nothingLeft; step /= 2) {
    for (bool moved = true; moved;) {
      moved = false;
      for (double Region::*edge : {&Region::left, &Region::right, &Region::top, &Region::bottom}) {
        for (const double by : {-step, step}) {
          Placement other = best.placement;
          other.source.*edge = std::clamp(other.source.*edge + by, 0.0, 1.0);
          if (other.source.width() < leastPicture || other.source.height() < leastPicture) continue;
          const PlacementFit next = trial.fit(other);
          if (!isWorth(next, best)) continue;
          best = next;
          moved = true;
        }
      }
    }
  }
  return trial.fit(best.placement);
}

/// Turns at first, of all of the source and of what is within its bars; where none of them fits, crops.
PlacementFit searched(const Signal& source, const Signal& dest, const Region& destPart, By by) {
  const Trial trial(source, dest, destPart, triedWidth, triedHeight, by);
  PlacementFit best = trial.fit({});
  const auto tryTurns = [&](const Region& part) {
    for (const Placement& placement : turned({.source = part})) best = better(best, trial.fit(placement));
  };
  tryTurns({});
  if (const Region sourceInBars = withoutBars(source); !(sourceInBars == Region())) tryTurns(sourceInBars);
  if (best.explained < wholeEnough) {
    const Trial small(source, dest, destPart, 20, 15), larger(source, dest, destPart, 40, 30);
    best = better(best, trial.fit(bestCrop(small, larger)));
    if (best.explained < worthRefining) return best;
  }
  return refined(trial, best.placement);
}

/// One sample further in where there is a bar: its edge is half bar.
Region insideEdges(Region region, const Signal& signal) {
  if (region.left > 0) region.left += 1.0 / signal.width;
  if (region.right < 1) region.right -= 1.0 / signal.width;
  if (region.top > 0) region.top += 1.0 / signal.height;
  if (region.bottom < 1) region.bottom -= 1.0 / signal.height;
  return region;
}

/// All of the source within the destination, which may show edges of the coded picture that the source crops.
PlacementFit withinDest(const Signal& source, const Signal& dest, By by) {
  const Trial swapped(dest, source, {}, triedWidth, triedHeight, by);
  const Region part = refined(swapped, {}).placement.source;
  return Trial(source, dest, part, triedWidth, triedHeight, by).fit({});
}

/// The best of all placements; at least the plain one.
PlacementFit anywhere(const Signal& source, const Signal& dest, By by) {
  const Trial whole(source, dest, {}, triedWidth, triedHeight, by);
  const PlacementFit plain = whole.fit({});
  PlacementFit found = plain;
  const Region inBars = plain.explained < nearlyPlain ? insideEdges(withoutBars(dest), dest) : Region();
  if (!(inBars == Region())) found = better(found, searched(source, dest, inBars, by));
  if (found.explained < plainEnough && plain.explained >= worthRefining) {
    found = better(found, better(refined(whole, {}), withinDest(source, dest, by)));
  }
  if (plain.explained < nearlyPlain && found.explained < wholeEnough) {
    found = better(found, searched(source, dest, {}, by));
  }
  return found;
}

}  // namespace

Region withoutBars(const Signal& signal) {
  const auto row = [&](int line) { return brightInRow(signal, line); };
  const auto column = [&](int line) { return brightInColumn(signal, line); };
  const auto fromEnd = [](auto brightIn, int lines) {
    return [brightIn, lines](int line) { return brightIn(lines - 1 - line); };
  };
  const int top = blackLines(signal.height, signal.width, row);
  const int bottom = blackLines(signal.height, signal.width, fromEnd(row, signal.height));
  const int left = blackLines(signal.width, signal.height, column);
  const int right = blackLines(signal.width, signal.height, fromEnd(column, signal.width));
  const Region region{static_cast<double>(left) / signal.width, static_cast<double>(top) / signal.height,
                      1.0 - static_cast<double>(right) / signal.width,
                      1.0 - static_cast<double>(bottom) / signal.height};
  return region.width() < leastPicture || region.height() < leastPicture ? Region() : region;
}

PlacementFit plainPlacement(const Signal& source, const Signal& dest) {
  return Trial(source, dest, {}, triedWidth, triedHeight).fit({});
}

PlacementFit findPlacement(const Signal& source, const Signal& dest) {
  constexpr double mayBeTheSame = 0.8;
  const PlacementFit plain = plainPlacement(source, dest);
  if (plain.explained >= plainEnough) return plain;
  PlacementFit found = plain;
  bool isFound = false;
  if (plain.explained < mayBeTheSame) {
    const PlacementFit byLuma = anywhere(source, dest, By::Luma);
    found = Trial(source, dest, byLuma.placement.dest, triedWidth, triedHeight).fit(byLuma.placement);
    isFound = byLuma.explained >= nothingLeft || found.explained < mayBeTheSame;
  }
  if (!isFound) found = anywhere(source, dest, By::Colors);
  const bool clearly = plain.explained < samePictureExplained ? found.explained > plain.explained + 0.05
                                                              : 1.0 - found.explained < 0.6 * (1.0 - plain.explained);
  return clearly ? found : plain;
}

}  // namespace diagnosis
