#include "tests/check/LiteralFrameAnalysis.h"

#include <cmath>
#include <cstdint>
#include <limits>
#include <unordered_map>
#include <vector>

#include "SharedFiles/foundation/QVPlatformException.h"

namespace literal {
namespace {

/// A multiset of numbers that remembers in which order its distinct values came.
class CountedSet {
 public:
  void add(double number) {
    const auto [place, isNew] = occurrences_.try_emplace(number, 0U);
    if (isNew) distinct_.push_back(number);
    ++place->second;
  }
  const std::vector<double>& distinct() const { return distinct_; }
  unsigned int countFor(double number) const { return occurrences_.at(number); }

 private:
  std::unordered_map<double, unsigned int> occurrences_;
  std::vector<double> distinct_;
};

float lumaAt(const check::FrameBitmap& bitmap, int x, int y) {
  check::FrameBitmap::Samples samples{};
  bitmap.getPixel(samples, x, y);
  return luma(samples[0], samples[1], samples[2]);
}

struct Sums {
  CountedSet multiset;
  float count = 0.0F;
  double sum = 0.0;
};

void weigh(float sL, float dL, Sums& sums) {
  if (sL < 16.0F) return;
  if (dL < 16.0F) return;
  if (sL > 254.0F && dL > 254.0F) return;
  const double s = (static_cast<double>(sL) - 16.0) / 219.0;
  const double d = (static_cast<double>(dL) - 16.0) / 219.0;
  const double r = std::log(d) / std::log(s);
  if (!(r > 0.0 && std::isfinite(std::fabs(r)))) return;
  sums.count += 1.0F;
  sums.sum += r;
  if (sums.sum != 1.0) sums.multiset.add(std::floor(r * 100.0 + 0.5) / 100.0);
}

}  // namespace

float luma(unsigned int red, unsigned int green, unsigned int blue) {
  const double r = static_cast<float>(red), g = static_cast<float>(green), b = static_cast<float>(blue);
  const double sum = (r * 0.00390625 * 0.299 + g * 0.00390625 * 0.587) + b * 0.00390625 * 0.114;
  return static_cast<float>(sum) * 256.0F;
}

bool isBlackFrame(const check::FrameBitmap& bitmap) {
  std::uint32_t black = 0, nonBlack = 0;
  for (int x = 0; x < bitmap.pixelsWide(); ++x) {
    for (int y = 0; y < bitmap.pixelsHigh(); ++y) {
      try {
        if (32.0F >= lumaAt(bitmap, x, y)) {
          black += 1;
        } else {
          nonBlack += 1;
        }
      } catch (const QVPlatformException&) {  // NOLINT(bugprone-empty-catch): that pixel does not count
      }
    }
  }
  const float ratio = static_cast<float>(black) / static_cast<float>(black + nonBlack);
  return static_cast<double>(ratio) >= 0.85;
}

check::GammaEstimate gammaShiftForSourceBitmap(const check::FrameBitmap& source, const check::FrameBitmap& dest) {
  Sums sums;
  for (int x = 0; x < source.pixelsWide(); ++x) {
    for (int y = 0; y < source.pixelsHigh(); ++y) {
      try {
        const float sL = lumaAt(source, x, y);
        const float dL = lumaAt(dest, x, y);
        weigh(sL, dL, sums);
      } catch (const QVPlatformException&) {  // NOLINT(bugprone-empty-catch): that pixel does not count
      }
    }
  }
  check::GammaEstimate result;
  // 0 / 0 has a sign that depends on when it is computed; this one is fixed.
  result.average =
      sums.count == 0.0F ? std::numeric_limits<double>::quiet_NaN() : sums.sum / static_cast<double>(sums.count);
  int best = 0;
  for (const double value : sums.multiset.distinct()) {
    const int c = static_cast<int>(sums.multiset.countFor(value));
    if (c > best) {
      result.commonDiff = value;
      best = c;
    }
  }
  return result;
}

}  // namespace literal
