#include "scan/Segments.h"

#include <algorithm>
#include <cmath>

#include "diagnosis/numbers/Statistics.h"

namespace scan {
namespace {

constexpr double binSeconds = 0.25;
constexpr std::size_t binsOfASecond = 4;
/// No frame is measured better, however many samples agree.
constexpr double leastDeviation = 0.008;
/// The level of a picture that changes faster from frame to frame is fading.
constexpr double fadingLevel = 0.03;
constexpr double leastChange = 0.03;

bool isFading(const Matches& matches, std::size_t i) {
  const FrameMatch& here = matches.frames[i];
  const auto apart = [&](std::size_t other) {
    const FrameMatch& there = matches.frames[other];
    return there.isMeasured() ? std::abs(double{there.level} - double{here.level}) : 0.0;
  };
  // A cut changes it on one side only.
  const double before = i > 0 ? apart(i - 1) : 0, after = i + 1 < matches.frames.size() ? apart(i + 1) : 0;
  return std::min(before, after) > fadingLevel;
}

bool counts(const Matches& matches, std::size_t i) {
  return matches.frames[i].isMeasured() && !isFading(matches, i);
}

/// Values of frames that count.
std::vector<double> exponentsOf(const Matches& matches, const FrameRange& range) {
  std::vector<double> values;
  for (std::size_t i = range.first; i < range.end; ++i) {
    if (counts(matches, i - matches.first)) values.push_back(double{matches.frames[i - matches.first].logExponent});
  }
  return values;
}

ExponentBin binOf(const Matches& matches, const FrameRange& range, std::vector<double>& values) {
  double squares = 0, weights = 0, spreads = 0, levels = 0;
  double lowest = 1e9, highest = -1e9;
  for (std::size_t i = range.first; i < range.end; ++i) {
    const FrameMatch& match = matches.frames[i - matches.first];
    if (!counts(matches, i - matches.first)) continue;
    weights += double{match.weight};
    spreads += double{match.spread};
    lowest = std::min(lowest, double{match.level});
    highest = std::max(highest, double{match.level});
  }
  const auto count = static_cast<double>(values.size());
  levels = highest > lowest ? (highest - lowest) / count : 0;
  const double spread = spreads / count;
  squares = leastDeviation * leastDeviation + levels * levels / 4 + spread * spread / std::max(1.0, weights);
  return {range, diagnosis::medianOf(values), std::sqrt(squares)};
}

/// Sums up to each bin, from which any part's cost follows at once.
class PartCosts {
 public:
  explicit PartCosts(const std::vector<ExponentBin>& bins) : weights_(1), sums_(1), squares_(1) {
    for (const ExponentBin& bin : bins) {
      const double weight = 1 / (bin.deviation * bin.deviation);
      weights_.push_back(weights_.back() + weight);
      sums_.push_back(sums_.back() + weight * bin.logExponent);
      squares_.push_back(squares_.back() + weight * bin.logExponent * bin.logExponent);
    }
  }
  double of(std::size_t first, std::size_t end) const {
    const double weight = weights_[end] - weights_[first], sum = sums_[end] - sums_[first];
    return std::max(0.0, squares_[end] - squares_[first] - sum * sum / weight);
  }

