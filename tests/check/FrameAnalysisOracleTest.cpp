// The form that ships against the literal one, byte for byte.

#include <algorithm>
#include <array>
#include <cstring>
#include <random>

#include <gtest/gtest.h>

#include "SharedFiles/foundation/QVPlatformException.h"
#include "check/FrameAnalysis.h"
#include "tests/check/AskedBitmap.h"
#include "tests/check/CapturedLog.h"
#include "tests/check/LiteralFrameAnalysis.h"
#include "tests/check/NaturalFrames.h"

namespace {

using check::FrameBitmap;
using check::GammaEstimate;
using check::RgbFrameBitmap;
using check::test::AskedBitmap;
using movie::RgbFrame;

std::array<unsigned char, 2 * sizeof(double)> bytesOf(const GammaEstimate& estimate) {
  std::array<unsigned char, 2 * sizeof(double)> bytes{};
  std::memcpy(bytes.data(), &estimate.average, sizeof(double));
  std::memcpy(bytes.data() + sizeof(double), &estimate.commonDiff, sizeof(double));
  return bytes;
}

enum class Content {
  Natural,
  Noise,
  NearBlack,
  NearClip,
  FewGreys,   // many ties
  NearWhite,  // exponents in the thousands
  AllBlack,
  Identical,
  Count
};

struct FramePair {
  RgbFrame source, dest;
};

class RandomPairs {
 public:
  explicit RandomPairs(std::uint32_t seed) : random_(seed) {}

  int upTo(int highest) { return static_cast<int>(random_() % static_cast<std::uint32_t>(highest + 1)); }

  FramePair next() {
    const int width = upTo(33), height = upTo(25);
    switch (static_cast<Content>(upTo(static_cast<int>(Content::Count) - 1))) {
      case Content::Natural:
        return natural(width, height);
      case Content::Noise:
        return {noise(width, height, 0, 255), noise(width, height, 0, 255)};
      case Content::NearBlack:
        return {noise(width, height, 0, 40), noise(width, height, 10, 40)};
      case Content::NearClip:
        return {noise(width, height, 250, 255), noise(width, height, 250, 255)};
      case Content::FewGreys:
        return {fewGreys(width, height), fewGreys(width, height)};
      case Content::NearWhite:
        return {noise(width, height, 233, 236), noise(width, height, 16, 20)};
      case Content::AllBlack:
        return {noise(width, height, 0, 0), noise(width, height, 0, 255)};
      default:
        const RgbFrame frame = noise(width, height, 0, 255);
        return {frame, frame};
    }
  }

  /// The frame with columns and rows added or taken away: as large as, larger or smaller than the other one.
  RgbFrame resized(const RgbFrame& frame) {
    RgbFrame changed{std::max(0, frame.width + upTo(3) - 1), std::max(0, frame.height + upTo(3) - 1), {}};
    for (int y = 0; y < changed.height; ++y) {
      for (int x = 0; x < changed.width; ++x) {
        const bool inside = x < frame.width && y < frame.height;
        const auto pixel =
            static_cast<std::size_t>(y) * static_cast<std::size_t>(frame.width) + static_cast<std::size_t>(x);
        for (std::size_t i = 0; i < 3; ++i) changed.samples.push_back(inside ? frame.samples[pixel * 3 + i] : 77);
      }
    }
    return changed;
  }

  AskedBitmap damaged(const RgbFrame& frame) {
    AskedBitmap bitmap(frame);
    for (int i = upTo(6); i > 0; --i)
      bitmap.throwAt(upTo(33), upTo(25), QVPlatformException(QStringLiteral("no such pixel")));
    return bitmap;
  }

 private:
  FramePair natural(int width, int height) {
    constexpr std::array<double, 8> exponents = {0.5, 0.8, 0.9, 1.0, 1.1, 1.25, 1.5, 2.0};
    const RgbFrame source = naturalFrame(width, height, static_cast<std::uint32_t>(random_()));
    return {source,
            raisedFrame(source, exponents[static_cast<std::size_t>(upTo(7))], static_cast<std::uint32_t>(random_()))};
  }

