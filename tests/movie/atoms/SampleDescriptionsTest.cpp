#include <vector>

#include <gtest/gtest.h>

#include "movie/atoms/MovieFile.h"
#include "tests/support/AtomBuilder.h"

namespace movie::test {
namespace {

Bytes entryOf(const char* codec, unsigned dataReference = 1) {
  ImageEntry entry;
  entry.codec = codec;
  entry.dataReference = dataReference;
  return entry.build();
}

/// Eight samples in chunks of two, of which stsc says what `chunks` says.
TrackSpec eightSamples(const std::vector<std::array<std::uint32_t, 3>>& chunks) {
  TrackSpec track;
  track.entries = {entryOf("apch"), entryOf("jpeg"), entryOf("avc1")};
  track.durations = {{8, 1}};
  track.sizes.assign(8, 10);
  track.chunks = chunks;
  track.chunkOffsets = {28, 48, 68, 88};
  return track;
}

std::shared_ptr<const MovieFile> movieOf(const TrackSpec& track, const std::vector<Bytes>& more = {},
                                         const std::vector<Bytes>& behind = {}) {
  MovieSpec spec;
  spec.tracks = {track};
  spec.more = more;
  const TemporaryFile file(joined({typedMediaData("qt  ", 200), spec.build(), joined(behind)}));
  auto movie = MovieFile::open(file.path());
  return movie ? *movie : nullptr;
}

TEST(SampleDescriptions, ComeInRunsOfSamples) {
  struct Row {
    std::vector<std::array<std::uint32_t, 3>> chunks;
    std::vector<DescriptionRun> runs;  ///< of each sample
  };
  const std::vector<Row> rows{
      {{{1, 2, 1}}, std::vector<DescriptionRun>(8, {0, 0})},
      {{{1, 2, 2}}, std::vector<DescriptionRun>(8, {0, 1})},
      {{{1, 2, 1}, {3, 2, 2}}, {{0, 0}, {0, 0}, {0, 0}, {0, 0}, {4, 1}, {4, 1}, {4, 1}, {4, 1}}},
      {{{1, 2, 3}, {2, 2, 1}, {4, 2, 3}}, {{0, 2}, {0, 2}, {2, 0}, {2, 0}, {2, 0}, {2, 0}, {6, 2}, {6, 2}}},
      // Rows that differ in their count alone, and one without samples, do not part a run.
      {{{1, 1, 2}, {2, 2, 2}, {3, 0, 1}, {4, 2, 2}}, {{0, 1}, {0, 1}, {0, 1}, {0, 1}, {0, 1}, {0, 0}, {0, 0}, {0, 0}}},
      // Numbers that lead nowhere count as the first.
      {{{1, 2, 0}, {2, 2, 1}, {3, 2, 4}, {4, 2, 0xFFFFFFFF}}, std::vector<DescriptionRun>(8, {0, 0})},
  };
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const auto movie = movieOf(eightSamples(rows[i].chunks));
    ASSERT_TRUE(movie) << i;
    for (std::uint64_t sample = 0; sample < 8; ++sample) {
      EXPECT_EQ(movie->descriptionRunOf(0, sample), rows[i].runs[sample]) << i << ' ' << sample;
    }
  }
}

TEST(SampleDescriptions, AreKnownWithTheSamplesPlace) {
  const auto movie = movieOf(eightSamples({{1, 2, 1}, {3, 2, 2}}));
  ASSERT_TRUE(movie);
  const auto earlier = movie->locateSample(0, 3);
  const auto later = movie->locateSample(0, 5);
  ASSERT_TRUE(earlier && later);
  EXPECT_EQ(earlier->description, 0U);
  EXPECT_EQ(earlier->offset, 58U);
  EXPECT_EQ(later->description, 1U);
  EXPECT_EQ(later->offset, 78U);
}

TEST(SampleDescriptions, OfNoTrackAndNoSampleAreTheFirst) {
  const auto movie = movieOf(eightSamples({{1, 2, 2}}));
  ASSERT_TRUE(movie);
  EXPECT_EQ(movie->descriptionRunOf(0, 8), DescriptionRun());
  EXPECT_EQ(movie->descriptionRunOf(1, 0), DescriptionRun());
  EXPECT_FALSE(movie->locateSample(1, 0));
}

TEST(SampleDescriptions, NameTheFileThatHoldsTheirSamples) {
  TrackSpec track = eightSamples({{1, 2, 1}, {3, 2, 2}});
  track.entries = {entryOf("apch", 1), entryOf("jpeg", 2)};
  track.dataReferences = {AtomBuilder("alis").versionAndFlags(0, 1).build(),
                          AtomBuilder("alis").versionAndFlags(0, 0).zeros(20).build()};
  const auto movie = movieOf(track);
  ASSERT_TRUE(movie);
  EXPECT_FALSE(movie->tracks()[0].isExternal(0));
  EXPECT_TRUE(movie->tracks()[0].isExternal(1));
  EXPECT_TRUE(movie->readSample(0, 3, 4));
  const auto elsewhere = movie->readSample(0, 4, 4);
  ASSERT_FALSE(elsewhere);
  EXPECT_EQ(elsewhere.error().reason(), "the track's media is in another file");
}

FragmentSpec twoSamples(std::uint32_t headerFlags, const std::vector<std::uint32_t>& fields) {
  FragmentSpec fragment;
  fragment.headerFlags = headerFlags;
  fragment.headerFields = fields;
  fragment.samples = {{}, {}};
  return fragment;
}

TEST(SampleDescriptions, OfFragmentsComeFromTheirHeaderOrTheMoviesDefault) {
  constexpr std::uint32_t baseIsFragment = 0x20000, hasDescription = 0x2;
  const Bytes extends =
      atomOf("mvex", {AtomBuilder("trex").u32(0).u32(1).u32(/*description*/ 2).u32(1).u32(10).u32(0).build()});
  TrackSpec track = eightSamples({{1, 2, 1}, {4, 2, 2}});
  const auto movie =
      movieOf(track, {extends},
              {twoSamples(baseIsFragment, {}).build(), twoSamples(baseIsFragment | hasDescription, {3}).build(),
               twoSamples(baseIsFragment | hasDescription, {9}).build(),
               twoSamples(baseIsFragment | hasDescription, {1}).build(), twoSamples(baseIsFragment, {}).build()});
  ASSERT_TRUE(movie);
  // The fragments go on where the tables end: 6 to 9 are one run.
  const std::vector<DescriptionRun> runs{{0, 0}, {6, 1}, {6, 1}, {10, 2}, {12, 0}, {12, 0}, {16, 1}};
  const std::vector<std::uint64_t> samples{5, 7, 9, 11, 12, 15, 17};
  for (std::size_t i = 0; i < samples.size(); ++i) {
    EXPECT_EQ(movie->descriptionRunOf(0, samples[i]), runs[i]) << samples[i];
  }
  EXPECT_EQ(movie->locateSample(0, 10)->description, 2U);
}

}  // namespace
}  // namespace movie::test
