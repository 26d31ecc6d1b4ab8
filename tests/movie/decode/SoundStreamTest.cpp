#include <algorithm>
#include <cmath>
#include <cstring>

#include <gtest/gtest.h>

#include "movie/EditList.h"
#include "tests/movie/decode/SoundFixture.h"
#include "tests/support/MovieFixture.h"
#include "tests/support/TemporaryFolder.h"

namespace movie {
namespace {

using namespace movie::test;

/// The whole sound, read on in pieces of odd lengths.
std::vector<float> readAll(SoundStream& stream) {
  std::vector<float> all;
  std::int64_t at = 0;
  for (std::int64_t step = 1; at < stream.frameCount(); step = (step * 7) % 2203) {
    const std::int64_t count = std::min(step, stream.frameCount() - at);
    const auto frames = readFrames(stream, at, count);
    all.insert(all.end(), frames.begin(), frames.end());
    at += count;
  }
  return all;
}

/// What ffmpeg decodes of the same file, `channels` floats a frame, from the beginning of the movie.
std::vector<float> judged(const std::string& movie) {
  const std::string raw = fixtureMovie("sound-judge.f32", {"-i", movie, "-map", "0:a:0", "-f", "f32le"});
  const std::string bytes = textOf(raw);
  std::vector<float> samples(bytes.size() / sizeof(float));
  std::memcpy(samples.data(), bytes.data(), samples.size() * sizeof(float));
  return samples;
}

/// Half-second sweeps that differ from channel to channel and never stand still.
std::string sweeps(int channels, int rate, double seconds) {
  std::string expression;
  for (int i = 0; i < channels; ++i) {
    if (i > 0) expression += "|";
    expression +=
        "0.45*sin(2*PI*(" + std::to_string(180 + 97 * i) + "+331*t)*t)+0.2*sin(" + std::to_string(4000 + i) + "*t)";
  }
  return "aevalsrc=" + expression + ":s=" + std::to_string(rate) + ":d=" + std::to_string(seconds);
}

struct Codec {
  std::string name;  ///< of the encoder, and a file extension
  std::string extension = "mov";
  int channels = 2, rate = 48000;
  double tolerance = 0;  ///< on reading from the beginning
  double afterSeek = 0;  ///< on reading from anywhere
  std::vector<std::string> more = {};
};

std::ostream& operator<<(std::ostream& out, const Codec& codec) {
  return out << codec.name << "_" << codec.extension << "_" << codec.channels << "_" << codec.rate;
}

std::string movieOf(const Codec& codec) {
  std::vector<std::string> arguments{"-f", "lavfi", "-i", sweeps(codec.channels, codec.rate, 1.7), "-c:a", codec.name};
  arguments.insert(arguments.end(), codec.more.begin(), codec.more.end());
  return fixtureMovie("sound-" + codec.name + "." + codec.extension, arguments);
}

double largestDifference(const std::vector<float>& frames, std::size_t frame, const std::vector<float>& expected,
                         std::size_t expectedFrame, std::size_t count, int channels) {
  double largest = 0;
  for (std::size_t i = 0; i < count; ++i) {
    for (std::size_t side = 0; side < 2; ++side) {
      const std::size_t channel = channels == 1 ? 0 : side;
      const float want = expected[(expectedFrame + i) * static_cast<std::size_t>(channels) + channel];
      largest = std::max(largest, std::abs(static_cast<double>(frames[2 * (frame + i) + side]) - want));
    }
  }
  return largest;
}

class SoundCodecs : public testing::TestWithParam<Codec> {
 protected:
  SoundCodecs() : path(movieOf(GetParam())), file(opened(path)), stream(streamOf(path)), expected(judged(path)) {
    const TrackInfo& track = file->tracks()[soundTrackOf(*file)];
    start = mediaStartTime(track) * stream->rate() / track.mediaTimeScale;
    frames = static_cast<std::int64_t>(expected.size()) / GetParam().channels;
  }

