#include "scan/align/TimeLine.h"

#include <algorithm>
#include <cmath>

namespace scan {
namespace {

/// Rates that differ by less are one: over ten minutes they part by a hundredth of a frame.
constexpr double sameRate = 1e-6;

bool holds(const std::vector<double>& rates, double rate) {
  return std::any_of(rates.begin(), rates.end(), [&](double each) { return std::abs(each / rate - 1) < sameRate; });
}

/// Counts of frames are whole, lengths rounded: a ratio of rates is taken for the usual one that it is next to.
double ratioOfRates(const RowShape& source, const RowShape& dest) {
  constexpr double rounding = 3e-4;
  if (source.rate() <= 0 || dest.rate() <= 0) return 1;
  const double rates[] = {24000.0 / 1001, 24, 25, 30000.0 / 1001, 30, 48, 50, 60000.0 / 1001, 60};
  const auto settled = [&](double rate) {
    const auto* const nearest = std::min_element(std::begin(rates), std::end(rates), [&](double one, double other) {
      return std::abs(one - rate) < std::abs(other - rate);
    });
    return std::abs(*nearest / rate - 1) < rounding ? *nearest : rate;
  };
  return settled(dest.rate()) / settled(source.rate());
}

}  // namespace

std::vector<double> usualRates(const RowShape& source, const RowShape& dest) {
  constexpr double pal = 25.0 / 24, ntsc = 1.001;
  std::vector<double> rates;
  for (const double rate : {1.0, ratioOfRates(source, dest), pal, 1 / pal, ntsc, 1 / ntsc, pal * ntsc, pal / ntsc,
                            ntsc / pal, 1 / (pal * ntsc)}) {
    if (rate > 0 && !holds(rates, rate)) rates.push_back(rate);
  }
  return rates;
}

double settledRate(double measured, const std::vector<double>& usual) {
  constexpr double reach = 1e-4;
  double best = measured, least = reach;
  for (const double rate : usual) {
    const double off = std::abs(measured / rate - 1);
    if (off < least) best = rate, least = off;
  }
  return best;
}

std::vector<TimeLine> suggestedLines(const RowShape& source, const RowShape& dest) {
  std::vector<TimeLine> lines;
  const auto add = [&](const TimeLine& line) {
    const bool known = std::any_of(lines.begin(), lines.end(), [&](const TimeLine& each) {
      return std::abs(each.rate / line.rate - 1) < sameRate && std::abs(each.offset - line.offset) < 1e-3;
    });
    if (!known) lines.push_back(line);
  };
  const double ratio = ratioOfRates(source, dest);
  add({1, 0});
  add({ratio, 0});
  add({1, source.seconds - dest.seconds});
  add({ratio, source.seconds - ratio * dest.seconds});
  return lines;
}

}  // namespace scan
