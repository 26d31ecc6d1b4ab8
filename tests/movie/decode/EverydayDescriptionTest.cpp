#include <functional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "movie/atoms/MovieFile.h"
#include "movie/decode/ffmpeg/DemuxedDescription.h"
#include "movie/decode/ffmpeg/EverydayDescription.h"
#include "tests/support/AtomBuilder.h"
#include "tests/support/MovieFixture.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/log.h>
}

namespace movie::test {
namespace {

ImageDescription withoutColor(ImageDescription description) {
  while (description.removeExtension(fourCC("colr")) == noErr) continue;
  return description;
}

/// Everything of the parameters that a decoder may look at; the demuxer is the judge.
void expectTheDemuxers(const ImageDescription& description, const std::string& what) {
  const auto everyday = everydayParameters(description);
  ASSERT_NE(everyday, nullptr) << what;
  for (const FourCC brand : {FourCC{0}, fourCC("qt  "), fourCC("isom"), fourCC("M4V ")}) {
    const auto demuxed = demuxDescription(brand, withoutColor(description));
    ASSERT_TRUE(demuxed) << what;
    const AVCodecParameters& judge = *demuxed->parameters;
    EXPECT_TRUE(demuxed->palette.empty()) << what;
    EXPECT_EQ(everyday->codec_type, judge.codec_type) << what;
    EXPECT_EQ(everyday->codec_id, judge.codec_id) << what;
    EXPECT_EQ(everyday->codec_tag, judge.codec_tag) << what;
    EXPECT_EQ(Bytes(everyday->extradata, everyday->extradata + everyday->extradata_size),
              Bytes(judge.extradata, judge.extradata + judge.extradata_size))
        << what;
    EXPECT_EQ(everyday->format, judge.format) << what;
    EXPECT_EQ(everyday->bits_per_coded_sample, judge.bits_per_coded_sample) << what;
    EXPECT_EQ(everyday->bits_per_raw_sample, judge.bits_per_raw_sample) << what;
    EXPECT_EQ(everyday->profile, judge.profile) << what;
    EXPECT_EQ(everyday->level, judge.level) << what;
    EXPECT_EQ(everyday->width, judge.width) << what;
    EXPECT_EQ(everyday->height, judge.height) << what;
    EXPECT_EQ(everyday->field_order, judge.field_order) << what;
    EXPECT_EQ(everyday->color_range, judge.color_range) << what;
    EXPECT_EQ(everyday->color_primaries, judge.color_primaries) << what;
    EXPECT_EQ(everyday->color_trc, judge.color_trc) << what;
    EXPECT_EQ(everyday->color_space, judge.color_space) << what;
    EXPECT_EQ(everyday->chroma_location, judge.chroma_location) << what;
    EXPECT_EQ(everyday->video_delay, judge.video_delay) << what;
  }
}

Bytes fielExtension(unsigned count, unsigned order) {
  return AtomBuilder("fiel").u8(count).u8(order).build();
}

Bytes avcExtension() {
  return AtomBuilder("avcC").u8(1).u8(100).u8(0).u8(40).u8(0xFF).u8(0xE0).u8(0).build();
}

Bytes hevcExtension() {
  return AtomBuilder("hvcC").u8(1).zeros(22).build();
}

/// An esds whose stream is of that object type.
Bytes esdsExtension(unsigned objectType, unsigned streamFlags = 0, unsigned setupSize = 5) {
  AtomBuilder esds("esds");
  esds.u32(0).u8(3).u8(0x80).u8(0x80).u8(0x80).u8(23 + setupSize).u16(1).u8(streamFlags);
  esds.u8(4).u8(15 + setupSize).u8(objectType).u8(0x11).u8(0).u16(0).u32(64000).u32(64000);
  esds.u8(5).u8(setupSize);
  for (unsigned i = 0; i < setupSize; ++i) esds.u8(i);
  return esds.u8(6).u8(1).u8(2).build();
}

ImageEntry entryOf(const std::string& codec, std::vector<Bytes> extensions = {}) {
  ImageEntry entry;
  entry.codec = codec;
  entry.width = 720;
  entry.height = 576;
  entry.extensions = std::move(extensions);
  return entry;
}

std::vector<ImageEntry> everydayEntries() {
  std::vector<ImageEntry> entries;
  for (const char* codec : {"apco", "apcs", "apcn", "apch", "ap4h", "ap4x", "jpeg", "png ", "v210", "CFHD",
                            "AVdh", "dvcp", "dvc ", "dv5p", "dv5n", "hdv2", "hdv3", "xdvb", "xd5b", "mx5p"}) {
    entries.push_back(entryOf(codec));
  }
  for (const char* codec : {"avc1", "avc3"}) entries.push_back(entryOf(codec, {avcExtension()}));
  for (const char* codec : {"hvc1", "hev1"}) entries.push_back(entryOf(codec, {hevcExtension()}));
  entries.push_back(entryOf("mp4v", {esdsExtension(0x20)}));
  return entries;
}

class EverydayDescription : public testing::Test {
 protected:
  EverydayDescription() { av_log_set_level(AV_LOG_QUIET); }
};

TEST_F(EverydayDescription, ReadsWhatTheDemuxerReads) {
  for (const ImageEntry& entry : everydayEntries()) expectTheDemuxers(ImageDescription(entry.build()), entry.codec);
}

TEST_F(EverydayDescription, ReadsWhatTheDemuxerReadsBesideExtensionsThatSayNothing) {
  for (ImageEntry entry : everydayEntries()) {
    entry.depth = 32;
    entry.version = 1;
    entry.extensions.insert(entry.extensions.begin(), gamaExtension(0x1CCCC));
    for (const Bytes& more : {nclcExtension(1, 1, 1), nclxExtension(9, 16, 9, 0x80),
                              clapExtension({700, 1, 570, 1, 0, 1, 0, 1}), AtomBuilder("pasp").u32(59).u32(54).build(),
                              fielExtension(2, 14), AtomBuilder("btrt").u32(1).u32(2).u32(3).build()}) {
      entry.extensions.push_back(more);
    }
    entry.rest = Bytes(4);
    expectTheDemuxers(ImageDescription(entry.build()), entry.codec);
  }
}

TEST_F(EverydayDescription, ReadsEveryDepthThatHasNoColourTable) {
  for (ImageEntry entry : everydayEntries()) {
    for (const unsigned depth : {0U, 3U, 10U, 16U, 24U, 30U, 31U, 32U, 48U, 64U, 0xFFFFU}) {
      entry.depth = depth;
      expectTheDemuxers(ImageDescription(entry.build()), entry.codec + std::to_string(depth));
    }
  }
}

TEST_F(EverydayDescription, ReadsTheOrderOfFields) {
  for (const auto& [count, order] :
       std::vector<std::pair<unsigned, unsigned>>{{1, 0}, {1, 6}, {2, 1}, {2, 6}, {2, 9}, {2, 14}}) {
    for (const char* codec : {"jpeg", "apcn", "dvcp"}) {
      expectTheDemuxers(ImageDescription(entryOf(codec, {fielExtension(count, order)}).build()),
                        codec + std::to_string(count) + ' ' + std::to_string(order));
    }
  }
}

TEST_F(EverydayDescription, LeavesTheUnusualToTheDemuxer) {
  const auto with = [](const std::string& codec, const std::function<void(ImageEntry&)>& change) {
    ImageEntry entry = entryOf(codec);
    change(entry);
    return entry;
  };
  ImageEntry planar = entryOf("avc1", {avcExtension()});
  const std::vector<ImageEntry> unusual{
      entryOf("encv", {avcExtension()}),
      entryOf("drac"),
      entryOf("rle "),
      entryOf("avc1"),
      entryOf("avc1", {avcExtension(), avcExtension()}),
      entryOf("avc1", {hevcExtension()}),
      entryOf("avc1", {avcExtension(), AtomBuilder("sinf").zeros(8).build()}),
      entryOf("avc1", {AtomBuilder("avcC").zeros(3).build()}),
      entryOf("hvc1", {AtomBuilder("dvcC").zeros(24).build(), hevcExtension()}),
      entryOf("apcn", {avcExtension()}),
      entryOf("AVdh", {AtomBuilder("ACLR").zeros(16).build()}),
      entryOf("apcn", {fielExtension(1, 0), fielExtension(1, 0)}),
      entryOf("apcn", {fielExtension(3, 0)}),
      entryOf("apcn", {fielExtension(2, 7)}),
      entryOf("apcn", {AtomBuilder("fiel").u8(1).build()}),
      entryOf("mp4v"),
      entryOf("mp4v", {esdsExtension(0x61)}),
      entryOf("mp4v", {esdsExtension(0x20, 0x80)}),
      entryOf("mp4v", {esdsExtension(0x20, 0, 2)}),
      entryOf("mp4v", {AtomBuilder("esds").zeros(12).build()}),
      with("png ", [](ImageEntry& entry) { entry.depth = 8; }),
      with("png ", [](ImageEntry& entry) { entry.depth = 40; }),
      with("apcn", [](ImageEntry& entry) { entry.rest = Bytes(8); }),
  };
  for (std::size_t i = 0; i < unusual.size(); ++i) {
    EXPECT_EQ(everydayParameters(ImageDescription(unusual[i].build())), nullptr) << i << ' ' << unusual[i].codec;
  }
}

TEST_F(EverydayDescription, LeavesACompressorsNameThatChangesTheCodecToTheDemuxer) {
  Bytes entry = entryOf("apcn").build();
  const std::string name = "\x19Planar Y'CbCr 8-bit 4:2:0";
  std::copy(name.begin(), name.end(), entry.begin() + 50);
  EXPECT_EQ(everydayParameters(ImageDescription(entry)), nullptr);
}

TEST_F(EverydayDescription, NeverReadsPastACutOne) {
  for (const ImageEntry& entry : everydayEntries()) {
    const Bytes whole = entry.build();
    for (std::size_t size = 0; size < whole.size(); ++size) {
      Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
      if (size >= 4) write32(cut, 0, static_cast<std::uint32_t>(size));
      const ImageDescription description(cut);
      if (everydayParameters(description) != nullptr)
        expectTheDemuxers(description, entry.codec + std::to_string(size));
    }
  }
}

void expectEveryday(const std::string& path) {
  const auto file = MovieFile::open(path);
  ASSERT_TRUE(file) << path;
  for (const TrackInfo& track : (*file)->tracks()) {
    if (track.mediaType != videoMedia) continue;
    expectTheDemuxers(ImageDescription(track.sampleDescriptions.at(0)), path);
  }
}

TEST_F(EverydayDescription, ReadsThoseThatEncodersWrite) {
  const std::vector<std::pair<std::string, std::vector<std::string>>> encoders{
      {".mov", {"-c:v", "prores_ks"}},
      {".mov", {"-c:v", "libx264", "-pix_fmt", "yuv420p"}},
      {".mp4", {"-c:v", "libx264", "-pix_fmt", "yuv420p", "-bf", "2"}},
      {".mp4", {"-c:v", "libx265", "-x265-params", "log-level=none", "-tag:v", "hvc1"}},
      {".mp4", {"-c:v", "mpeg4"}},
      {".mov", {"-c:v", "mpeg4"}},
      {".mov", {"-c:v", "mjpeg"}},
      {".mov", {"-c:v", "v210"}},
      {".mov", {"-c:v", "cfhd"}},
  };
  for (const auto& [extension, encoder] : encoders) {
    std::vector<std::string> arguments{"-f", "lavfi", "-i", "testsrc2=size=192x128:rate=25:duration=0.1"};
    arguments.insert(arguments.end(), encoder.begin(), encoder.end());
    expectEveryday(fixtureMovie("everyday" + extension, arguments));
  }
}

TEST_F(EverydayDescription, ReadsWhatTheDemuxerReadsOfRealMovies) {
  const std::vector<std::string> movies = realMovies();
  if (movies.empty()) GTEST_SKIP() << whyNoRealMovies();
  for (const std::string& path : movies) {
    const auto file = MovieFile::open(path);
    ASSERT_TRUE(file) << path;
    for (const TrackInfo& track : (*file)->tracks()) {
      if (track.mediaType != videoMedia) continue;
      const ImageDescription description(track.sampleDescriptions.at(0));
      if (everydayParameters(description) != nullptr) expectTheDemuxers(description, path);
    }
  }
}

}  // namespace
}  // namespace movie::test
