#include <array>
#include <functional>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "movie/Movie.h"
#include "tests/support/AtomBuilder.h"

namespace movie {
namespace {

using namespace test;
using testing::ElementsAre;

constexpr std::int32_t one = 0x10000;
constexpr std::uint32_t width = 32, height = 24;
constexpr std::uint32_t framesPerSecond = 25;
constexpr std::int32_t unitsPerFrame = 24;  // of the movie's time scale, 600

using Rgb = std::array<std::uint8_t, 3>;

/// An uncompressed 8-bit RGB picture.
Bytes rgbPicture(const std::function<Rgb(std::uint32_t x, std::uint32_t y)>& color) {
  Bytes picture;
  for (std::uint32_t y = 0; y < height; ++y) {
    for (std::uint32_t x = 0; x < width; ++x) {
      const Rgb pixel = color(x, y);
      picture.insert(picture.end(), pixel.begin(), pixel.end());
    }
  }
  return picture;
}

Bytes greyPicture(std::uint8_t grey) {
  return rgbPicture([grey](std::uint32_t, std::uint32_t) { return Rgb{grey, grey, grey}; });
}

/// An uncompressed 8-bit 4:2:2 picture of one colour.
Bytes yCbCrPicture(const std::array<std::uint8_t, 3>& codes) {
  Bytes picture;
  for (std::uint32_t i = 0; i < width * height / 2; ++i)
    picture.insert(picture.end(), {codes[1], codes[0], codes[2], codes[0]});
  return picture;
}

/// A video track whose samples, of these sizes, follow each other from `offset` on.
TrackSpec videoTrack(const std::string& codec, const std::vector<Bytes>& pictures, std::uint64_t offset = 28) {
  ImageEntry entry;
  entry.codec = codec;
  entry.width = width;
  entry.height = height;
  TrackSpec track;
  const auto count = static_cast<std::uint32_t>(pictures.size());
  track.timeScale = framesPerSecond;
  track.mediaDuration = count;
  track.duration = std::uint64_t{count} * unitsPerFrame;
  track.entries = {entry.build()};
  track.durations = {{count, 1}};
  track.sizes.clear();
  for (const Bytes& picture : pictures) track.sizes.push_back(static_cast<std::uint32_t>(picture.size()));
  track.chunks = {{1, count, 1}};
  track.chunkOffsets = {offset};
  return track;
}

TrackSpec videoTrack(ImageEntry entry, const std::vector<Bytes>& pictures) {
  TrackSpec track = videoTrack(entry.codec, pictures);
  entry.width = width;
  entry.height = height;
  track.entries = {entry.build()};
  return track;
}

Bytes fileOf(const std::vector<TrackSpec>& tracks, const std::vector<Bytes>& pictures) {
  MovieSpec spec;
  spec.tracks = tracks;
  spec.duration = pictures.size() * unitsPerFrame;
  return test::joined({test::fileType("qt  "), test::atomOf("mdat", pictures), spec.build()});
}

std::unique_ptr<Movie> openedFrom(const TemporaryFile& file) {
  auto movie = Movie::movieWithFile(file.path());
  EXPECT_TRUE(movie) << movie.error().message();
  return movie ? std::move(*movie) : Movie::movie();
}

RgbFrame frameOf(Movie& movie, std::int64_t time = 0, const FrameImageRequest& request = {}) {
  auto frame = movie.frameImageAtTime({time, 600, 0}, request);
  EXPECT_TRUE(frame) << frame.error().message();
  return frame ? std::move(*frame) : RgbFrame{};
}

std::vector<int> pixelOf(const RgbFrame& frame, double x, double y) {
  const auto column = static_cast<std::size_t>(x * frame.width), row = static_cast<std::size_t>(y * frame.height);
  const std::size_t at = 3 * (row * static_cast<std::size_t>(frame.width) + column);
  if (frame.samples.size() < at + 3) return {};
  return {frame.samples[at], frame.samples[at + 1], frame.samples[at + 2]};
}

/// Full-range code to video range.
int measured(int code) {
  return (2 * (16 * 255 + 219 * code) + 255) / (2 * 255);
}

/// The grey of the frame on screen, back in full range.
int greyAt(Movie& movie, std::int64_t time) {
  return pixelOf(frameOf(movie, time, {.width = 4, .height = 4, .style = FrameStyle::Display}), 0.5, 0.5).at(0);
}

const std::vector<Bytes> fourGreys{greyPicture(10), greyPicture(80), greyPicture(160), greyPicture(240)};

TEST(MovieFrame, HasTheSizeAskedForAndVideoRange) {
  const TemporaryFile file(fileOf({videoTrack("raw ", fourGreys)}, fourGreys));
  const RgbFrame frame = frameOf(*openedFrom(file), unitsPerFrame);
  EXPECT_EQ(frame.width, 320);
  EXPECT_EQ(frame.height, 240);
  ASSERT_EQ(frame.samples.size(), 320U * 240U * 3U);
  for (const std::uint8_t sample : frame.samples) ASSERT_EQ(sample, measured(80));
  const RgbFrame natural = frameOf(*openedFrom(file), 0, {.width = 0, .height = 0, .style = FrameStyle::Measurement});
  EXPECT_EQ(natural.width, static_cast<int>(width));
  EXPECT_EQ(natural.height, static_cast<int>(height));
}

TEST(MovieFrame, IsTheOneOnScreen) {
  const TemporaryFile file(fileOf({videoTrack("raw ", fourGreys)}, fourGreys));
  const auto movie = openedFrom(file);
  const struct {
    std::int64_t time;
    int grey;
  } rows[] = {{72, 240}, {0, 10}, {22, 10}, {24, 80}, {47, 160}, {48, 160}, {-100, 10}, {95, 240}, {100000, 240}};
  for (const auto& row : rows) EXPECT_EQ(greyAt(*movie, row.time), row.grey) << row.time;
  EXPECT_EQ(pixelOf(*movie->frameImageAtTime({}, {}), 0, 0).at(0), measured(10)) << "the zero time has no scale";
}

TEST(MovieFrame, FollowsTheEditList) {
  TrackSpec track = videoTrack("raw ", fourGreys);
  track.edits = {{600, -1, one}, {24, 2, one}, {100, 1, 0}, {24, 3, one}};
  const TemporaryFile file(fileOf({track}, fourGreys));
  const auto movie = openedFrom(file);
  EXPECT_EQ(greyAt(*movie, 0), 160) << "no picture of its own: that of what comes next";
  EXPECT_EQ(greyAt(*movie, 600), 160);
  EXPECT_EQ(greyAt(*movie, 700), 80);
  EXPECT_EQ(greyAt(*movie, 730), 240);
}

TEST(MovieFrame, ComesFromTheFirstVideoTrackEnabledOrNot) {
  const std::vector<Bytes> pictures{greyPicture(30), greyPicture(200)};
  TrackSpec disabled = videoTrack("raw ", {pictures[1]}, 28 + pictures[0].size());
  disabled.flags = 0;
  TrackSpec second = videoTrack("raw ", {pictures[0]});
  second.id = 2;
  const TemporaryFile file(fileOf({disabled, second}, pictures));
  EXPECT_EQ(greyAt(*openedFrom(file), 0), 200);
}

TEST(MovieFrame, IsTurnedByTheTrackMatrix) {
  // Red, green / blue, white, each a quarter.
  const auto quarters = rgbPicture([](std::uint32_t x, std::uint32_t y) {
    if (y < height / 2) return x < width / 2 ? Rgb{255, 0, 0} : Rgb{0, 255, 0};
    return x < width / 2 ? Rgb{0, 0, 255} : Rgb{255, 255, 255};
  });
  const std::string marks = "RGBW";
  const auto markOf = [&](const std::vector<int>& pixel) {
    const std::vector<std::vector<int>> colors{{255, 0, 0}, {0, 255, 0}, {0, 0, 255}, {255, 255, 255}};
    const auto found = std::find(colors.begin(), colors.end(), pixel);
    return found == colors.end() ? '?' : marks[static_cast<std::size_t>(found - colors.begin())];
  };
  const struct {
    std::array<std::int32_t, 4> abcd;
    const char* shown;
  } rows[] = {{{one, 0, 0, one}, "RGBW"},  {{0, one, -one, 0}, "BRWG"}, {{-one, 0, 0, -one}, "WBGR"},
              {{0, -one, one, 0}, "GWRB"}, {{-one, 0, 0, one}, "GRWB"}, {{one, 0, 0, -one}, "BWRG"},
              {{0, one, one, 0}, "RBGW"},  {{0, -one, -one, 0}, "WGBR"}};
  for (const auto& row : rows) {
    TrackSpec track = videoTrack("raw ", {quarters});
    track.matrix = {row.abcd[0], row.abcd[1], 0, row.abcd[2], row.abcd[3], 0, 0, 0, 0x40000000};
    const TemporaryFile file(fileOf({track}, {quarters}));
    const auto movie = openedFrom(file);
    const FrameImageRequest asked[] = {{.width = 320, .height = 240, .style = FrameStyle::Display},
                                       {.width = 0, .height = 0, .style = FrameStyle::Display}};
    for (const FrameImageRequest& request : asked) {
      const RgbFrame frame = frameOf(*movie, 0, request);
      std::string shown;
      for (const double y : {0.25, 0.75}) {
        for (const double x : {0.25, 0.75}) shown += markOf(pixelOf(frame, x, y));
      }
      EXPECT_EQ(shown, row.shown);
      const auto ownWidth = static_cast<int>(row.abcd[0] != 0 ? width : height);
      EXPECT_EQ(frame.width, request.width != 0 ? request.width : ownWidth);
    }
  }
}

TEST(MovieFrame, IsCutToTheCleanAperture) {
  // White around a dark rectangle of 16 x 8 that lies 4 pixels right of the centre and 2 above it.
  const auto framed = rgbPicture([](std::uint32_t x, std::uint32_t y) {
    const bool inside = x >= 12 && x < 28 && y >= 6 && y < 14;
    return inside ? Rgb{40, 40, 40} : Rgb{255, 255, 255};
  });
  ImageEntry entry;
  entry.codec = "raw ";
  entry.extensions = {test::clapExtension({16, 1, 16, 2, 8, 2, -2, 1})};
  const TemporaryFile file(fileOf({videoTrack(entry, {framed})}, {framed}));
  const auto movie = openedFrom(file);
  const RgbFrame frame = frameOf(*movie);
  ASSERT_EQ(frame.samples.size(), 320U * 240U * 3U);
  for (const std::uint8_t sample : frame.samples) ASSERT_EQ(sample, measured(40));
  const RgbFrame natural = frameOf(*movie, 0, {.width = 0, .height = 0, .style = FrameStyle::Measurement});
  EXPECT_EQ(natural.width, 16);
  EXPECT_EQ(natural.height, 8);
}

TEST(MovieFrame, IsDecodedWithTheMatrixThatTheMovieHasNow) {
  const std::vector<Bytes> pictures{yCbCrPicture({100, 60, 200})};
  ImageEntry entry;
  entry.codec = "2vuy";
  entry.extensions = {test::nclcExtension(1, 1, 1)};
  const TemporaryFile file(fileOf({videoTrack(entry, pictures)}, pictures));
  const auto movie = openedFrom(file);
  EXPECT_THAT(pixelOf(frameOf(*movie), 0.5, 0.5), ElementsAre(211, 80, 0));

  const auto copy = movie->copy();
  Media& media = copy->tracksOfMediaType(videoMedia).at(0)->media();
  auto description = media.imageDescription(1).value();
  ASSERT_EQ(description.setNclc({fourCC("nclc"), 6, 1, 6}, ColorAtomFlavour::Nclc), noErr);
  ASSERT_TRUE(media.setSampleDescription(1, description));
  EXPECT_THAT(pixelOf(frameOf(*copy), 0.5, 0.5), ElementsAre(199, 73, 0));
  EXPECT_THAT(pixelOf(frameOf(*movie), 0.5, 0.5), ElementsAre(211, 80, 0)) << "the original keeps its own";
}

TEST(MovieFrame, CountsAsStandardDefinitionWithoutAnyMatrix) {
  const std::vector<Bytes> pictures{yCbCrPicture({100, 60, 200})};
  const TemporaryFile file(fileOf({videoTrack("2vuy", pictures)}, pictures));
  EXPECT_THAT(pixelOf(frameOf(*openedFrom(file)), 0.5, 0.5), ElementsAre(199, 73, 0));
}

TEST(MovieFrame, ShowsItsColoursOnlyWhenItIsForDisplay) {
  ImageEntry entry;
  entry.codec = "raw ";
  entry.extensions = {test::gamaExtension(static_cast<std::int32_t>(1.8 * 65536))};
  const std::vector<Bytes> pictures{greyPicture(64)};
  const TemporaryFile file(fileOf({videoTrack(entry, pictures)}, pictures));
  const auto movie = openedFrom(file);
  EXPECT_THAT(pixelOf(frameOf(*movie, 0, {.style = FrameStyle::Display}), 0.5, 0.5), ElementsAre(81, 81, 81));
  EXPECT_EQ(pixelOf(frameOf(*movie), 0.5, 0.5).at(0), measured(64));
}

TEST(MovieFrame, HasADigestOfAllItsSamplesWhereThatIsAskedFor) {
  const Bytes almost = rgbPicture([](std::uint32_t x, std::uint32_t y) {
    const bool last = x == width - 1 && y == height - 1;
    return Rgb{80, 80, static_cast<std::uint8_t>(last ? 81 : 80)};
  });
  const std::vector<Bytes> pictures{greyPicture(80), almost, greyPicture(80)};
  const TemporaryFile file(fileOf({videoTrack("raw ", pictures)}, pictures));
  const auto movie = openedFrom(file);
  const auto pictureAt = [&](std::int64_t frame, bool digested) {
    PlayedFrameRequest request{.width = 8, .height = 6};
    request.digested = digested;
    const auto picture = movie->playedPicture(*movie->frameSpanAt({frame * unitsPerFrame, 600, 0}), request);
    EXPECT_TRUE(picture && *picture);
    return picture && *picture ? **picture : Picture{};
  };
  const std::uint64_t digest = pictureAt(0, true).digest;
  EXPECT_NE(digest, 0U);
  EXPECT_EQ(pictureAt(2, true).digest, digest);
  EXPECT_NE(pictureAt(1, true).digest, digest);
  EXPECT_EQ(pictureAt(0, false).digest, 0U);
  EXPECT_EQ(pictureAt(0, true).width, 8);
  EXPECT_EQ(pictureAt(0, true).planes[0].size(), 48U);
}

TEST(MovieFrame, IsAnErrorWhereItCannotBeHad) {
  const std::vector<Bytes> pictures{greyPicture(64)};
  TrackSpec elsewhere = videoTrack("raw ", pictures);
  elsewhere.dataReferences = {test::AtomBuilder("url ").versionAndFlags(0, 0).code("file").zeros(4).build()};
  TrackSpec beyond = videoTrack("raw ", pictures);
  beyond.chunkOffsets = {0x7FFFFFFF};
  for (const TrackSpec& track : {videoTrack("zzzz", pictures), elsewhere, beyond}) {
    const TemporaryFile file(fileOf({track}, pictures));
    const auto movie = openedFrom(file);
    for (int attempt = 0; attempt < 2; ++attempt) {
      const auto frame = movie->frameImageAtTime({0, 600, 0}, {});
      ASSERT_FALSE(frame);
      EXPECT_EQ(frame.error().file, file.path());
      EXPECT_FALSE(frame.error().reason().empty());
    }
  }
}

TEST(MovieFrame, IsTheSameFromCopiesOnSeveralThreads) {
  const TemporaryFile file(fileOf({videoTrack("raw ", fourGreys)}, fourGreys));
  const auto movie = openedFrom(file);
  const RgbFrame expected = frameOf(*movie, 50);
  std::vector<std::thread> threads;
  threads.reserve(3);
  for (int i = 0; i < 3; ++i) {
    threads.emplace_back([copy = std::shared_ptr<Movie>(movie->copy()), &expected] {
      for (int round = 0; round < 5; ++round) EXPECT_EQ(frameOf(*copy, 50).samples, expected.samples);
    });
  }
  for (auto& thread : threads) thread.join();
}

}  // namespace
}  // namespace movie
