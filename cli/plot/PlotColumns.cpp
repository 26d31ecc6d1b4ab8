#include "cli/plot/PlotColumns.h"

#include <algorithm>
#include <cmath>

namespace cli {
namespace {

double quantile(std::vector<double>& values, double share) {
  const auto place = static_cast<std::ptrdiff_t>(std::lround(share * static_cast<double>(values.size() - 1)));
  std::nth_element(values.begin(), values.begin() + place, values.end());
  return values[static_cast<std::size_t>(place)];
}

/// Of frames in a row; none where none was measured.
PlotRun columnOf(const scan::Matches& matches, const scan::FrameRow& dest, const scan::FrameRange& range) {
  std::vector<double> exponents, spreads, times;
  for (std::size_t frame = range.first; frame < range.end; ++frame) {
    const scan::FrameMatch& match = matches.at(frame);
    if (!match.isMeasured()) continue;
    exponents.push_back(double{match.logExponent});
    spreads.push_back(double{match.spread});
    times.push_back((dest.timeOf(frame) + dest.timeOf(frame + 1)) / 2);
  }
  if (exponents.empty()) return {};
  const double spread = quantile(spreads, 0.5);
  return {{.time = quantile(times, 0.5),
           .middle = quantile(exponents, 0.5),
           .low = quantile(exponents, 0.1) - spread,
           .high = quantile(exponents, 0.9) + spread}};
}

}  // namespace

std::vector<PlotRun> plotRuns(const scan::Matches& matches, const scan::FrameRow& dest, std::size_t columns) {
  std::vector<PlotRun> runs;
  const double begin = dest.timeOf(matches.first), length = dest.timeOf(matches.end()) - begin;
  const auto columnAt = [&](std::size_t frame) {
    return length > 0 ? std::floor((dest.timeOf(frame) - begin) / length * static_cast<double>(columns)) : 0.0;
  };
  bool goesOn = false;
  for (std::size_t first = matches.first, end = first; first < matches.end(); first = end) {
    while (end < matches.end() && columnAt(end) <= columnAt(first)) ++end;
    const PlotRun column = columnOf(matches, dest, {first, end});
    if (!column.empty() && !goesOn) runs.emplace_back();
    goesOn = !column.empty();
    if (goesOn) runs.back().push_back(column.front());
  }
  return runs;
}

}  // namespace cli