  RgbFrame noise(int width, int height, int lowest, int highest) {
    RgbFrame frame{width, height, std::vector<std::uint8_t>(static_cast<std::size_t>(width * height * 3))};
    for (auto& sample : frame.samples) sample = static_cast<std::uint8_t>(lowest + upTo(highest - lowest));
    return frame;
  }

  RgbFrame fewGreys(int width, int height) {
    constexpr std::array<std::uint8_t, 10> greys = {15, 16, 32, 33, 80, 120, 200, 235, 254, 255};
    std::vector<std::uint8_t> values(static_cast<std::size_t>(width * height));
    for (auto& value : values) value = greys[static_cast<std::size_t>(upTo(9))];
    return check::test::greyFrame(width, height, values);
  }

  std::mt19937 random_;
};

void expectAgreement(const FrameBitmap& source, const FrameBitmap& dest, int pair) {
  ASSERT_EQ(bytesOf(check::gammaShiftForSourceBitmap(source, dest)),
            bytesOf(literal::gammaShiftForSourceBitmap(source, dest)))
      << "pair " << pair;
  ASSERT_EQ(check::isBlackFrame(source), literal::isBlackFrame(source)) << "pair " << pair;
  ASSERT_EQ(check::isBlackFrame(dest), literal::isBlackFrame(dest)) << "pair " << pair;
}

}  // namespace

TEST(FrameAnalysisOracle, LumaDependsOnTheWeightOfAColourOnly) {
  int differences = 0;
  for (unsigned int red = 0; red < 256; ++red) {
    for (unsigned int green = 0; green < 256; ++green) {
      for (unsigned int blue = 0; blue < 256; ++blue) {
        const unsigned int weight = 299 * red + 587 * green + 114 * blue;
        if (literal::luma(red, green, blue) != static_cast<float>(weight) / 1000.0F) ++differences;
      }
    }
  }
  EXPECT_EQ(differences, 0) << "of 2^24 colours";
}

TEST(FrameAnalysisOracle, WeightsMeetTheThresholdsWhereLumasDo) {
  for (unsigned int weight = 0; weight <= 255000; ++weight) {
    const float luma = static_cast<float>(weight) / 1000.0F;
    ASSERT_EQ(luma < 16.0F, weight < 16000) << weight;
    ASSERT_EQ(luma <= 32.0F, weight <= 32000) << weight;
    ASSERT_EQ(luma > 254.0F, weight > 254000) << weight;
    ASSERT_EQ(luma == 235.0F, weight == 235000) << weight;
  }
}

TEST(FrameAnalysisOracle, AgreesOnFramesInMemory) {
  RandomPairs pairs(20240229);
  for (int i = 0; i < 2500; ++i) {
    const FramePair pair = pairs.next();
    expectAgreement(RgbFrameBitmap(pair.source), RgbFrameBitmap(pair.dest), i);
    if (HasFatalFailure()) return;
  }
}

TEST(FrameAnalysisOracle, AgreesOnFramesOfDifferentSizes) {
  RandomPairs pairs(7);
  for (int i = 0; i < 500; ++i) {
    const FramePair pair = pairs.next();
    expectAgreement(RgbFrameBitmap(pair.source), RgbFrameBitmap(pairs.resized(pair.dest)), i);
    if (HasFatalFailure()) return;
  }
}

TEST(FrameAnalysisOracle, AgreesOnBitmapsWithPixelsThatThrow) {
  RandomPairs pairs(31);
  for (int i = 0; i < 1000; ++i) {
    const FramePair pair = pairs.next();
    expectAgreement(pairs.damaged(pair.source), pairs.damaged(pair.dest), i);
    if (HasFatalFailure()) return;
  }
}

TEST(FrameAnalysisOracle, AgreesOnAWholeNaturalFrame) {
  for (const double exponent : {0.5, 0.8, 0.9, 1.0, 1.1, 1.25, 1.5, 2.0}) {
    const RgbFrame source = naturalFrame(320, 240, 11);
    const RgbFrameBitmap dest(raisedFrame(source, exponent, 12));
    expectAgreement(RgbFrameBitmap(source), dest, 0);
    EXPECT_NEAR(check::gammaShiftForSourceBitmap(RgbFrameBitmap(source), dest).commonDiff, exponent, 0.03);
  }
}
