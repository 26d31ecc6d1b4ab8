#include <atomic>
#include <chrono>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/player/SoundPlayer.h"
#include "tests/app/player/SoundFixture.h"
#include "tests/support/AtomBuilder.h"
#include "tests/support/TemporaryFolder.h"

namespace player {
namespace {

using namespace test;
using testing::HasSubstr;
using namespace std::chrono_literals;

constexpr std::int64_t samplesPerSecond = 48000;

movie::MovieTime at(double seconds) {
  return {.value = std::llround(seconds * 600), .scale = 600};
}

/// A device that the test turns by hand, and a record of what it was told.
struct Device {
  bool there = true;
  int opened = 0, stopped = 0, rate = 0;
  double volume = -1;
  SoundOutput::Pull pull;              ///< null while it is not open
  std::optional<std::int64_t> played;  ///< what it says
};

class FakeOutput final : public SoundOutput {
 public:
  explicit FakeOutput(Device& device) : device_(device) {}
  bool open(int newRate, Pull pull) override {
    ++device_.opened;
    if (!device_.there) return false;
    device_.rate = newRate;
    device_.pull = std::move(pull);
    device_.played = 0;
    return true;
  }
  void stop() override {
    ++device_.stopped;
    device_.pull = nullptr;
    device_.played.reset();
  }
  std::optional<std::int64_t> played() override { return device_.played; }
  void setVolume(double volume) override { device_.volume = volume; }

 private:
  Device& device_;
};

class SoundPlayerTest : public testing::Test {
 protected:
  void load(const std::string& path) { player.setMovie(openedMovie(path)); }

  /// Pulls frames of the movie from `first` on, at the pace of a device that is in a hurry. Each has to be the movie's
  /// or, as long as the decoder is behind, silent. How many were not silent.
  std::int64_t pull(std::int64_t first, std::int64_t count) {
    constexpr std::int64_t step = 480;
    std::int64_t heard = 0;
    for (std::int64_t end = first + count; first < end; first += step) {
      std::this_thread::sleep_for(3ms);
      std::vector<float> frames(2 * step, 9.0F);
      device.pull(frames);
      for (std::int64_t i = 0; i < step; ++i) {
        const auto place = 2 * static_cast<std::size_t>(i);
        if (frames[place] == 0 && frames[place + 1] == 0) continue;
        ++heard;
        EXPECT_NEAR(frames[place], expectedSound(first + i, true), 1e-6) << first + i;
        EXPECT_NEAR(frames[place + 1], expectedSound(first + i, false), 1e-6) << first + i;
      }
    }
    return heard;
  }

  /// Lets the decoder come so far that nothing is missing from the next pulled frame on.
  std::int64_t pullUntilHeard(std::int64_t first) {
    for (int i = 0; i < 1000; ++i, first += 480) {
      if (pull(first, 480) == 480) return first + 480;
    }
    ADD_FAILURE() << "no sound came";
    return first;
  }

