#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "SharedFiles/foundation/QVPlatformException.h"
#include "check/FrameAnalysis.h"
#include "tests/check/AskedBitmap.h"
#include "tests/check/CapturedLog.h"
#include "tests/check/LiteralFrameAnalysis.h"
#include "tests/check/NaturalFrames.h"

namespace {

using check::GammaEstimate;
using check::RgbFrameBitmap;
using namespace check::test;
using movie::RgbFrame;

/// The estimate of two frames in memory, which the same frames asked pixel by pixel confirm.
GammaEstimate estimateOf(const RgbFrame& source, const RgbFrame& dest) {
  const GammaEstimate plain = check::gammaShiftForSourceBitmap(RgbFrameBitmap(source), RgbFrameBitmap(dest));
  const GammaEstimate asked = check::gammaShiftForSourceBitmap(AskedBitmap(source), AskedBitmap(dest));
  EXPECT_EQ(plain.commonDiff, asked.commonDiff);
  if (std::isnan(plain.average)) {
    EXPECT_TRUE(std::isnan(asked.average));
  } else {
    EXPECT_EQ(plain.average, asked.average);
  }
  return plain;
}

bool isBlack(const RgbFrame& frame) {
  const bool plain = check::isBlackFrame(RgbFrameBitmap(frame));
  EXPECT_EQ(check::isBlackFrame(AskedBitmap(frame)), plain);
  return plain;
}

/// One row of grey pixels.
RgbFrame greys(const std::vector<std::uint8_t>& values) {
  return greyFrame(static_cast<int>(values.size()), 1, values);
}

std::vector<std::uint8_t> repeated(std::uint8_t value, std::size_t times, std::uint8_t other, std::size_t otherTimes) {
  std::vector<std::uint8_t> values(times, value);
  values.insert(values.end(), otherTimes, other);
  return values;
}

/// The nearly grey colour whose luma is nearest.
std::array<std::uint8_t, 3> colorOfLuma(double luma) {
  std::array<std::uint8_t, 3> best{};
  const int grey = static_cast<int>(luma);
  double bestError = 256;
  for (int r = grey - 4; r <= grey + 4; ++r) {
    for (int g = grey - 4; g <= grey + 4; ++g) {
      for (int b = grey - 4; b <= grey + 4; ++b) {
        const double error = std::abs(0.299 * r + 0.587 * g + 0.114 * b - luma);
        if (error >= bestError) continue;
        bestError = error;
        best = {static_cast<std::uint8_t>(r), static_cast<std::uint8_t>(g), static_cast<std::uint8_t>(b)};
      }
    }
  }
  return best;
}

double exponentOfGreys(std::uint8_t source, std::uint8_t dest) {
  return std::log((dest - 16.0) / 219.0) / std::log((source - 16.0) / 219.0);
}

double rounded(double exponent) {
  return std::floor(exponent * 100.0 + 0.5) / 100.0;
}

}  // namespace

TEST(FrameAnalysis, CallsAFrameBlackFromEightyFivePercentOn) {
  struct Row {
    const char* name;
    RgbFrame frame;
    bool black;
  };
  const std::vector<Row> rows = {
      {"all black", greyFrame(20, 10, std::vector<std::uint8_t>(200, 0)), true},
      {"all at luma 32", greyFrame(20, 10, std::vector<std::uint8_t>(200, 32)), true},
      {"all at luma 33", greyFrame(20, 10, std::vector<std::uint8_t>(200, 33)), false},
      {"exactly 85 %", greys(repeated(32, 850, 33, 150)), true},
      {"84.9 %", greys(repeated(32, 849, 33, 151)), false},
      {"85.1 %", greys(repeated(255, 149, 0, 851)), true},
      {"17 of 20", greys(repeated(0, 17, 200, 3)), true},
      {"one black pixel", greys({0}), true},
      {"one bright pixel", greys({200}), false},
      {"no columns", {0, 10, {}}, false},
      {"no rows", {10, 0, {}}, false},
      {"negative width", {-3, 10, {}}, false},
  };
  for (const Row& row : rows) EXPECT_EQ(isBlack(row.frame), row.black) << row.name;
}

