#include "scan/follow/Track.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <numeric>

namespace scan {
namespace {

constexpr double away = 0.01;  ///< a frame farther from the time line is as cheap otherwise
constexpr double costOfLeaving = 3;

/// Of a frame that shows the same as the one before, where it should not.
double costOfHoldingFor(float change) {
  constexpr double least = 0.1, each = 4;
  constexpr float encoders = 0.05F;  // leave so much between two frames of one picture
  return least + each * static_cast<double>(std::max(0.0F, change - encoders));
}

}  // namespace

double Track::stepCost(const State& from, const State& to, double costOfHolding) {
  if (from.none || to.none) return from.none == to.none ? 0 : costOfLeaving;
  const std::int64_t by = std::abs(to.away - from.away);
  const double cost = by == 0 ? 0 : 8 + 0.5 * static_cast<double>(by);
  return to.source == from.source ? std::min(cost, costOfHolding) : cost;
}

/// The cheapest way to each state from those of the frame before.
void Track::comeFrom(const States& before, States& states, double costOfHolding) {
  for (Reached& state : states) {
    double best = 1e18;
    for (std::size_t i = 0; i < before.size(); ++i) {
      const double cost = before[i].cost + stepCost(before[i], state, costOfHolding);
      if (cost < best) best = cost, state.from = i;
    }
    state.cost += best;
  }
  // Only differences matter: a long movie's sums would lose their fractions.
  const double lowest = std::min_element(states.begin(), states.end(), [](const Reached& one, const Reached& other) {
                          return one.cost < other.cost;
                        })->cost;
  for (Reached& state : states) state.cost -= lowest;
}

void Track::add(const Candidates& candidates) {
  States states;
  float least = static_cast<float>(highestCost);
  for (std::size_t i = 0; i < candidates.distances.size(); ++i) {
    const float distance = candidates.distances[i];
    const std::int64_t source = candidates.first + static_cast<std::int64_t>(i);
    const std::int64_t off = source - candidates.expected;
    least = std::min(least, distance);
    states.push_back({{source, off, false},
                      std::min(static_cast<double>(distance), highestCost) + away * std::abs(static_cast<double>(off)),
                      distance,
                      0});
  }
  states.push_back({{0, 0, true}, costOfNone, least, 0});
  const double costOfHolding = costOfHoldingFor(candidates.change);
  if (!steps_.empty()) {
    comeFrom(steps_.back(), states, costOfHolding);
  } else if (origin_) {
    comeFrom({{*origin_, 0, 0, 0}}, states, costOfHolding);
  }
  steps_.push_back(std::move(states));
}

std::vector<Tracked> Track::traced() const {
  std::vector<Tracked> path(steps_.size());
  if (steps_.empty()) return path;
  const States& last = steps_.back();
  auto at = static_cast<std::size_t>(
      std::min_element(last.begin(), last.end(),
                       [](const Reached& one, const Reached& other) { return one.cost < other.cost; }) -
      last.begin());
  for (std::size_t step = steps_.size(); step-- > 0;) {
    const Reached& state = steps_[step][at];
    path[step] = {state.none ? std::nullopt : std::optional(state.source), state.distance};
    at = state.from;
  }
  return path;
}

/// The state of a frame that all paths to the newest one go through; none where they differ there.
std::optional<Track::State> Track::sharedAt(std::size_t step) const {
  std::vector<std::size_t> places(steps_.back().size());
  std::iota(places.begin(), places.end(), std::size_t{0});
  for (std::size_t later = steps_.size() - 1; later > step; --later) {
    for (std::size_t& place : places) place = steps_[later][place].from;
  }
  const bool isShared = std::all_of(places.begin(), places.end(), [&](std::size_t each) { return each == places[0]; });
  return isShared ? std::optional<State>(steps_[step][places[0]]) : std::nullopt;
}

std::vector<Tracked> Track::decided() {
  if (steps_.size() < 2 * settledAfter_) return {};
  std::vector<Tracked> path = traced();
  path.resize(path.size() - settledAfter_);
  settled_ = sharedAt(path.size() - 1);
  steps_.erase(steps_.begin(), steps_.begin() + static_cast<std::ptrdiff_t>(path.size()));
  return path;
}

std::vector<Tracked> Track::finish() {
  std::vector<Tracked> path = traced();
  steps_.clear();
  return path;
}

}  // namespace scan
