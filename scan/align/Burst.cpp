#include "scan/align/Burst.h"

#include <algorithm>
#include <cmath>

namespace scan {
namespace {

/// The farther of two frames counts by so much more, a whole frame away: of places that fit equally well the one in the
/// middle is the cheapest.
constexpr double lean = 0.1;
/// What a burst costs more that lies outside of the stretch: pictures that do not move fit there as well as where they
/// are.
constexpr double costOutside = 2;

/// Of a stretch, in seconds: of a single frame, that of the burst.
double periodOf(const std::vector<double>& stretch, const std::vector<double>& burst) {
  constexpr double usual = 1.0 / 24;
  const std::vector<double>& times = stretch.size() > 1 ? stretch : burst;
  return times.size() > 1 ? (times.back() - times.front()) / static_cast<double>(times.size() - 1) : usual;
}

}  // namespace

BurstCosts::BurstCosts(const Moments& burst, const Moments& stretch) {
  for (const Moment& moment : burst) burstTimes_.push_back(moment.time);
  for (const Moment& moment : stretch) stretchTimes_.push_back(moment.time);
  distances_.reserve(burst.size() * stretch.size());
  for (const Moment& one : burst) {
    for (const Moment& other : stretch) distances_.push_back(distance(one.signature, other.signature));
  }
}

std::optional<double> BurstCosts::costOf(const TimeLine& line) const {
  if (stretchTimes_.empty()) return std::nullopt;
  const double period = periodOf(stretchTimes_, burstTimes_);
  double sum = 0;
  std::size_t count = 0;
  for (std::size_t i = 0; i < burstTimes_.size(); ++i) {
    const double time = line.at(burstTimes_[i]);
    if (time < stretchTimes_.front() - period / 2 || time > stretchTimes_.back() + period / 2) continue;
    const auto after = std::upper_bound(stretchTimes_.begin(), stretchTimes_.end(), time);
    const auto last = static_cast<std::ptrdiff_t>(stretchTimes_.size()) - 1;
    const std::ptrdiff_t right = std::clamp<std::ptrdiff_t>(after - stretchTimes_.begin(), 0, last);
    const std::ptrdiff_t left = std::max<std::ptrdiff_t>(right - 1, 0);
    const float* const row = &distances_[i * stretchTimes_.size()];
    const auto cost = [&](std::ptrdiff_t at) {
      return static_cast<double>(row[at]) +
             lean * std::abs(stretchTimes_[static_cast<std::size_t>(at)] - time) / period;
    };
    sum += std::min(cost(left), cost(right));
    ++count;
  }
  if (count == 0 || 2 * count < burstTimes_.size()) return std::nullopt;
  // Beyond the stretch anything would fit.
  const double outside = 1 - static_cast<double>(count) / static_cast<double>(burstTimes_.size());
  return sum / static_cast<double>(count) + costOutside * outside;
}

std::optional<BurstFit> BurstCosts::fit(double rate) const {
  if (burstTimes_.empty() || stretchTimes_.empty()) return std::nullopt;
  BurstFit best;
  best.rate = rate;
  best.destTime = (burstTimes_.front() + burstTimes_.back()) / 2;
  best.framePeriod = periodOf(stretchTimes_, burstTimes_);
  const double step = best.framePeriod / 2;
  const auto steps = static_cast<int>((stretchTimes_.back() - stretchTimes_.front()) / step);
  std::vector<std::pair<double, double>> costs;  // by the source's time
  for (int i = 0; i <= steps; ++i) {
    const double time = stretchTimes_.front() + step * i;
    if (const auto cost = costOf({rate, time - rate * best.destTime})) costs.emplace_back(time, *cost);
  }
  if (costs.empty()) return std::nullopt;
  const auto least = std::min_element(costs.begin(), costs.end(),
                                      [](const auto& one, const auto& other) { return one.second < other.second; });
  best.cost = least->second;
  const double nearly = best.cost + std::max(0.15 * best.cost, 0.1);
  const auto isNear = [&](const auto& each) { return each.second <= nearly; };
  best.low = std::find_if(costs.begin(), costs.end(), isNear)->first;
  best.high = std::find_if(costs.rbegin(), costs.rend(), isNear)->first;
  // In the middle of where it fits best: the cost is flat between two frames.
  double sum = 0, count = 0;
  for (const auto& [time, cost] : costs) {
    if (cost > best.cost + 0.02) continue;
    if (std::abs(time - least->first) > 2 * best.framePeriod) continue;
    sum += time;
    ++count;
  }
  best.sourceTime = sum / count;
  return best;
}

std::optional<BurstFit> bestFit(const Moments& burst, const Moments& stretch, const std::vector<double>& rates) {
  constexpr double clearlyBetter = 0.9;
  const BurstCosts costs(burst, stretch);
  std::optional<BurstFit> best;
  for (const double rate : rates) {
    const std::optional<BurstFit> fit = costs.fit(rate);
    if (fit && (!best || fit->cost < clearlyBetter * best->cost)) best = fit;
  }
  return best;
}

}  // namespace scan
