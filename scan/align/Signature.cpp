#include "scan/align/Signature.h"

#include <algorithm>
#include <cmath>

namespace scan {
namespace {

/// Scales distances to about what codes of 8 bits are.
constexpr float distanceScale = 40;

/// Added to luma before the root is taken, which is all too steep at 0: one code of 8 bits.
constexpr float knee = 1.0F / 219;

/// The samples of an axis that make up each of its blocks, the first and the last of them by the part that lies in it.
struct BlockSpans {
  struct Span {
    std::size_t first = 0, count = 0;
  };
  std::vector<Span> spans;
  std::vector<float> weights;  ///< of the first block, of the next; sum 1 in each
};

BlockSpans blockSpans(double begin, double end, int samples, int blocks) {
  const auto count = static_cast<std::size_t>(blocks);
  const double step = (end - begin) * samples / blocks, most = samples;
  BlockSpans result;
  result.spans.reserve(count);
  result.weights.reserve(count * (static_cast<std::size_t>(step) + 2));
  for (std::size_t block = 0; block < count; ++block) {
    const double from = std::clamp(begin * samples + static_cast<double>(block) * step, 0.0, most - 1e-3);
    const double to = std::clamp(from + step, from + 1e-3, most);
    BlockSpans::Span span{static_cast<std::size_t>(from)};
    for (auto i = static_cast<double>(span.first); i < to; ++i, ++span.count) {
      const double part = std::min(to, i + 1) - std::max(from, i);
      result.weights.push_back(static_cast<float>(part / (to - from)));
    }
    result.spans.push_back(span);
  }
  return result;
}

}  // namespace

LumaPlane lumaOf(const diagnosis::Signal& signal) {
  return {signal.width, signal.height, signal.luma()};
}

LumaPlane areaMeans(const LumaPlane& luma, const diagnosis::Region& part, int width, int height) {
  const BlockSpans columns = blockSpans(part.left, part.right, luma.width, width);
  const BlockSpans rows = blockSpans(part.top, part.bottom, luma.height, height);
  const auto samplesAcross = static_cast<std::size_t>(luma.width);
  LumaPlane result{width, height, std::vector<float>(columns.spans.size() * rows.spans.size())};
  std::vector<float> weighted(samplesAcross);
  float* const line = weighted.data();
  float* out = result.samples.data();
  const float* rowWeight = rows.weights.data();
  for (const auto& [firstRow, rowCount] : rows.spans) {
    std::fill(weighted.begin(), weighted.end(), 0.0F);
    for (std::size_t i = 0; i < rowCount; ++i) {
      const float* const in = luma.samples.data() + (firstRow + i) * samplesAcross;
      const float weight = *rowWeight++;
      for (std::size_t x = 0; x < samplesAcross; ++x) line[x] += weight * in[x];
    }
    const float* columnWeight = columns.weights.data();
    for (const auto& [first, count] : columns.spans) {
      float mean = 0;
      for (std::size_t i = 0; i < count; ++i) mean += *columnWeight++ * line[first + i];
      *out++ = mean;
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
