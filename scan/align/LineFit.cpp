#include "scan/align/LineFit.h"

#include <algorithm>
#include <cmath>

#include "diagnosis/numbers/Statistics.h"

namespace scan {
namespace {

/// How much a rate counts beside the number of fits that agree.
constexpr double priorOfOne = 1.2, priorOfRatio = 0.8, priorOfOthers = 0.5;
constexpr double slowest = 0.4, fastest = 2.6;
/// A rate of its own has to show: it drifts away from 1 by so many frames.
constexpr double leastDrift = 3;

bool agrees(const BurstFit& fit, const TimeLine& line) {
  const double time = line.at(fit.destTime), reach = fit.framePeriod / 2;
  return time >= fit.low - reach && time <= fit.high + reach;
}

/// Moved to the middle of what its fits allow.
double centredOffset(const std::vector<BurstFit>& fits, const std::vector<std::size_t>& agreeing, double rate) {
  std::vector<double> offsets;
  offsets.reserve(agreeing.size());
  for (const std::size_t i : agreeing) offsets.push_back(fits[i].sourceTime - rate * fits[i].destTime);
  return diagnosis::medianOf(offsets);
}

LineThrough lineAt(const std::vector<BurstFit>& fits, const TimeLine& line, double prior) {
  LineThrough through{line, {}, prior, 0};
  double first = 0, last = 0;
  for (std::size_t i = 0; i < fits.size(); ++i) {
    if (!agrees(fits[i], line)) continue;
    if (through.agreeing.empty()) first = last = fits[i].destTime;
    first = std::min(first, fits[i].destTime);
    last = std::max(last, fits[i].destTime);
    through.agreeing.push_back(i);
    through.score += 1;
  }
  through.span = last - first;
  return through;
}

class Choice {
 public:
  Choice(const std::vector<BurstFit>& fits, bool equalRates) : fits_(fits), equalRates_(equalRates) {}

  void tryRate(double rate, double prior, std::size_t fewest) {
    for (const BurstFit& fit : fits_) {
      for (const double time : {fit.sourceTime, fit.low, fit.high}) {
        const LineThrough through = lineAt(fits_, {rate, time - rate * fit.destTime}, prior);
        if (through.agreeing.size() < fewest || !drifts(through)) continue;
        if (!best_ || through.score > best_->score + 1e-9) best_ = through;
      }
    }
  }

  std::optional<LineThrough> best() const {
    if (!best_) return std::nullopt;
    LineThrough result = *best_;
    result.line.offset = centredOffset(fits_, result.agreeing, result.line.rate);
    return result;
  }

 private:
  /// Between movies of one frame rate any other speed than 1 is rare.
  bool drifts(const LineThrough& through) const {
    if (!equalRates_ || through.line.rate == 1) return true;
    return std::abs(through.line.rate - 1) * through.span >= leastDrift * fits_.front().framePeriod;
  }

  const std::vector<BurstFit>& fits_;
  bool equalRates_;
  std::optional<LineThrough> best_;
};

}  // namespace

std::optional<LineThrough> bestLine(const std::vector<BurstFit>& fits, const std::vector<double>& rates) {
  constexpr double slow = 1 / 1.001, quick = 1.001;
  if (fits.empty()) return std::nullopt;
  // usualRates() leaves the ratio out where it is 1: the next is PAL speed-up then.
  const bool equalRates = rates.size() > 1 && std::abs(rates[1] - 25.0 / 24) < 1e-9;
  Choice choice(fits, equalRates);
  for (std::size_t i = 0; i < rates.size(); ++i) {
    const double prior = i == 0 ? priorOfOne : (i == 1 ? priorOfRatio : priorOfOthers);
    choice.tryRate(rates[i], equalRates && i > 0 ? 0.2 : prior, 1);
  }
  for (std::size_t i = 1; i < std::min<std::size_t>(rates.size(), 3); ++i) {
    for (const double factor : {slow, quick}) choice.tryRate(rates[i] * factor, equalRates ? 0.2 : priorOfOthers, 2);
  }
  for (std::size_t i = 0; i < fits.size(); ++i) {
    for (std::size_t j = 0; j < fits.size(); ++j) {
      const double apart = fits[j].destTime - fits[i].destTime;
      if (apart < 2) continue;
      const double rate = settledRate((fits[j].sourceTime - fits[i].sourceTime) / apart, rates);
      if (rate >= slowest && rate <= fastest) choice.tryRate(rate, equalRates ? 0.2 : priorOfOthers, 3);
    }
  }
  return choice.best();
}

}  // namespace scan