  std::string path;
  std::shared_ptr<const MovieFile> file;
  std::unique_ptr<SoundStream> stream;
  std::vector<float> expected;
  std::int64_t start = 0, frames = 0;  ///< where the edit list begins, and how many frames the judge has from there on
};

TEST_P(SoundCodecs, GivesWhatTheJudgeDecodes) {
  const Codec& codec = GetParam();
  EXPECT_EQ(stream->rate(), codec.rate);
  const auto all = readAll(*stream);
  ASSERT_GE(frames, codec.rate * 17 / 10);
  const std::int64_t count = std::min(frames, stream->frameCount() - start);
  ASSERT_GE(count, codec.rate * 17 / 10);
  EXPECT_LE(largestDifference(all, static_cast<std::size_t>(start), expected, 0, static_cast<std::size_t>(count),
                              codec.channels),
            codec.tolerance);
}

TEST_P(SoundCodecs, GivesTheSameFromAnyTimeOn) {
  const Codec& codec = GetParam();
  for (const std::int64_t at : {20000, 3, 34001, 1023, 1024, 9999, 0, 30000, 16384}) {
    constexpr std::int64_t count = 3000;
    const auto read = readFrames(*stream, start + at, count);
    EXPECT_LE(largestDifference(read, 0, expected, static_cast<std::size_t>(at), count, codec.channels),
              codec.afterSeek)
        << "from frame " << at;
  }
}

TEST_P(SoundCodecs, IsSilentOutsideOfTheMedia) {
  const auto before = readFrames(*stream, -500, 400);
  EXPECT_TRUE(std::all_of(before.begin(), before.end(), [](float value) { return value == 0.0F; }));
  const auto after = readFrames(*stream, stream->frameCount(), 400);
  EXPECT_TRUE(std::all_of(after.begin(), after.end(), [](float value) { return value == 0.0F; }));
  const auto across = readFrames(*stream, stream->frameCount() - 3, 10);
  EXPECT_TRUE(std::all_of(across.begin() + 6, across.end(), [](float value) { return value == 0.0F; }));
}

constexpr double compressed = 1e-4;
// 'ima4' repeats the upper bits of a channel's level only, so that a start in the middle may be off by the lower ones.
constexpr double adaptive = 0.005;
// Some streams have the decoder fill bands with noise, which is another one after a start in the middle.
constexpr double noise = 0.01;

INSTANTIATE_TEST_SUITE_P(
    EveryCodec, SoundCodecs,
    testing::Values(Codec{"pcm_s16le"}, Codec{"pcm_s16be"}, Codec{"pcm_s24le"}, Codec{"pcm_s24be"}, Codec{"pcm_s32le"},
                    Codec{"pcm_s32be"}, Codec{"pcm_f32le"}, Codec{"pcm_f32be"}, Codec{"pcm_f64le"}, Codec{"pcm_f64be"},
                    Codec{"pcm_u8"}, Codec{"pcm_s8"}, Codec{"pcm_mulaw"}, Codec{"pcm_alaw"},
                    Codec{.name = "pcm_s16le", .channels = 1, .rate = 44100}, Codec{.name = "pcm_s24le", .rate = 96000},
                    Codec{.name = "pcm_s16be", .rate = 96000}, Codec{.name = "pcm_f32le", .rate = 96000},
                    Codec{.name = "pcm_s24le", .channels = 1, .rate = 192000}, Codec{.name = "alac"},
                    Codec{.name = "alac", .extension = "m4a"},
                    Codec{.name = "adpcm_ima_qt", .tolerance = 0, .afterSeek = adaptive},
                    Codec{.name = "adpcm_ima_qt", .channels = 1, .rate = 22050, .tolerance = 0, .afterSeek = adaptive},
                    Codec{.name = "aac", .tolerance = compressed, .afterSeek = compressed, .more = {"-aac_pns", "0"}},
                    Codec{.name = "aac", .extension = "mp4", .tolerance = compressed, .afterSeek = noise},
                    Codec{.name = "aac",
                          .extension = "mp4",
                          .channels = 1,
                          .rate = 44100,
                          .tolerance = compressed,
                          .afterSeek = compressed,
                          .more = {"-aac_pns", "0"}},
                    Codec{
                        .name = "aac",
                        .extension = "mp4",
                        .tolerance = compressed,
                        .afterSeek = compressed,
                        .more = {"-aac_pns", "0", "-movflags", "frag_keyframe+empty_moov", "-frag_duration", "200000"}},
                    Codec{.name = "ac3", .tolerance = compressed, .afterSeek = noise},
                    Codec{.name = "eac3", .extension = "mp4", .tolerance = compressed, .afterSeek = noise},
                    Codec{.name = "libmp3lame", .tolerance = compressed, .afterSeek = compressed},
                    Codec{.name = "libmp3lame", .extension = "mp4", .tolerance = compressed, .afterSeek = compressed}),
    [](const auto& row) {
      std::ostringstream name;
      name << row.index << "_" << row.param;
      return name.str();
    });

}  // namespace
}  // namespace movie
