#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "movie/decode/DecoderModule.h"
#include "tests/movie/decode/DecodedMovie.h"
#include "tests/support/AtomBuilder.h"
#include "tests/support/MovieFixture.h"
#include "tests/support/TemporaryFolder.h"

namespace movie::test {
namespace {

std::shared_ptr<const MovieFile> opened(const std::string& path) {
  auto file = MovieFile::open(path);
  if (!file) throw std::runtime_error(file.error().message());
  return *file;
}

/// A movie of one codec, and what its samples look like.
struct Clip {
  std::string path;
  std::shared_ptr<const MovieFile> file;

  explicit Clip(std::string moviePath) : path(std::move(moviePath)), file(opened(path)) {}
  const TrackInfo& track() const { return file->tracks().at(0); }
  std::uint64_t sampleCount() const { return track().sampleCount; }

  std::uint32_t checksumOf(std::uint64_t sample) const { return checksum(*file, sample); }

  static PresentedSample presented(const MovieFile& movie, std::uint64_t sample) {
    const SampleTable& table = movie.sampleTable(0);
    return {sample, table.decodeTimeOf(sample), table.presentationTimeOf(sample), 1};
  }
  static std::uint32_t checksum(const MovieFile& movie, std::uint64_t sample) {
    auto decoder = (*decoderBackend())->makeDecoder(opened(movie.path()), 0);
    if (!decoder) throw std::runtime_error(decoder.error().message());
    const auto picture = (*decoder)->picture({presented(movie, sample), {}, 0, 0});
    if (!picture) throw std::runtime_error(picture.error().message());
    return firstPlaneChecksum(*picture);
  }
};

Clip clipOf(const std::string& name, const std::string& picture, std::vector<std::string> encoder) {
  encoder.insert(encoder.begin(), {"-f", "lavfi", "-i", "testsrc2=duration=0.4:rate=25:" + picture});
  return Clip(fixtureMovie(name, encoder));
}

/// Clips cut together, the samples of one after those of the other, each under its own description.
class CutMovie {
 public:
  /// One row of stsc a sample where the descriptions are to alternate, else one a clip.
  explicit CutMovie(const std::vector<const Clip*>& clips) {
    Bytes samples;
    TrackSpec track;
    track.entries.clear();
    track.durations.clear();
    track.sizes.clear();
    track.chunks.clear();
    track.chunkOffsets.clear();
    std::vector<std::uint32_t> sync;
    std::int64_t start = 0;
    for (const Clip* clip : clips) {
      track.entries.push_back(clip->track().sampleDescriptions.at(0));
      append(*clip, track, sync, samples, start);
    }
    track.syncSamples = sync;
    MovieSpec movie;
    movie.tracks = {track};
    const Bytes media = AtomBuilder("mdat").bytes(samples).build();
    file_ = std::make_unique<TemporaryFile>(joined({fileType("qt  "), media, movie.build()}));
  }

  const std::string& path() const { return file_->path(); }

 private:
  static constexpr std::uint64_t mediaAt = 28;

  static void append(const Clip& clip, TrackSpec& track, std::vector<std::uint32_t>& sync, Bytes& samples,
                     std::int64_t& start) {
    const SampleTable& table = clip.file->sampleTable(0);
    const std::int64_t tick = table.duration() / static_cast<std::int64_t>(table.sampleCount());
    const auto description = static_cast<std::uint32_t>(track.entries.size());
    for (std::uint64_t i = 0; i < table.sampleCount(); ++i) {
      const auto number = static_cast<std::uint32_t>(track.sizes.size() + 1);
      const auto bytes = clip.file->readSample(0, i, 1 << 24);
      if (!bytes) throw std::runtime_error(bytes.error().message());
      if (table.syncSampleAtOrBefore(i) == i) sync.push_back(number);
      track.chunks.push_back({number, 1, description});
      track.chunkOffsets.push_back(mediaAt + samples.size());
      track.sizes.push_back(static_cast<std::uint32_t>(bytes->size()));
      track.durations.emplace_back(1, 1);
      track.offsets.emplace_back(
          1, static_cast<std::int32_t>(table.presentationTimeOf(i) / tick - table.decodeTimeOf(i) / tick));
      samples.insert(samples.end(), bytes->begin(), bytes->end());
    }
    start += table.duration();
  }

