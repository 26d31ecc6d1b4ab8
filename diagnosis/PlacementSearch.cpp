#include "diagnosis/PlacementSearch.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <optional>

#include "diagnosis/PlacementTrial.h"

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

/// As they are.
struct WholePair {
  const Signal& source;
  const Signal& dest;
};

/// How the small source, upon all of the small destination, is tried, and the reverse; and upon what is within the
/// destination's bars, where it has any.
struct Trials {
  explicit Trials(const WholePair& whole);
  PlacementTrial& swapped();
  PlacementTrial& within(const Region& bars);

  WholePair whole;
  Signal source, dest, withinBars;
  PlacementTrial plain;
  std::optional<PlacementTrial> reverse, inBars;
};

/// A trial under what it is gone by.
struct Trial {
  PlacementTrial& trial;
  GoneBy goneBy;
  PlacementFit fit(const Placement& placement) const { return trial.fit(placement, goneBy); }
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

/// Whether a move is worth it: it explains some of what was left.
bool isWorth(const PlacementFit& moved, const PlacementFit& best) {
  return moved.explained - best.explained > 0.03 * (1.0 - best.explained);
}

/// A move of one edge of the source's region.
struct EdgeMove {
  double Region::*edge;
  double direction;
};
constexpr std::array<EdgeMove, 8> edgeMoves{{{&Region::left, -1},
                                             {&Region::left, 1},
                                             {&Region::right, -1},
                                             {&Region::right, 1},
                                             {&Region::top, -1},
                                             {&Region::top, 1},
                                             {&Region::bottom, -1},
                                             {&Region::bottom, 1}}};

bool isNear(const Region& one, const Region& other) {
  constexpr double reach = 1e-6;
  return std::abs(one.left - other.left) < reach && std::abs(one.top - other.top) < reach &&
         std::abs(one.right - other.right) < reach && std::abs(one.bottom - other.bottom) < reach;
}

/// Moves the four edges of the source's region by ever smaller steps as long as that explains more: one move after the
/// other, until each was in vain since the last one that was worth it. Nothing is tried that leads back.
PlacementFit refined(const Trial& trial, PlacementFit best) {
  constexpr double largest = 0.02, smallest = 0.002;
  Region before = best.placement.source;
  for (double step = largest; step >= smallest && best.explained < nothingLeft; step /= 2) {
    std::size_t inVain = 0;
    for (std::size_t next = 0; inVain < edgeMoves.size(); next = (next + 1) % edgeMoves.size()) {
      const auto& [edge, direction] = edgeMoves[next];
      ++inVain;
      Placement other = best.placement;
      Region& part = other.source;
      part.*edge = std::clamp(part.*edge + direction * step, 0.0, 1.0);
      if (isNear(part, best.placement.source) || isNear(part, before)) continue;
      if (part.width() < leastPicture || part.height() < leastPicture) continue;
      const PlacementFit fit = trial.fit(other);
      if (!isWorth(fit, best)) continue;
      before = best.placement.source;
      best = fit;
      inVain = 0;
    }
  }
  return best;
}

/// Turns at first, of all of the source and of what is within its bars; where none of them fits, crops. From the plain
/// placement upon the part of the destination.
PlacementFit searched(const WholePair& whole, const Trial& trial) {
  PlacementFit best = trial.fit({});
  const auto tryTurns = [&](const Region& part) {
    for (const Placement& placement : turned({.source = part})) {
      if (!placement.isPlain()) best = better(best, trial.fit(placement));
    }
  };
  tryTurns({});
  if (const Region sourceInBars = withoutBars(whole.source); !(sourceInBars == Region())) tryTurns(sourceInBars);
  if (best.explained < wholeEnough) {
    best = better(best, trial.fit(trial.trial.crop()));
    if (best.explained < worthRefining) return best;
  }
  return refined(trial, best);
}

/// The luma of a part, in the size in which placements are tried.
Signal lumaUpon(const Signal& dest, const Region& part) {
  return reduced(lumaOfPart(dest, part), triedWidth, triedHeight);
}

Trials::Trials(const WholePair& pair)
    : whole(pair),
      source(reduced(pair.source, triedWidth, triedHeight)),
      dest(reduced(pair.dest, triedWidth, triedHeight)),
      plain(source, dest, {}) {}

PlacementTrial& Trials::swapped() {
  if (!reverse) reverse.emplace(dest, source, Region());
  return *reverse;
}

PlacementTrial& Trials::within(const Region& bars) {
  if (!inBars) {
    withinBars = lumaUpon(whole.dest, bars);
    inBars.emplace(source, withinBars, bars);
  }
  return *inBars;
}

/// One sample further in where there is a bar: its edge is half bar.
Region insideEdges(Region region, const Signal& signal) {
  if (region.left > 0) region.left += 1.0 / signal.width;
  if (region.right < 1) region.right -= 1.0 / signal.width;
  if (region.top > 0) region.top += 1.0 / signal.height;
  if (region.bottom < 1) region.bottom -= 1.0 / signal.height;
  return region;
}

/// The source upon a part of the destination.
PlacementFit fitUpon(const Trials& trials, const Region& part, const Placement& placement, GoneBy goneBy) {
  const Signal dest = lumaUpon(trials.whole.dest, part);
  return PlacementTrial(trials.source, dest, part).fit(placement, goneBy);
}

/// All of the source within the destination, which may show edges of the coded picture that the source crops.
PlacementFit withinDest(Trials& trials, GoneBy goneBy) {
  const Trial swapped{trials.swapped(), goneBy};
  return fitUpon(trials, refined(swapped, swapped.fit({})).placement.source, {}, goneBy);
}

/// The best of all placements; at least the plain one.
PlacementFit anywhere(Trials& trials, GoneBy goneBy) {
  const WholePair& whole = trials.whole;
  const Trial trial{trials.plain, goneBy};
  const PlacementFit plain = trial.fit({});
  PlacementFit found = plain;
  const Region inBars = plain.explained < nearlyPlain ? insideEdges(withoutBars(whole.dest), whole.dest) : Region();
  if (!(inBars == Region())) found = better(found, searched(whole, {trials.within(inBars), goneBy}));
  if (found.explained < plainEnough && plain.explained >= worthRefining) {
    found = better(found, better(refined(trial, plain), withinDest(trials, goneBy)));
  }
  if (plain.explained < nearlyPlain && found.explained < wholeEnough) found = better(found, searched(whole, trial));
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
  return Trials({source, dest}).plain.fit({}, GoneBy::Colors);
}

PlacementFit findPlacement(const Signal& source, const Signal& dest) {
  constexpr double mayBeTheSame = 0.8;
  Trials trials({source, dest});
  const PlacementFit plain = trials.plain.fit({}, GoneBy::Colors);
  if (plain.explained >= plainEnough) return plain;
  PlacementFit found = plain;
  bool isFound = false;
  if (plain.explained < mayBeTheSame) {
    const PlacementFit byLuma = anywhere(trials, GoneBy::Luma);
    const Region& part = byLuma.placement.dest;
    found = part == Region() ? trials.plain.fit(byLuma.placement, GoneBy::Colors)
                             : fitUpon(trials, part, byLuma.placement, GoneBy::Colors);
    isFound = byLuma.explained >= nothingLeft || found.explained < mayBeTheSame;
  }
  if (!isFound) found = anywhere(trials, GoneBy::Colors);
  const bool clearly = plain.explained < samePictureExplained ? found.explained > plain.explained + 0.05
                                                              : 1.0 - found.explained < 0.6 * (1.0 - plain.explained);
  return clearly ? found : plain;
}

}  // namespace diagnosis