  Device device;
  SoundPlayer player{std::make_unique<FakeOutput>(device)};
};

TEST_F(SoundPlayerTest, PlaysFromTheTimeItIsGiven) {
  load(soundMovie());
  EXPECT_EQ(device.opened, 0);
  player.start(at(0.5));
  EXPECT_EQ(device.rate, samplesPerSecond);
  const std::int64_t next = pullUntilHeard(samplesPerSecond / 2);
  EXPECT_GT(pull(next, samplesPerSecond / 4), samplesPerSecond / 8);
  EXPECT_EQ(player.problem(), "");
}

TEST_F(SoundPlayerTest, SeeksWithoutOpeningAgainAndCountsWhatTheDeviceHolds) {
  load(soundMovie());
  player.start(at(0));
  const std::int64_t pulled = pullUntilHeard(0);
  constexpr std::int64_t held = 200;
  device.played = pulled - held;
  player.start(at(1.5));
  EXPECT_EQ(device.opened, 1);
  EXPECT_NEAR(player.ahead(at(1.5)).value_or(9), 0, 1e-9);
  pullUntilHeard(samplesPerSecond * 3 / 2 + held);

  device.played = pulled;
  player.start(at(0.25));
  EXPECT_NEAR(player.ahead(at(0.25)).value_or(9), 0, 1e-9);
}

TEST_F(SoundPlayerTest, TellsHowFarItIsFromAMovieTime) {
  load(soundMovie());
  EXPECT_FALSE(player.ahead(at(0)).has_value());
  player.start(at(1));
  EXPECT_FALSE(player.ahead(at(1)).has_value()) << "nothing was heard yet";
  pull(samplesPerSecond, 9600);
  device.played = 4800;
  EXPECT_NEAR(player.ahead(at(1.1)).value_or(9), 0, 1e-9);
  EXPECT_NEAR(player.ahead(at(1.0)).value_or(9), 0.1, 1e-9);
  EXPECT_NEAR(player.ahead(at(1.2)).value_or(9), -0.1, 1e-9);
  EXPECT_LT(std::abs(player.ahead(at(1.05)).value_or(9)), SoundPlayer::toleratedDrift);
  player.start(at(1.2));
  EXPECT_NEAR(player.ahead(at(1.2)).value_or(9), 0, 1e-9);
  player.stop();
  EXPECT_FALSE(player.ahead(at(1.2)).has_value());
}

TEST_F(SoundPlayerTest, StaysInStepAfterTheDecoderWasLate) {
  load(soundMovie());
  player.start(at(0));
  std::vector<float> frames(std::size_t{2} * 20000);
  device.pull(frames);  // far more than is ever held
  pullUntilHeard(20000);
}

TEST_F(SoundPlayerTest, StopsTheDevice) {
  load(soundMovie());
  player.start(at(0));
  pullUntilHeard(0);
  const int before = device.stopped;
  player.stop();
  EXPECT_EQ(device.stopped, before + 1);
  player.start(at(1));
  EXPECT_EQ(device.opened, 2);
  pullUntilHeard(samplesPerSecond);
}

TEST_F(SoundPlayerTest, IsSilentAfterTheEnd) {
  load(soundMovie());
  player.start(at(0.5));  // far from the end, which a busy machine would pull past before the decoder is up
  const std::int64_t next = pullUntilHeard(samplesPerSecond / 2);
  pull(next, 2 * samplesPerSecond - next);
  EXPECT_EQ(pull(2 * samplesPerSecond, samplesPerSecond / 2), 0);
  EXPECT_EQ(player.problem(), "");
}

TEST_F(SoundPlayerTest, OpensNoDeviceWithoutSound) {
  const auto check = [&](const std::string& what) {
    player.start(at(0));
    EXPECT_EQ(device.opened, 0) << what;
    EXPECT_FALSE(player.ahead(at(0)).has_value()) << what;
    EXPECT_EQ(player.problem(), "") << what;
    player.stop();
  };
  check("before any movie");
  player.setMovie(nullptr);
  check("no movie");
  player.setMovie(movie::Movie::movie());
  check("an empty movie");
  load(movie::test::fixtureMovie("no-sound.mov",
                                 {"-f", "lavfi", "-i", "testsrc2=s=64x64:r=25:d=1", "-c:v", "prores_ks"}));
  check("a movie of pictures only");
}

TEST_F(SoundPlayerTest, HandsTheVolumeOn) {
  const std::vector<std::pair<double, double>> rows{{0.5, 0.5}, {0, 0}, {1, 1}, {-3, 0}, {7, 1}, {NAN, 0}};
  for (const auto& [given, expected] : rows) {
    player.setVolume(given);
    EXPECT_EQ(device.volume, expected);
  }
}

TEST_F(SoundPlayerTest, PlaysOnInSilenceWithoutADevice) {
  device.there = false;
  load(soundMovie());
  player.start(at(0));
  EXPECT_EQ(player.problem(), "there is no device to play sound on");
  EXPECT_FALSE(player.ahead(at(0.5)).has_value());
  device.there = true;
  player.start(at(1));
  EXPECT_EQ(player.problem(), "");
  pullUntilHeard(samplesPerSecond);
}

TEST_F(SoundPlayerTest, OpensAgainAfterTheDeviceWentAway) {
  load(soundMovie());
  player.start(at(0));
  pullUntilHeard(0);
  device.played.reset();
  EXPECT_FALSE(player.ahead(at(0.5)).has_value());
  player.start(at(0.5));
  EXPECT_EQ(device.opened, 2);
  pullUntilHeard(samplesPerSecond / 2);
}

TEST_F(SoundPlayerTest, ChangesTheMovieWhilePlaying) {
  load(soundMovie());
  player.start(at(0));
  pullUntilHeard(0);
  load(soundMovie());
  EXPECT_FALSE(device.pull) << "another movie begins stopped";
  player.start(at(0.25));
  pullUntilHeard(samplesPerSecond / 4);
  player.setMovie(nullptr);
  EXPECT_FALSE(device.pull);
}

TEST_F(SoundPlayerTest, TellsWhatCannotBeRead) {
  const std::string copy =
      movie::test::fixtureMovie("cut-sound.mov", {"-i", soundMovie(), "-c", "copy", "-movflags", "faststart"});
  movie::Bytes bytes = movie::test::contentOf(copy);
  bytes.resize(bytes.size() / 2);
  const movie::test::TemporaryFile cut(bytes);
  load(cut.path());
  player.start(at(0));
  pullUntilHeard(0);
  player.start(at(1.5));
  for (int i = 0; i < 1000 && player.problem().empty(); ++i)
    pull(samplesPerSecond * 3 / 2 + std::int64_t{480} * i, 480);
  EXPECT_THAT(player.problem(), HasSubstr("past the end of the file"));
}

// The device works on a thread of its own while the owner seeks, asks and at last goes away.
TEST_F(SoundPlayerTest, StandsADeviceOnAnotherThread) {
  load(soundMovie());
  for (int round = 0; round < 20; ++round) {
    player.start(at(0.05 * round));
    std::atomic<bool> ending = false;
    std::thread puller([pull = device.pull, &ending] {
      std::vector<float> frames(std::size_t{2} * 480);
      while (!ending) {
        pull(frames);
        std::this_thread::sleep_for(200us);
      }
    });
    for (int i = 0; i < 10; ++i) {
      device.played = i;
      player.ahead(at(0.5));
      player.start(at(0.1 * i));
      player.setVolume(0.1 * i);
      EXPECT_EQ(player.problem(), "");
      std::this_thread::sleep_for(500us);
    }
    ending = true;
    puller.join();
    if (round % 2 == 0) player.stop();
    if (round % 5 == 0) load(soundMovie());
  }
}

}  // namespace
}  // namespace player