  std::unique_ptr<TemporaryFile> file_;
};

/// Whether each sample of the cut movie, asked for in an order that goes back and forth, decodes as in its clip.
void expectEachClipsOwn(const std::vector<const Clip*>& clips) {
  const CutMovie cut(clips);
  const auto file = opened(cut.path());
  auto decoder = (*decoderBackend())->makeDecoder(file, 0);
  ASSERT_TRUE(decoder) << decoder.error().message();
  std::vector<std::uint64_t> order;
  const std::uint64_t count = file->tracks()[0].sampleCount;
  for (std::uint64_t i = 0; i < count; ++i) order.push_back(i * 7 % count);
  for (const std::uint64_t sample : order) {
    std::uint64_t own = sample;
    std::size_t clip = 0;
    while (own >= clips[clip]->sampleCount()) own -= clips[clip++]->sampleCount();
    const auto picture = (*decoder)->picture({Clip::presented(*file, sample), {}, 0, 0});
    ASSERT_TRUE(picture) << sample << ": " << picture.error().message();
    EXPECT_EQ(picture->height, ImageDescription(clips[clip]->track().sampleDescriptions[0]).height()) << sample;
    EXPECT_EQ(firstPlaneChecksum(*picture), clips[clip]->checksumOf(own)) << sample;
  }
}

const std::vector<std::string> h264{"-c:v", "libx264", "-pix_fmt", "yuv420p", "-g", "5", "-bf", "2"};

TEST(SampleDescriptions, OfOneCodecInTwoSizesDecodeAsTheirOwnMoviesDo) {
  const Clip small = clipOf("small.mov", "size=192x128", h264);
  const Clip large = clipOf("large.mov", "size=320x240", h264);
  expectEachClipsOwn({&small, &large});
  expectEachClipsOwn({&large, &small, &large});
}

TEST(SampleDescriptions, OfTwoCodecsDecodeAsTheirOwnMoviesDo) {
  const Clip proRes = clipOf("prores.mov", "size=192x128", {"-c:v", "prores_ks"});
  const Clip jpeg = clipOf("jpeg.mov", "size=192x128", {"-c:v", "mjpeg", "-q:v", "2"});
  const Clip avc = clipOf("avc.mov", "size=192x128", h264);
  expectEachClipsOwn({&proRes, &jpeg, &avc});
}

TEST(SampleDescriptions, WithAnUnknownCodecLeaveTheOthersAlone) {
  Clip unknown = clipOf("jpeg.mov", "size=192x128", {"-c:v", "mjpeg", "-q:v", "2"});
  const Clip proRes = clipOf("prores.mov", "size=192x128", {"-c:v", "prores_ks"});
  const CutMovie cut({&unknown, &proRes});
  std::string bytes = textOf(cut.path());
  const std::size_t at = bytes.rfind("stsd");
  bytes.replace(bytes.find("jpeg", at), 4, "zzzz");
  const TemporaryFile changed(Bytes(bytes.begin(), bytes.end()));

  const auto file = opened(changed.path());
  auto decoder = (*decoderBackend())->makeDecoder(file, 0);
  ASSERT_TRUE(decoder);
  const auto first = (*decoder)->picture({Clip::presented(*file, 0), {}, 0, 0});
  ASSERT_FALSE(first);
  EXPECT_NE(first.error().reason().find("there is no decoder for the codec 'zzzz'"), std::string::npos)
      << first.error().reason();
  const auto later = (*decoder)->picture({Clip::presented(*file, unknown.sampleCount() + 1), {}, 0, 0});
  ASSERT_TRUE(later) << later.error().message();
  EXPECT_EQ(firstPlaneChecksum(*later), proRes.checksumOf(1));
}

/// The first sample of the second clip is no sync sample: nothing before the change may stand in for it.
TEST(SampleDescriptions, AreNotDecodedFromASyncSampleOfAnother) {
  const Clip intra = clipOf("intra.mov", "size=192x128", {"-c:v", "libx264", "-pix_fmt", "yuv420p", "-g", "1"});
  const Clip longer = clipOf("longer.mov", "size=192x128", {"-c:v", "libx264", "-pix_fmt", "yuv420p", "-g", "99"});
  const CutMovie cut({&intra, &longer});
  std::string bytes = textOf(cut.path());
  // The last entry of stss, which is the second clip's only one, becomes the first clip's last.
  const std::size_t stss = bytes.rfind("stss");
  const std::uint64_t count = intra.sampleCount() + 1;
  Bytes changed(bytes.begin(), bytes.end());
  write32(changed, stss + 12 + 4 * static_cast<std::size_t>(count - 1), static_cast<std::uint32_t>(count - 1));
  const TemporaryFile file(changed);

  const auto movie = opened(file.path());
  for (const std::uint64_t sample : {std::uint64_t{0}, longer.sampleCount() - 1}) {
    EXPECT_EQ(Clip::checksum(*movie, intra.sampleCount() + sample), longer.checksumOf(sample)) << sample;
  }
}

}  // namespace
}  // namespace movie::test