 private:
  std::vector<double> weights_, sums_, squares_;
};

/// The frame at which the second exponent fits better than the first, within a second of where the bins part.
std::size_t cutBetween(const Matches& matches, const FrameRange& around, double before, double after) {
  double cost = 0, least = 0;
  std::size_t best = around.first;
  for (std::size_t i = around.first; i < around.end; ++i) {
    const FrameMatch& match = matches.frames[i - matches.first];
    if (!match.isMeasured()) continue;
    const double value = double{match.logExponent};
    cost += std::abs(value - before) - std::abs(value - after);
    if (cost < least) least = cost, best = i + 1;
  }
  return best;
}

}  // namespace

std::vector<ExponentBin> binsOf(const Matches& matches, const FrameRow& dest) {
  std::vector<ExponentBin> bins;
  std::size_t first = matches.first;
  while (first < matches.end()) {
    std::size_t end = first + 1;
    const double until = dest.timeOf(first) + binSeconds;
    while (end < matches.end() && dest.timeOf(end) < until - 1e-6) ++end;
    std::vector<double> values = exponentsOf(matches, {first, end});
    if (!values.empty()) bins.push_back(binOf(matches, {first, end}, values));
    first = end;
  }
  return bins;
}

std::vector<std::size_t> partitionOf(const std::vector<ExponentBin>& bins, double penalty, std::size_t fewest) {
  const PartCosts costs(bins);
  const std::size_t count = bins.size();
  std::vector<double> best(count + 1, 1e300);
  std::vector<std::size_t> from(count + 1, 0), open{0};
  best[0] = -penalty;
  for (std::size_t end = 1; end <= count; ++end) {
    for (const std::size_t first : open) {
      if (end - first < fewest && first > 0) continue;
      if (best[first] > 1e299) continue;
      const double cost = best[first] + costs.of(first, end) + penalty;
      if (cost < best[end]) best[end] = cost, from[end] = first;
    }
    // What is dearer now than the best stays so, however it goes on.
    std::erase_if(open, [&](std::size_t first) {
      return end - first >= fewest && best[first] + costs.of(first, end) > best[end];
    });
    open.push_back(end);
  }
  std::vector<std::size_t> begins;
  for (std::size_t end = count; end > 0; end = from[end]) begins.push_back(from[end]);
  std::reverse(begins.begin(), begins.end());
  return begins;
}

std::optional<ExponentSegment> exponentIn(const Matches& matches, const FrameRange& range) {
  std::vector<double> values = exponentsOf(matches, range);
  if (values.empty()) return std::nullopt;
  ExponentSegment segment;
  segment.dest = range;
  segment.logExponent = diagnosis::medianOf(values);
  for (double& value : values) value = std::abs(value - segment.logExponent);
  // Frames that follow each other err alike: of 24 about one speaks for itself.
  constexpr double alike = 24;
  const double own = std::max(1.0, static_cast<double>(values.size()) / alike);
  const double halfWidth = 2 * std::hypot(leastDeviation / 2, 1.5 * diagnosis::medianOf(values) / std::sqrt(own));
  segment.interval = {std::exp(segment.logExponent - halfWidth), std::exp(segment.logExponent + halfWidth)};
  return segment;
}

std::vector<ExponentSegment> segmentsOf(const Matches& matches, const FrameRow& dest) {
  const std::vector<ExponentBin> bins = binsOf(matches, dest);
  if (bins.empty()) return {};
  const double penalty = 10 * std::log(std::max<double>(2, static_cast<double>(bins.size())));
  const std::vector<std::size_t> begins = partitionOf(bins, penalty, binsOfASecond);
  std::vector<ExponentSegment> segments;
  for (std::size_t part = 0; part < begins.size(); ++part) {
    const std::size_t next = part + 1 < begins.size() ? begins[part + 1] : bins.size();
    const FrameRange range{bins[begins[part]].dest.first, bins[next - 1].dest.end};
    const ExponentSegment segment = *exponentIn(matches, range);
    const bool same = !segments.empty() && std::abs(segments.back().logExponent - segment.logExponent) < leastChange;
    if (same) {
      segments.back() = *exponentIn(matches, {segments.back().dest.first, range.end});
    } else {
      segments.push_back(segment);
    }
  }
  const auto aSecond = static_cast<std::size_t>(std::max(1.0, std::round(dest.shape().rate())));
  for (std::size_t i = 1; i < segments.size(); ++i) {
    FrameRange &left = segments[i - 1].dest, &right = segments[i].dest;
    const FrameRange around{std::max(left.first, left.end - std::min(left.end, aSecond)),
                            std::min(right.end, right.first + aSecond)};
    left.end = right.first = cutBetween(matches, around, segments[i - 1].logExponent, segments[i].logExponent);
  }
  return segments;
}

}  // namespace scan
