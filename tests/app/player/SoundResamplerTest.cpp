#include <cmath>

#include <gtest/gtest.h>

#include "app/player/SoundResampler.h"

namespace player {
namespace {

/// Left rises by 1 a frame, right falls by 2, from any frame on.
class Ramp {
 public:
  void fill(std::span<float> stereo) {
    for (std::size_t i = 0; i < stereo.size(); i += 2, ++at) {
      stereo[i] = static_cast<float>(at);
      stereo[i + 1] = static_cast<float>(-2 * at);
    }
  }
  std::int64_t at = 0;
};

struct Rates {
  int from, to;
};
const Rates everyRates[] = {{44100, 48000}, {48000, 44100}, {48000, 48000}, {8000, 192000}, {192000, 8000}, {1, 3}};

TEST(SoundResampler, StaysOnALineWhateverTheLengths) {
  for (const Rates& rates : everyRates) {
    for (const std::int64_t start : {0, 12345, -1, -12345, -48000}) {
      Ramp ramp;
      SoundResampler resampler(rates.from, rates.to, [&](std::span<float> stereo) { ramp.fill(stereo); });
      ramp.at = resampler.restart(start);
      std::int64_t at = start;
      for (const std::size_t count : {1U, 2U, 1U, 997U, 3U, 4096U, 0U, 50U}) {
        std::vector<float> out(2 * count);
        resampler.read(out);
        for (std::size_t i = 0; i < count; ++i, ++at) {
          const double expected = static_cast<double>(at) * rates.from / rates.to;
          ASSERT_NEAR(out[2 * i], expected, 1e-5 * std::abs(expected) + 1e-4)
              << rates.from << " " << rates.to << " " << at;
          ASSERT_NEAR(out[2 * i + 1], -2 * expected, 2e-5 * std::abs(expected) + 1e-4);
        }
      }
    }
  }
}

TEST(SoundResampler, PullsNoMoreThanItNeeds) {
  for (const Rates& rates : everyRates) {
    Ramp ramp;
    SoundResampler resampler(rates.from, rates.to, [&](std::span<float> stereo) { ramp.fill(stereo); });
    std::vector<float> out(std::size_t{2} * 1000);
    for (int i = 1; i <= 50; ++i) {
      resampler.read(out);
      const double used = 1000.0 * i * rates.from / rates.to;
      EXPECT_LE(static_cast<double>(ramp.at), used + 2);
      EXPECT_GE(static_cast<double>(ramp.at), used - static_cast<double>(rates.from) / rates.to - 1);
    }
  }
}

}  // namespace
}  // namespace player