TEST(FrameAnalysis, WeighsRedGreenAndBlueForBlack) {
  EXPECT_TRUE(isBlack({1, 1, {107, 0, 0}}));   // 31.993
  EXPECT_FALSE(isBlack({1, 1, {108, 0, 0}}));  // 32.292
  EXPECT_TRUE(isBlack({1, 1, {0, 54, 0}}));    // 31.698
  EXPECT_FALSE(isBlack({1, 1, {0, 55, 0}}));   // 32.285
  EXPECT_TRUE(isBlack({1, 1, {0, 0, 255}}));   // 29.07
  // Close enough to 32 that another weight of one colour shows.
  EXPECT_FALSE(isBlack({1, 1, {100, 3, 3}}));  // 32.003
  EXPECT_TRUE(isBlack({1, 1, {1, 54, 0}}));    // 31.997
  EXPECT_FALSE(isBlack({1, 1, {0, 54, 3}}));   // 32.040
  EXPECT_TRUE(isBlack({1, 1, {0, 5, 254}}));   // 31.891
  EXPECT_FALSE(isBlack({1, 1, {0, 5, 255}}));  // 32.005
}

TEST(FrameAnalysis, EstimatesNothingFromAnEmptyBitmap) {
  for (const RgbFrame& frame : {RgbFrame{0, 0, {}}, RgbFrame{0, 7, {}}, RgbFrame{7, 0, {}}, RgbFrame{-1, 7, {}}}) {
    const GammaEstimate estimate = estimateOf(frame, greyFrame(7, 7, std::vector<std::uint8_t>(49, 100)));
    EXPECT_TRUE(std::isnan(estimate.average));
    EXPECT_EQ(estimate.commonDiff, 0.0);
  }
}

TEST(FrameAnalysis, FindsExponentOneInIdenticalFrames) {
  const RgbFrame frame = naturalFrame(31, 17, 5);
  const GammaEstimate estimate = estimateOf(frame, frame);
  EXPECT_EQ(estimate.commonDiff, 1.0);
  EXPECT_EQ(estimate.average, 1.0);
}

TEST(FrameAnalysis, LeavesOutThePixelThatMakesTheSumOne) {
  const GammaEstimate single = estimateOf(greys({100}), greys({100}));
  EXPECT_EQ(single.average, 1.0);
  EXPECT_EQ(single.commonDiff, 0.0);
  // The second pixel of two equal ones counts: once, as the other exponent does, which came first.
  EXPECT_EQ(estimateOf(greys({100, 100}), greys({100, 100})).commonDiff, 1.0);
  EXPECT_EQ(estimateOf(greys({100, 60, 100}), greys({100, 40, 100})).commonDiff, rounded(exponentOfGreys(60, 40)));
}

TEST(FrameAnalysis, LooksAtTheSumAndNotAtTheExponentForThat) {
  struct Greys {
    std::uint8_t source, dest;
  };
  std::vector<std::pair<double, Greys>> exponents;
  for (int s = 17; s < 235; ++s) {
    for (int d = s + 1; d < 235; ++d)
      exponents.push_back({exponentOfGreys(static_cast<std::uint8_t>(s), static_cast<std::uint8_t>(d)),
                           {static_cast<std::uint8_t>(s), static_cast<std::uint8_t>(d)}});
  }
  int found = 0;
  for (const auto& [a, first] : exponents) {
    for (const auto& [b, second] : exponents) {
      if (a + b != 1.0 || rounded(a) == rounded(b)) continue;
      // The second pixel is left out, the third counts: a tie, and the first exponent came first.
      EXPECT_EQ(
          estimateOf(greys({first.source, second.source, second.source}), greys({first.dest, second.dest, second.dest}))
              .commonDiff,
          rounded(a));
      if (++found == 20) return;
    }
  }
  FAIL() << "only " << found << " pairs of exponents add up to 1";
}

TEST(FrameAnalysis, FindsThePowerOfTwo) {
  RgbFrame source{80, 1, {}}, dest{80, 1, {}};
  for (int value = 120; value < 200; ++value) {
    source.samples.insert(source.samples.end(), 3, static_cast<std::uint8_t>(value));
    const double normalised = (value - 16.0) / 219.0;
    const auto color = colorOfLuma(16.0 + 219.0 * normalised * normalised);
    dest.samples.insert(dest.samples.end(), color.begin(), color.end());
  }
  const GammaEstimate estimate = estimateOf(source, dest);
  EXPECT_EQ(estimate.commonDiff, 2.0);
  EXPECT_NEAR(estimate.average, 2.0, 0.001);
}

