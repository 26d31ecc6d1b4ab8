#include "scan/follow/Drift.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>

namespace scan {
namespace {

/// The place of the least distance; of those that are hardly more, of pictures that hardly move, the one next to the
/// middle.
std::int64_t nearestTo(std::int64_t middle, const Candidates& candidates) {
  constexpr float each = 0.02F;
  const auto cost = [&](std::int64_t i) {
    return candidates.distances[static_cast<std::size_t>(i)] + each * static_cast<float>(std::abs(i - middle));
  };
  std::int64_t best = 0;
  for (std::int64_t i = 1; i < std::ssize(candidates.distances); ++i) {
    if (cost(i) < cost(best)) best = i;
  }
  return best;
}

}  // namespace

void followDrift(Bearing& at, const Candidates& candidates) {
  constexpr int steady = 8, most = 250;
  constexpr std::int64_t off = 2;
  constexpr float near = 5, muchNearer = 3;
  if (candidates.distances.empty()) return;
  const std::int64_t middle = candidates.expected + at.centre - candidates.first, best = nearestTo(middle, candidates);
  const float least = candidates.distances[static_cast<std::size_t>(best)];
  if (std::abs(best - middle) < off) at.aside = 0, at.nearer = 0;
  if (std::abs(best - middle) < off || least >= near) return;
  const bool isKnown = middle >= 0 && middle < std::ssize(candidates.distances);
  if (isKnown) at.nearer += candidates.distances[static_cast<std::size_t>(middle)] - least;
  at.aside = std::min(most, at.aside + 1);
  const bool clear = *std::max_element(candidates.distances.begin(), candidates.distances.end()) > least + 1;
  if (at.aside < steady || (!clear && at.nearer < muchNearer)) return;
  at.centre += best - middle;
  at.aside = 0;
  at.nearer = 0;
}

}  // namespace scan
