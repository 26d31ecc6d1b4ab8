#include <algorithm>
#include <cmath>

#include <gtest/gtest.h>

#include "app/player/SoundClock.h"

namespace player {
namespace {

using namespace std::chrono_literals;

constexpr std::int64_t rate = 48000;
const SoundClock::Time begin = SoundClock::Time() + 1000s;

SoundClock::Time after(double seconds) {
  return begin + std::chrono::duration_cast<SoundClock::Time::duration>(std::chrono::duration<double>(seconds));
}

/// What a device counts that takes blocks of so many seconds, each as it begins to be heard.
std::int64_t counted(double seconds, double block) {
  return static_cast<std::int64_t>(std::ceil(seconds / block + 1e-9) * block * rate);
}

TEST(SoundClock, SeesThroughBlocks) {
  for (const double block : {0.005, 0.02, 0.08, 0.1}) {
    for (const double step : {0.003, 0.0167, 0.04}) {
      SoundClock clock(static_cast<int>(rate));
      for (double t = 0; t < 20; t += step) {
        const double heard = static_cast<double>(clock.heard(after(t), counted(t, block))) / rate;
        if (t < 1) continue;
        ASSERT_GE(heard, t - 0.001) << block << " " << step;
        ASSERT_LE(heard, t + std::min(step, block) + 0.001) << block << " " << step << " at " << t;
      }
    }
  }
}

TEST(SoundClock, NeverFallsOrGoesBeyondTheCount) {
  SoundClock clock(static_cast<int>(rate));
  std::int64_t before = 0;
  for (double t = 0; t < 5; t += 0.011) {
    const double played = t < 2 ? t : std::max(2.0, t - 0.7);  // it stalls for 0.7 s
    const std::int64_t count = counted(played, 0.05);
    const std::int64_t heard = clock.heard(after(t), count);
    ASSERT_GE(heard, before);
    ASSERT_LE(heard, count);
    before = heard;
  }
}

TEST(SoundClock, FollowsAStallAndCatchesUp) {
  SoundClock clock(static_cast<int>(rate));
  double t = 0;
  for (; t < 2; t += 0.01) clock.heard(after(t), static_cast<std::int64_t>((t + 0.001) * rate));
  for (; t < 3; t += 0.01) EXPECT_LE(clock.heard(after(t), 2 * rate), 2 * rate);
  for (; t < 5; t += 0.01) {
    const double heard = static_cast<double>(clock.heard(after(t), static_cast<std::int64_t>(t * rate))) / rate;
    ASSERT_NEAR(heard, t, t > 4.1 ? 0.001 : 1.1) << "a second after it caught up";
  }
}

TEST(SoundClock, IsStillBeforeAnythingIsHeardAndAfterALongSilence) {
  SoundClock clock(static_cast<int>(rate));
  EXPECT_EQ(clock.heard(after(0), 0), 0);
  EXPECT_EQ(clock.heard(after(1), 0), 0);
  EXPECT_EQ(clock.heard(after(2), 960), 960);
  EXPECT_EQ(clock.heard(after(60), 48000), 48000) << "nobody asked for a minute, in which the device stood for long";
}

}  // namespace
}  // namespace player
