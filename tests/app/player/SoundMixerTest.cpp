#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/player/SoundMixer.h"
#include "tests/app/player/SoundFixture.h"
#include "tests/support/AtomBuilder.h"

namespace player {
namespace {

using namespace test;
using movie::test::fixtureMovie;

constexpr double pi = std::numbers::pi;

std::vector<float> mixed(SoundMixer& mixer, std::int64_t first, std::int64_t count) {
  std::vector<float> frames(2 * static_cast<std::size_t>(count), 9.0F);
  mixer.read(first, frames);
  return frames;
}

std::shared_ptr<const movie::MovieFile> fileOf(const std::string& path) {
  return openedMovie(path)->file();
}

/// A movie of several inputs, each a track of its own, enabled or not.
std::string trackMovie(const std::vector<std::vector<std::string>>& inputs,
                       const std::vector<std::string>& dispositions) {
  std::vector<std::string> arguments;
  for (const auto& input : inputs) arguments.insert(arguments.end(), input.begin(), input.end());
  for (std::size_t i = 0; i < inputs.size(); ++i) {
    const std::string number = std::to_string(i);
    arguments.insert(arguments.end(), {"-map", number + ":a", "-disposition:a:" + number, dispositions[i]});
  }
  arguments.insert(arguments.end(), {"-c:a", "pcm_f32le"});
  return fixtureMovie("tracks.mov", arguments);
}

TEST(SoundMixer, AddsAllEnabledTracksAndClips) {
  const std::string path =
      trackMovie({tone("0.3|0.8", 48000, "1"), tone("0.25|0.7", 48000, "1"), tone("0.4|0.4", 48000, "1")},
                 {"default", "default", "0"});
  const auto file = fileOf(path);
  ASSERT_EQ(file->tracks().size(), 3U);
  ASSERT_TRUE(file->tracks()[1].enabled);
  ASSERT_FALSE(file->tracks()[2].enabled);
  SoundMixer mixer(file, 48000);
  const auto frames = mixed(mixer, 1000, 500);
  for (std::size_t i = 0; i < frames.size(); i += 2) {
    ASSERT_FLOAT_EQ(frames[i], 0.55F);
    ASSERT_EQ(frames[i + 1], 1.0F);
  }
  EXPECT_EQ(mixer.problem(), "");
}

TEST(SoundMixer, BringsTracksToOneRate) {
  const std::string path =
      trackMovie({tone("0.2|0.2", 48000, "2"), tone("0.5*sin(2*PI*200*t)|0.25*cos(2*PI*150*t)", 44100, "2")},
                 {"default", "default"});
  const auto file = fileOf(path);
  EXPECT_EQ(SoundMixer::naturalRate(*file), 48000);
  SoundMixer mixer(file, 48000);
  for (const std::int64_t first : {0, 700, 1700, 50001, 10000}) {
    const auto frames = mixed(mixer, first, 1000);
    for (std::size_t i = 0; i < 1000; ++i) {
      const double t = (static_cast<double>(first) + static_cast<double>(i)) / 48000;
      ASSERT_NEAR(frames[2 * i], 0.2 + 0.5 * std::sin(2 * pi * 200 * t), 2e-4) << first << " " << i;
      ASSERT_NEAR(frames[2 * i + 1], 0.2 + 0.25 * std::cos(2 * pi * 150 * t), 2e-4) << first << " " << i;
    }
  }
}

TEST(SoundMixer, IsSilentDuringAnEmptyEdit) {
  std::vector<std::string> arguments{"-f", "lavfi", "-i", "testsrc2=s=64x64:r=25:d=2", "-itsoffset", "0.5"};
  const auto sound = tone("0.5|0.5", 48000, "1");
  arguments.insert(arguments.end(), sound.begin(), sound.end());
  arguments.insert(arguments.end(), {"-c:v", "prores_ks", "-c:a", "pcm_s16le", "-map", "0:v", "-map", "1:a"});
  const auto file = fileOf(fixtureMovie("late-sound.mov", arguments));
  SoundMixer mixer(file, 48000);
  const auto frames = mixed(mixer, 0, 96000);
  for (std::size_t i = 0; i < 96000; ++i) {
    ASSERT_EQ(frames[2 * i], i >= 24000 && i < 72000 ? 0.5F : 0.0F) << i;
  }
}

TEST(SoundMixer, ReadsBackwardsAndOutsideOfTheMovie) {
  SoundMixer mixer(fileOf(soundMovie()), 48000);
  for (const std::int64_t first : {95000, 40000, -300, 30000, 1000000, 0}) {
    const auto frames = mixed(mixer, first, 2000);
    for (std::int64_t i = 0; i < 2000; ++i) {
      const auto place = 2 * static_cast<std::size_t>(i);
      ASSERT_NEAR(frames[place], expectedSound(first + i, true), 1e-6) << first << " " << i;
      ASSERT_NEAR(frames[place + 1], expectedSound(first + i, false), 1e-6) << first << " " << i;
    }
  }
}

TEST(SoundMixer, LeavesOutATrackThatNothingDecodes) {
  using namespace movie::test;
  TrackSpec unknown;
  unknown.mediaType = "soun";
  unknown.entries = {AtomBuilder("QQQQ").zeros(8).u16(0).zeros(6).u16(2).u16(16).zeros(4).u32(48000U << 16).build()};
  MovieSpec spec;
  spec.tracks = {unknown};
  const TemporaryFile file(joined({typedMediaData("qt  ", 100), spec.build()}));
  SoundMixer mixer(fileOf(file.path()), 48000);
  EXPECT_THAT(mixer.problem(), testing::HasSubstr("no decoder for the codec 'QQQQ'"));
  EXPECT_THAT(mixed(mixer, 0, 100), testing::Each(0.0F));
}

TEST(SoundMixer, TakesTheRateOfTheFirstEnabledTrack) {
  using namespace movie::test;
  const auto rateOf = [](std::uint32_t timeScale, std::uint32_t flags, const std::string& type) {
    TrackSpec track;
    track.mediaType = type;
    track.flags = flags;
    track.timeScale = timeScale;
    MovieSpec spec;
    spec.tracks = {track};
    const TemporaryFile file(joined({typedMediaData("qt  ", 100), spec.build()}));
    return SoundMixer::naturalRate(*fileOf(file.path()));
  };
  EXPECT_EQ(rateOf(44100, 1, "soun"), 44100);
  EXPECT_EQ(rateOf(192000, 1, "soun"), 192000);
  EXPECT_EQ(rateOf(600, 1, "soun"), 48000);
  EXPECT_EQ(rateOf(90000, 1, "soun"), 48000);
  EXPECT_EQ(rateOf(44100, 0, "soun"), 0);
  EXPECT_EQ(rateOf(44100, 1, "vide"), 0);
}

}  // namespace
}  // namespace player
