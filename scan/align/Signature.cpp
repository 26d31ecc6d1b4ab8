#include "scan/align/Signature.h"

#include <algorithm>
#include <cmath>

namespace scan {
namespace {

/// Scales distances to about what codes of 8 bits are.
constexpr float distanceScale = 40;

/// Added to luma before the root is taken, which is all too steep at 0: one code of 8 bits.
constexpr float knee = 1.0F / 219;

/// Which samples of an axis make up one block, the first and the last by the part that lies in it.
struct BlockSpan {
  std::size_t first = 0;
  std::vector<float> weights;  ///< sum 1
};

std::vector<BlockSpan> blockSpans(double begin, double end, int samples, int blocks) {
  std::vector<BlockSpan> spans(static_cast<std::size_t>(blocks));
  const double step = (end - begin) * samples / blocks, most = samples;
  for (std::size_t block = 0; block < spans.size(); ++block) {
    const double from = std::clamp(begin * samples + static_cast<double>(block) * step, 0.0, most - 1e-3);
    const double to = std::clamp(from + step, from + 1e-3, most);
    BlockSpan& span = spans[block];
    span.first = static_cast<std::size_t>(from);
    for (auto i = static_cast<double>(span.first); i < to; ++i) {
      const double part = std::min(to, i + 1) - std::max(from, i);
      span.weights.push_back(static_cast<float>(part / (to - from)));
    }
  }
  return spans;
}

}  // namespace

LumaPlane lumaOf(const diagnosis::Signal& signal) {
  return {signal.width, signal.height, signal.luma()};
}

LumaPlane areaMeans(const LumaPlane& luma, const diagnosis::Region& part, int width, int height) {
  const std::vector<BlockSpan> columns = blockSpans(part.left, part.right, luma.width, width);
  const std::vector<BlockSpan> rows = blockSpans(part.top, part.bottom, luma.height, height);
  const auto samplesAcross = static_cast<std::size_t>(luma.width);
  LumaPlane result{width, height, {}};
  result.samples.reserve(columns.size() * rows.size());
  std::vector<float> line(samplesAcross);
  for (const BlockSpan& row : rows) {
    std::fill(line.begin(), line.end(), 0.0F);
    for (std::size_t i = 0; i < row.weights.size(); ++i) {
      const float* const in = &luma.samples[(row.first + i) * samplesAcross];
      const float weight = row.weights[i];
      for (std::size_t x = 0; x < samplesAcross; ++x) line[x] += weight * in[x];
    }
    for (const BlockSpan& column : columns) {
      float mean = 0;
      for (std::size_t i = 0; i < column.weights.size(); ++i) mean += column.weights[i] * line[column.first + i];
      result.samples.push_back(mean);
    }
  }
  return result;
}

bool Signature::isFlat() const {
  return deviation < flatDeviation;
}

Signature signatureOf(const LumaPlane& luma, const diagnosis::Region& part, double exponent) {
  const LumaPlane blocks = areaMeans(luma, part, signatureWidth, signatureHeight);
  Signature signature;
  const auto power = static_cast<float>(exponent);
  double sum = 0, squares = 0;
  for (std::size_t i = 0; i < signature.values.size(); ++i) {
    const float block = std::max(0.0F, blocks.samples[i]);
    const float root = std::sqrt((exponent == 1 ? block : std::pow(block, power)) + knee);
    signature.values[i] = root;
    sum += double{root};
    squares += double{root} * double{root};
  }
  const double count = static_cast<double>(signature.values.size()), mean = sum / count;
  signature.mean = static_cast<float>(mean);
  signature.deviation = static_cast<float>(std::sqrt(std::max(0.0, squares / count - mean * mean)));
  const float scale = distanceScale / std::max(signature.deviation, flatDeviation);
  for (float& value : signature.values) value = (value - static_cast<float>(mean)) * scale;
  return signature;
}

float distance(const Signature& one, const Signature& other) {
  // Of one colour each: what their means tell is all that there is.
  constexpr float sameLevel = 0.35F, unrelated = 45;
  if (one.isFlat() && other.isFlat() && std::abs(one.mean - other.mean) > sameLevel) return unrelated;
  float sum = 0;
  for (std::size_t i = 0; i < one.values.size(); ++i) sum += std::abs(one.values[i] - other.values[i]);
  return sum / static_cast<float>(one.values.size());
}

Mixture mixtureOf(const Signature& first, const Signature& second, const Signature& wanted) {
  float along = 0, length = 0;
  for (std::size_t i = 0; i < wanted.values.size(); ++i) {
    const float step = second.values[i] - first.values[i];
    along += step * (wanted.values[i] - first.values[i]);
    length += step * step;
  }
  Mixture mixture;
  if (length > 0) mixture.share = std::clamp(along / length, 0.0F, 1.0F);
  Signature mixed = first;
  for (std::size_t i = 0; i < mixed.values.size(); ++i) {
    mixed.values[i] += mixture.share * (second.values[i] - first.values[i]);
  }
  mixture.distance = distance(mixed, wanted);
  return mixture;
}

}  // namespace scan
