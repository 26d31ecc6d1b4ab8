#include "scan/follow/LatestExponent.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace scan {

std::optional<double> latestExponent(const Matches& matches, std::size_t end) {
  constexpr std::size_t frames = 48, fewest = 36;
  constexpr double agreeing = 0.05, most = 1.6;
  end = std::min(end, matches.frames.size());
  std::vector<double> measured;
  for (std::size_t i = end - std::min(end, frames); i < end; ++i) {
    const FrameMatch& match = matches.frames[i];
    if (match.isMeasured() && !match.flat) measured.push_back(double{match.logExponent});
  }
  if (measured.size() < fewest) return std::nullopt;
  std::sort(measured.begin(), measured.end());
  const std::size_t count = measured.size();
  const double middle = measured[count / 2];
  if (measured[count * 3 / 4] - measured[count / 4] > agreeing || std::abs(middle) > most) return std::nullopt;
  return std::exp(middle);
}

}  // namespace scan