TEST(FrameAnalysis, DropsPixelsThatGiveNoExponent) {
  struct Row {
    const char* name;
    std::uint8_t source, dest;
    bool kept;
  };
  const std::vector<Row> rows = {
      {"source at reference white", 235, 100, false},
      {"dest at reference white", 100, 235, false},
      {"both at reference white", 235, 235, false},
      {"clipped in both", 255, 255, false},
      {"255 and 250", 255, 250, true},
      {"255 and 254", 255, 254, true},
      {"254 and 255", 254, 255, true},
      {"source below black, dest bright", 15, 200, false},
      {"dest below black", 200, 15, false},
      {"source at black", 16, 100, false},
      {"dest at black", 100, 16, false},
      {"both at black", 16, 16, false},
      {"just above black", 17, 17, true},
      {"one above white, one below", 240, 100, false},
      {"one below white, one above", 100, 240, false},
      {"both above white", 240, 245, true},
  };
  for (const Row& row : rows) {
    const GammaEstimate estimate = estimateOf(greys({row.source}), greys({row.dest}));
    EXPECT_EQ(!std::isnan(estimate.average), row.kept) << row.name;
    if (row.kept) {
      EXPECT_EQ(estimate.average, exponentOfGreys(row.source, row.dest)) << row.name;
    }
  }
}

TEST(FrameAnalysis, ReturnsTheValueMetFirstOnATie) {
  const double darker = rounded(exponentOfGreys(100, 80)), lighter = rounded(exponentOfGreys(100, 120));
  EXPECT_EQ(estimateOf(greys({100, 100}), greys({80, 120})).commonDiff, darker);
  EXPECT_EQ(estimateOf(greys({100, 100}), greys({120, 80})).commonDiff, lighter);
  EXPECT_EQ(estimateOf(greys({100, 100, 100}), greys({120, 80, 80})).commonDiff, darker);
  // Column by column: of a square, the lower left comes before the upper right.
  const RgbFrame square = greyFrame(2, 2, {235, 100, 100, 235});
  EXPECT_EQ(estimateOf(square, greyFrame(2, 2, {90, 120, 80, 90})).commonDiff, darker);
}

TEST(FrameAnalysis, BreaksTiesBetweenCommonAndRareExponentsTheSameWay) {
  const double rare = rounded(exponentOfGreys(234, 40)), common = rounded(exponentOfGreys(100, 80));
  ASSERT_GT(rare, 100.0);
  EXPECT_EQ(estimateOf(greys({234, 100}), greys({40, 80})).commonDiff, rare);
  EXPECT_EQ(estimateOf(greys({100, 234}), greys({80, 40})).commonDiff, common);
  EXPECT_EQ(estimateOf(greys({100, 234, 234}), greys({80, 40, 40})).commonDiff, rare);
}

TEST(FrameAnalysis, RoundsToTwoDecimals) {
  const GammaEstimate estimate = estimateOf(greys({234}), greys({17}));
  EXPECT_EQ(estimate.commonDiff, std::floor(estimate.average * 100.0 + 0.5) / 100.0);
  // An exponent below half a hundredth is kept and counts as 0.
  const GammaEstimate tiny = estimateOf({2, 1, {17, 17, 17, 17, 17, 17}}, {2, 1, {235, 235, 234, 235, 235, 234}});
  EXPECT_GT(tiny.average, 0.0);
  EXPECT_EQ(tiny.commonDiff, 0.0);
}

TEST(FrameAnalysis, CountsInSinglePrecision) {
  // From 2^24 on, adding 1 to a float changes nothing.
  constexpr int side = 4100;
  const RgbFrame frame{side, side, std::vector<std::uint8_t>(std::size_t{3} * side * side, 100)};
  const RgbFrameBitmap bitmap(frame);
  const GammaEstimate estimate = check::gammaShiftForSourceBitmap(bitmap, bitmap);
  EXPECT_EQ(estimate.average, static_cast<double>(side) * side / 16777216.0);
  EXPECT_EQ(estimate.commonDiff, 1.0);
}

TEST(FrameAnalysis, ReadsALargerDestinationAtTheSourcesCoordinates) {
  const RgbFrame source = naturalFrame(13, 9, 3);
  const RgbFrame same = raisedFrame(source, 1.25, 4);
  constexpr std::ptrdiff_t row = std::ptrdiff_t{13} * 3, largerRow = std::ptrdiff_t{20} * 3, rows = 9;
  RgbFrame larger{20, 12, std::vector<std::uint8_t>(std::size_t{20} * 12 * 3, 200)};
  for (std::ptrdiff_t y = 0; y < rows; ++y)
    std::copy_n(same.samples.begin() + y * row, row, larger.samples.begin() + y * largerRow);
  EXPECT_EQ(estimateOf(source, larger).average, estimateOf(source, same).average);
}

