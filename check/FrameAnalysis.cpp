#include "check/FrameAnalysis.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <span>
#include <unordered_map>
#include <vector>

#include "SharedFiles/foundation/QVPlatformException.h"
#include "SharedFiles/log/QVLog.h"

// Two forms of one computation stand here. The guarded form asks a bitmap pixel by pixel and computes as the
// definitions are written. The plain form reads frames in memory, where the luma depends on one integer only: the
// weight k = 299 R + 587 G + 114 B. Both give the same bits.

namespace check {
namespace {

constexpr float blackLuma = 32.0F;           // and below: black
constexpr float darkestWeighedLuma = 16.0F;  // video black
constexpr float clippedLuma = 254.0F;        // above, in both frames: clipped white
constexpr std::uint32_t weightUnits = 1000;  // of k for a luma of 1

float lumaOf(const FrameBitmap::Samples& samples) {
  const auto red = static_cast<float>(samples[0]);
  const auto green = static_cast<float>(samples[1]);
  const auto blue = static_cast<float>(samples[2]);
  const double sum = (red * 0.00390625 * 0.299 + green * 0.00390625 * 0.587) + blue * 0.00390625 * 0.114;
  return static_cast<float>(sum) * 256.0F;
}

double videoRange(float luma) {
  return (static_cast<double>(luma) - 16.0) / 219.0;
}

std::uint32_t weightOf(const std::uint8_t* pixel) {
  return 299U * pixel[0] + 587U * pixel[1] + 114U * pixel[2];
}

/// The weights of two pixels in one go: of a below, of b above bit 32.
std::uint64_t pairedWeights(const std::uint8_t* a, const std::uint8_t* b) {
  const auto both = [&](int i) { return std::uint64_t{a[i]} | std::uint64_t{b[i]} << 32; };
  return 299 * both(0) + 587 * both(1) + 114 * both(2);
}

/// ln of the normalised luma by weight, for weights of video black and above. One table for the process, filled as
/// weights are met. Several checks may run at once: whoever computes an entry stores the same bits.
class LogTable {
 public:
  static constexpr std::uint32_t first = 16 * weightUnits, last = 255 * weightUnits;

  double at(std::uint32_t weight) {
    auto& entry = entries_[std::size_t{weight} - first];
    const std::uint64_t bits = entry.load(std::memory_order_relaxed);
    return bits != 0 ? std::bit_cast<double>(bits) : fill(entry, weight);  // 0: not met yet, or reference white, ln 1
  }

 private:
  static double fill(std::atomic<std::uint64_t>& entry, std::uint32_t weight) {
    const double value = std::log(videoRange(static_cast<float>(weight) / static_cast<float>(weightUnits)));
    entry.store(std::bit_cast<std::uint64_t>(value), std::memory_order_relaxed);
    return value;
  }

  std::array<std::atomic<std::uint64_t>, last - first + 1> entries_{};  // the bits of doubles
};

constinit LogTable logTable;

/// By its bits, in one comparison.
bool isPositiveAndFinite(double number) {
  constexpr auto highest = std::bit_cast<std::uint64_t>(std::numeric_limits<double>::max());
  return std::bit_cast<std::uint64_t>(number) - 1 < highest;
}

/// The running sum of the exponents and the multiset of their values rounded to hundredths.
class ExponentTally {
 public:
  void add(std::span<const double> exponents) {
    double sum = sum_;  // each addition waits for the one before it: a register, so the loop calls nothing
    std::uint64_t kept = kept_;
    if (rare_.size() < rareCount_ + exponents.size()) rare_.resize(rareCount_ + exponents.size());
    Rare* rare = rare_.data() + rareCount_;
    for (const double exponent : exponents) {
      if (!isPositiveAndFinite(exponent)) continue;
      ++kept;
      sum += exponent;
      if (sum == 1.0) continue;
      // NOLINTNEXTLINE(bugprone-incorrect-roundings): floor(x + 0.5) of a positive x is what the estimate is defined by
      const auto hundredths = static_cast<std::int64_t>(exponent * 100.0 + 0.5);
      if (hundredths < binCount) {
        Bin& bin = bins_[static_cast<std::size_t>(hundredths)];
        if (bin.count++ == 0) bin.first = kept;
      } else {
        *rare++ = {hundredths, kept};
      }
    }
    sum_ = sum;
    kept_ = kept;
    rareCount_ = static_cast<std::size_t>(rare - rare_.data());
  }

  GammaEstimate estimate() const {
    GammaEstimate result;
    result.average = kept_ == 0 ? std::numeric_limits<double>::quiet_NaN() : sum_ / static_cast<double>(keptAsFloat());
    result.commonDiff = static_cast<double>(mostFrequent()) / 100.0;
    return result;
  }

 private:
  static constexpr std::int64_t binCount = 2048;  // exponents below 20.475

  struct Bin {
    std::uint64_t first = 0;  // when its value was first met
    int count = 0;
  };
  struct Rare {
    std::int64_t hundredths = 0;
    std::uint64_t met = 0;
  };

  /// A float that counts by ones stays where the next one is lost.
  float keptAsFloat() const { return static_cast<float>(std::min<std::uint64_t>(kept_, std::uint64_t{1} << 24)); }

  /// In hundredths; of values equally frequent the one met first; 0 without any.
  std::int64_t mostFrequent() const {
    std::int64_t best = 0;
    Bin bestBin;
    const auto consider = [&](std::int64_t hundredths, const Bin& bin) {
      if (bin.count < bestBin.count || (bin.count == bestBin.count && bin.first >= bestBin.first)) return;
      best = hundredths;
      bestBin = bin;
    };
    for (std::int64_t i = 0; i < binCount; ++i) consider(i, bins_[static_cast<std::size_t>(i)]);
    std::unordered_map<std::int64_t, Bin> rest;
    for (const Rare& rare : std::span(rare_).first(rareCount_)) {
      Bin& bin = rest[rare.hundredths];
      if (bin.count++ == 0) bin.first = rare.met;
    }
    for (const auto& [hundredths, bin] : rest) consider(hundredths, bin);
    return best;
  }

