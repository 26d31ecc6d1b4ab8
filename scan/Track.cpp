#include "scan/Track.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace scan {
namespace {

constexpr double away = 0.01;  ///< a frame farther from the time line is as cheap otherwise
constexpr double costOfLeaving = 3;

}  // namespace

double Track::stepCost(const State& from, const State& to) {
  if (from.none || to.none) return from.none == to.none ? 0 : costOfLeaving;
  const std::int64_t by = std::abs(to.away - from.away);
  return by == 0 ? 0 : 8 + 0.5 * static_cast<double>(by);
}

void Track::add(const Candidates& candidates) {
  States states;
  float least = static_cast<float>(highestCost);
  for (std::size_t i = 0; i < candidates.distances.size(); ++i) {
    const float distance = candidates.distances[i];
    const std::int64_t source = candidates.first + static_cast<std::int64_t>(i);
    const std::int64_t off = source - candidates.expected;
    least = std::min(least, distance);
    states.push_back({source, off, false,
                      std::min(static_cast<double>(distance), highestCost) + away * std::abs(static_cast<double>(off)),
                      distance, 0});
  }
  states.push_back({0, 0, true, costOfNone, least, 0});
  if (!steps_.empty()) {
    const States& before = steps_.back();
    for (State& state : states) {
      double best = 1e18;
      for (std::size_t i = 0; i < before.size(); ++i) {
        const double cost = before[i].cost + stepCost(before[i], state);
        if (cost < best) best = cost, state.from = i;
      }
      state.cost += best;
    }
    // Only differences matter: a long movie's sums would lose their fractions.
    const double lowest = std::min_element(states.begin(), states.end(), [](const State& one, const State& other) {
                            return one.cost < other.cost;
                          })->cost;
    for (State& state : states) state.cost -= lowest;
  }
  steps_.push_back(std::move(states));
}

std::vector<Tracked> Track::traced() const {
  std::vector<Tracked> path(steps_.size());
  if (steps_.empty()) return path;
  const States& last = steps_.back();
  auto at = static_cast<std::size_t>(
      std::min_element(last.begin(), last.end(),
                       [](const State& one, const State& other) { return one.cost < other.cost; }) -
      last.begin());
  for (std::size_t step = steps_.size(); step-- > 0;) {
    const State& state = steps_[step][at];
    path[step] = {state.none ? std::nullopt : std::optional(state.source), state.distance};
    at = state.from;
  }
  return path;
}

std::vector<Tracked> Track::decided() {
  if (steps_.size() < 2 * settledAfter_) return {};
  std::vector<Tracked> path = traced();
  path.resize(path.size() - settledAfter_);
  steps_.erase(steps_.begin(), steps_.begin() + static_cast<std::ptrdiff_t>(path.size()));
  return path;
}

std::vector<Tracked> Track::finish() {
  std::vector<Tracked> path = traced();
  steps_.clear();
  return path;
}

}  // namespace scan