TEST(FrameAnalysis, LogsAndSkipsAPixelThatThrows) {
  const RgbFrame source = naturalFrame(4, 3, 8), dest = raisedFrame(source, 1.5, 9);
  AskedBitmap damaged(source);
  damaged.throwAt(1, 2, QVPlatformException(QStringLiteral("100% broken %@")));
  damaged.throwAt(2, 0, QVPlatformException(QStringLiteral("broken too")));
  RgbFrame sourceWithout = source;  // a dark pixel is skipped in its own way
  for (const std::size_t pixel : {2U * 4U + 1U, 2U})
    for (std::size_t i = 0; i < 3; ++i) sourceWithout.samples[pixel * 3 + i] = 0;

  CapturedLog log;
  const GammaEstimate estimate = check::gammaShiftForSourceBitmap(damaged, AskedBitmap(dest));
  EXPECT_EQ(log.texts(), (std::vector<std::string>{"Exception: 100% broken %@", "Exception: broken too"}));
  const GammaEstimate expected = estimateOf(sourceWithout, dest);
  EXPECT_EQ(estimate.average, expected.average);
  EXPECT_EQ(estimate.commonDiff, expected.commonDiff);
}

TEST(FrameAnalysis, LogsADestinationPixelThatThrows) {
  AskedBitmap dest(greys({100, 100}));
  dest.throwAt(0, 0, QVPlatformException(QStringLiteral("gone")));
  CapturedLog log;
  const GammaEstimate estimate = check::gammaShiftForSourceBitmap(AskedBitmap(greys({120, 120})), dest);
  EXPECT_EQ(log.texts(), std::vector<std::string>{"Exception: gone"});
  EXPECT_EQ(estimate.average, exponentOfGreys(120, 100));
}

TEST(FrameAnalysis, CountsAPixelThatThrowsNeitherAsBlackNorAsNonBlack) {
  AskedBitmap mostlyBlack(greys(repeated(0, 85, 200, 16)));  // 85 of 101
  EXPECT_FALSE(check::isBlackFrame(mostlyBlack));
  mostlyBlack.throwAt(100, 0, QVPlatformException(QStringLiteral("bright")));
  CapturedLog log;
  EXPECT_TRUE(check::isBlackFrame(mostlyBlack));  // 85 of 100
  EXPECT_EQ(log.texts(), std::vector<std::string>{"Exception: bright"});

  AskedBitmap unreadable(greys({0}));
  unreadable.throwAt(0, 0, QVPlatformException(QStringLiteral("all gone")));
  EXPECT_FALSE(check::isBlackFrame(unreadable));
}

TEST(FrameAnalysis, SkipsWhatASmallerOrTruncatedDestinationLacks) {
  const RgbFrame source = naturalFrame(5, 4, 1);
  RgbFrame truncated = source;
  truncated.samples.resize(truncated.samples.size() - 4);  // two pixels, the last ones of the last two columns
  CapturedLog log;
  const GammaEstimate smaller = check::gammaShiftForSourceBitmap(
      RgbFrameBitmap(source), RgbFrameBitmap(greyFrame(5, 3, std::vector<std::uint8_t>(15, 90))));
  EXPECT_EQ(log.texts().size(), 5U);
  EXPECT_FALSE(std::isnan(smaller.average));
  EXPECT_EQ(check::gammaShiftForSourceBitmap(RgbFrameBitmap(source), RgbFrameBitmap(truncated)).commonDiff, 1.0);
  EXPECT_EQ(log.texts().size(), 7U);
  EXPECT_FALSE(check::isBlackFrame(RgbFrameBitmap(truncated)));
  EXPECT_EQ(log.texts().size(), 9U);
}

TEST(RgbFrameBitmap, GivesRedGreenAndBlueByColumnAndRowAndLeavesAlphaAlone) {
  const RgbFrameBitmap bitmap(RgbFrame{2, 2, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}});
  check::FrameBitmap::Samples samples{0, 0, 0, 77};
  bitmap.getPixel(samples, 1, 0);
  EXPECT_EQ(samples, (check::FrameBitmap::Samples{4, 5, 6, 77}));
  bitmap.getPixel(samples, 0, 1);
  EXPECT_EQ(samples, (check::FrameBitmap::Samples{7, 8, 9, 77}));
}