  std::uint64_t kept_ = 0;
  double sum_ = 0;
  std::array<Bin, static_cast<std::size_t>(binCount)> bins_{};
  std::vector<Rare> rare_;  // the first rareCount_ of them
  std::size_t rareCount_ = 0;
};

/// Every pixel, column by column; the size is asked for again at each step.
template <typename PixelWork>
void forEachPixel(const FrameBitmap& bitmap, PixelWork work) {
  for (int x = 0; x < bitmap.pixelsWide(); ++x) {
    for (int y = 0; y < bitmap.pixelsHigh(); ++y) {
      try {
        work(x, y);
      } catch (const QVPlatformException& exception) {
        QVLog::appendLog("Exception: %@", exception.reason());
      }
    }
  }
}

bool isWhole(const movie::RgbFrame& frame) {
  return frame.width > 0 && frame.height > 0 &&
         frame.samples.size() / 3 / static_cast<std::size_t>(frame.width) >= static_cast<std::size_t>(frame.height);
}

/// The frame behind a bitmap, if all its pixels can be read from memory.
const movie::RgbFrame* readableFrame(const FrameBitmap& bitmap) {
  const movie::RgbFrame* frame = bitmap.plainFrame();
  return frame != nullptr && isWhole(*frame) ? frame : nullptr;
}

bool isMostlyBlack(std::uint32_t black, std::uint32_t nonBlack) {
  const float ratio = static_cast<float>(black) / static_cast<float>(black + nonBlack);
  return static_cast<double>(ratio) >= 0.85;
}

bool isBlackPlainFrame(const movie::RgbFrame& frame) {
  const auto pixels = static_cast<std::size_t>(frame.width) * static_cast<std::size_t>(frame.height);
  const std::uint8_t* pixel = frame.samples.data();
  std::uint32_t black = 0;
  for (std::size_t i = 0; i < pixels; ++i, pixel += 3) black += weightOf(pixel) <= 32 * weightUnits ? 1U : 0U;
  return isMostlyBlack(black, static_cast<std::uint32_t>(pixels) - black);
}

GammaEstimate gammaShiftOfPlainFrames(const movie::RgbFrame& source, const movie::RgbFrame& dest) {
  ExponentTally tally;
  const auto sourceRow = 3 * static_cast<std::size_t>(source.width);
  const auto destRow = 3 * static_cast<std::size_t>(dest.width);
  const auto height = static_cast<std::size_t>(source.height);
  std::vector<std::uint64_t> weights(height);
  std::vector<double> exponents(height);
  for (std::size_t x = 0; x < sourceRow; x += 3) {
    std::size_t sourcePixel = x, destPixel = x, weighed = 0;
    for (std::size_t y = 0; y < height; ++y, sourcePixel += sourceRow, destPixel += destRow) {
      const std::uint64_t both = pairedWeights(source.samples.data() + sourcePixel, dest.samples.data() + destPixel);
      weights[weighed] = both;
      // Both at video black or above and not both clipped: the lower one lies from 16 to 254.
      const std::uint32_t lower = std::min(static_cast<std::uint32_t>(both), static_cast<std::uint32_t>(both >> 32));
      weighed += lower - 16 * weightUnits <= (254 - 16) * weightUnits ? 1 : 0;
    }
    for (std::size_t i = 0; i < weighed; ++i)
      exponents[i] = logTable.at(static_cast<std::uint32_t>(weights[i] >> 32)) /
                     logTable.at(static_cast<std::uint32_t>(weights[i]));
    tally.add(std::span(exponents).first(weighed));
  }
  return tally.estimate();
}

}  // namespace

bool isBlackFrame(const FrameBitmap& bitmap) {
  if (const movie::RgbFrame* frame = readableFrame(bitmap)) return isBlackPlainFrame(*frame);
  std::uint32_t black = 0, nonBlack = 0;
  forEachPixel(bitmap, [&](int x, int y) {
    FrameBitmap::Samples samples{};
    bitmap.getPixel(samples, x, y);
    ++(blackLuma >= lumaOf(samples) ? black : nonBlack);
  });
  return isMostlyBlack(black, nonBlack);
}

GammaEstimate gammaShiftForSourceBitmap(const FrameBitmap& source, const FrameBitmap& dest) {
  const movie::RgbFrame* sourceFrame = readableFrame(source);
  const movie::RgbFrame* destFrame = readableFrame(dest);
  if (sourceFrame != nullptr && destFrame != nullptr && destFrame->width >= sourceFrame->width &&
      destFrame->height >= sourceFrame->height)
    return gammaShiftOfPlainFrames(*sourceFrame, *destFrame);

  ExponentTally tally;
  forEachPixel(source, [&](int x, int y) {
    FrameBitmap::Samples sourceSamples{}, destSamples{};
    source.getPixel(sourceSamples, x, y);
    dest.getPixel(destSamples, x, y);
    const float sourceLuma = lumaOf(sourceSamples), destLuma = lumaOf(destSamples);
    if (sourceLuma < darkestWeighedLuma || destLuma < darkestWeighedLuma) return;
    if (sourceLuma > clippedLuma && destLuma > clippedLuma) return;
    const double exponent = std::log(videoRange(destLuma)) / std::log(videoRange(sourceLuma));
    tally.add(std::span(&exponent, 1));
  });
  return tally.estimate();
}

}  // namespace check
