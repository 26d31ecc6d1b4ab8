#include "diagnosis/PlacementSearch.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include "diagnosis/ToneCurve.h"

namespace diagnosis {
namespace {

/// Luma at most this is bar.
constexpr float barLuma = 0.06F;
/// Bars are looked for where a quarter of the picture stays.
constexpr double leastPicture = 0.25;
/// A plain placement that explains so much is taken without looking further.
constexpr double plainEnough = 0.985;

/// The size in which placements are tried, and compared.
constexpr int triedWidth = 80, triedHeight = 60;

/// How many lines from the start of an axis are black: `brightIn` tells how many samples of a line are not.
template <typename BrightIn>
int blackLines(int lines, int samples, BrightIn brightIn) {
  int line = 0;
  while (line < lines && brightIn(line) * 100 <= samples) ++line;
  return line;
}

int brightInRow(const Signal& signal, int row) {
  const auto begin = signal.luma().begin() + row * signal.width;
  return static_cast<int>(std::count_if(begin, begin + signal.width, [](float luma) { return luma > barLuma; }));
}

int brightInColumn(const Signal& signal, int column) {
  int bright = 0;
  for (int row = 0; row < signal.height; ++row) {
    if (signal.luma()[static_cast<std::size_t>(row) * signal.width + column] > barLuma) ++bright;
  }
  return bright;
}

/// Luma alone, in fewer samples.
Signal reducedLuma(const Signal& signal, int width, int height) {
  return reduced({signal.width, signal.height, {signal.planes[0], {}, {}}}, width, height);
}

/// Luma of both sides in one small size, on which placements are tried.
class Trial {
 public:
  Trial(const Signal& source, const Signal& dest, int width, int height)
      : source_(reducedLuma(source, width, height)), dest_(reducedLuma(dest, width, height)) {}

  double explained(const Placement& placement) const {
    const AlignedPair pair = aligned(source_, dest_, placement);
    return explainedShare(pair.source, pair.dest);
  }

  /// The better of the two.
  PlacementFit better(const PlacementFit& best, const Placement& other) const {
    const double share = explained(other);
    return share > best.explained ? PlacementFit{other, share} : best;
  }

 private:
  Signal source_, dest_;
};

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

/// Parts of an axis that an export may have kept.
std::vector<std::pair<double, double>> axisCrops() {
  std::vector<std::pair<double, double>> crops;
  for (const double kept : {1.0, 0.9, 0.8, 0.75, 0.7, 0.6, 0.5}) {
    const int steps = static_cast<int>(std::lround((1.0 - kept) / 0.05));
    for (int step = 0; step <= steps; ++step) {
      const double start = steps == 0 ? 0.0 : (1.0 - kept) * step / steps;
      crops.emplace_back(start, start + kept);
    }
  }
  return crops;
}

PlacementFit bestCrop(const Trial& trial, PlacementFit best, const Placement& base) {
  static const std::vector<std::pair<double, double>> crops = axisCrops();
  for (const auto& [left, right] : crops) {
    for (const auto& [top, bottom] : crops) {
      Placement placement = base;
      placement.source = {left, top, right, bottom};
      best = trial.better(best, placement);
    }
  }
  return best;
}

/// Moves the four edges of the source's region by ever smaller steps as long as that explains more.
PlacementFit refined(const Trial& trial, PlacementFit best, double step, double smallest) {
  best.explained = trial.explained(best.placement);
  for (; step >= smallest; step /= 2) {
    for (bool moved = true; moved;) {
      moved = false;
      for (double Region::*edge : {&Region::left, &Region::right, &Region::top, &Region::bottom}) {
        for (const double by : {-step, step}) {
          Placement other = best.placement;
          other.source.*edge = std::clamp(other.source.*edge + by, 0.0, 1.0);
          if (other.source.width() < leastPicture || other.source.height() < leastPicture) continue;
          const PlacementFit next = trial.better(best, other);
          moved = moved || next.explained > best.explained + 1e-4;
          best = next;
        }
      }
    }
  }
  return best;
}

/// Bars and turns at first; where none of them fits, crops.
PlacementFit searched(const Signal& source, const Signal& dest) {
  const Trial trial(source, dest, triedWidth, triedHeight);
  Placement inBars;
  inBars.source = withoutBars(source);
  inBars.dest = withoutBars(dest);
  PlacementFit best{{}, trial.explained({})};
  for (const Placement& upright : {Placement(), inBars}) {
    for (const Placement& placement : turned(upright)) best = trial.better(best, placement);
  }
  if (best.explained < samePictureExplained) {
    const Trial coarse(source, dest, 40, 30);
    PlacementFit crop{{}, coarse.explained({})};
    for (const bool mirrored : {false, true}) {
      Placement base;
      base.mirroredX = mirrored;
      base.dest = inBars.dest;
      crop = bestCrop(coarse, crop, base);
    }
    best = trial.better(best, crop.placement);
  }
  return refined(trial, best, 0.02, 0.004);
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

PlacementFit findPlacement(const Signal& source, const Signal& dest) {
  const double plain = Trial(source, dest, triedWidth, triedHeight).explained({});
  if (plain >= plainEnough) return {{}, plain};
  const PlacementFit found = searched(source, dest);
  if (found.placement.isPlain()) return {{}, plain};
  const AlignedPair pair = aligned(source, dest, found.placement);
  const double explained = explainedShare(reducedLuma(pair.source, triedWidth, triedHeight),
                                          reducedLuma(pair.dest, triedWidth, triedHeight));
  const bool clearly = plain < samePictureExplained ? explained > plain + 0.05 : 1.0 - explained < 0.6 * (1.0 - plain);
  return clearly ? PlacementFit{found.placement, explained} : PlacementFit{{}, plain};
}

}  // namespace diagnosis