TEST(RgbFrameBitmap, NamesThePixelThatItDoesNotHave) {
  struct Place {
    int x, y;
    const char* reason;
  };
  const RgbFrameBitmap bitmap(greyFrame(2, 3, std::vector<std::uint8_t>(5, 100)));  // the last pixel is missing
  check::FrameBitmap::Samples samples{};
  EXPECT_NO_THROW(bitmap.getPixel(samples, 0, 2));
  for (const Place& place :
       {Place{2, 0, "no pixel at 2, 0"}, Place{-1, 0, "no pixel at -1, 0"}, Place{0, 3, "no pixel at 0, 3"},
        Place{0, -1, "no pixel at 0, -1"}, Place{1, 2, "no pixel at 1, 2"}}) {
    try {
      bitmap.getPixel(samples, place.x, place.y);
      ADD_FAILURE() << place.reason;
    } catch (const QVPlatformException& exception) {
      EXPECT_EQ(exception.reason().toStdString(), place.reason);
      EXPECT_EQ(exception.name().toStdString(), "NSRangeException");
    }
  }
}

TEST(FrameAnalysis, PassesOtherExceptionsOn) {
  AskedBitmap broken(greys({100, 100}));
  broken.throwAt(1, 0, std::runtime_error("not the platform's"));
  const AskedBitmap whole(greys({100, 100}));
  EXPECT_THROW(check::isBlackFrame(broken), std::runtime_error);
  EXPECT_THROW(check::gammaShiftForSourceBitmap(broken, whole), std::runtime_error);
  EXPECT_THROW(check::gammaShiftForSourceBitmap(whole, broken), std::runtime_error);
}

TEST(FrameAnalysis, AsksForTheSizeAtEveryStep) {
  /// Grows narrower and lower the more of its pixels are read.
  class Shrinking final : public check::FrameBitmap {
   public:
    int pixelsWide() const override { return 6 - reads_ / 3; }
    int pixelsHigh() const override { return 5 - reads_ / 4; }
    void getPixel(Samples& samples, int, int) const override {
      ++reads_;
      samples = {200, 200, 200, 0};
    }
    int reads() const { return reads_; }

   private:
    mutable int reads_ = 0;
  };
  const Shrinking black, source, literalSource;
  EXPECT_FALSE(check::isBlackFrame(black));
  const AskedBitmap dest(greyFrame(6, 5, std::vector<std::uint8_t>(30, 210)));
  check::gammaShiftForSourceBitmap(source, dest);
  literal::gammaShiftForSourceBitmap(literalSource, dest);
  EXPECT_EQ(source.reads(), literalSource.reads());
  EXPECT_EQ(black.reads(), literalSource.reads());
  EXPECT_LT(source.reads(), 30);
}

TEST(FrameAnalysis, IgnoresWhatABitmapPutsIntoTheFourthSample) {
  AskedBitmap withAlpha(greys({100, 60}));
  withAlpha.setAlpha(123456);
  EXPECT_EQ(check::gammaShiftForSourceBitmap(withAlpha, withAlpha).average, 1.0);
}

TEST(FrameAnalysis, TakesSamplesOfAnySize) {
  class Wild final : public check::FrameBitmap {
   public:
    int pixelsWide() const override { return 64; }
    int pixelsHigh() const override { return 64; }
    void getPixel(Samples& samples, int x, int y) const override {
      const auto spread = static_cast<unsigned int>(x * 64 + y);
      samples = {spread * 1048576U, std::numeric_limits<unsigned int>::max() - spread, 235U + spread % 3, 0};
    }
  };
  const Wild wild;
  const GammaEstimate estimate = check::gammaShiftForSourceBitmap(wild, wild);
  EXPECT_TRUE(std::isnan(estimate.average));  // all of it clipped white
  EXPECT_FALSE(check::isBlackFrame(wild));
}

TEST(FrameAnalysis, GivesTheSameBitsToChecksThatRunAtOnce) {
  constexpr std::uint32_t count = 8;
  std::vector<GammaEstimate> together(count);
  std::vector<std::thread> threads;
  const auto estimateFor = [](std::uint32_t seed) {
    const RgbFrame source = naturalFrame(97, 61, 1000 + seed / 2);  // two threads each on the same colours
    return check::gammaShiftForSourceBitmap(RgbFrameBitmap(source), RgbFrameBitmap(raisedFrame(source, 0.9, seed)));
  };
  for (std::uint32_t i = 0; i < count; ++i)
    threads.emplace_back([&together, &estimateFor, i] { together[i] = estimateFor(i); });
  for (std::thread& thread : threads) thread.join();
  for (std::uint32_t i = 0; i < count; ++i) {
    EXPECT_EQ(together[i].average, estimateFor(i).average);
    EXPECT_EQ(together[i].commonDiff, estimateFor(i).commonDiff);
  }
}
