#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "check/MetadataSync.h"
#include "movie/render/IccProfile.h"
#include "tests/check/CapturedLog.h"
#include "tests/support/AtomBuilder.h"

namespace check {
namespace {

using movie::Bytes;
using movie::Movie;
using movie::test::ImageEntry;
using movie::test::MovieSpec;
using movie::test::TemporaryFile;
using movie::test::TrackSpec;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr movie::NclcParameters fixedColors{movie::fourCC("nclc"), 1, 1, 1};

Bytes fileOf(const char* brand, const std::vector<Bytes>& entries, const char* mediaType = "vide") {
  TrackSpec track;
  track.mediaType = mediaType;
  track.entries = entries;
  MovieSpec movie;
  movie.tracks = {track};
  return movie::test::joined({movie::test::typedMediaData(brand, 30), movie.build()});
}

std::unique_ptr<Movie> opened(const TemporaryFile& file) {
  auto movie = Movie::movieWithFile(file.path());
  if (!movie) throw std::runtime_error(movie.error().message());
  return std::move(*movie);
}

movie::ImageDescription descriptionOf(const Movie& movie, std::size_t index = 1) {
  return *movie.tracksOfMediaType(movie::videoMedia).front()->media().imageDescription(index);
}

void expectFixedColors(const Movie& movie) {
  const movie::ImageDescription description = descriptionOf(movie);
  EXPECT_EQ(description.gamma(), 65536);
  EXPECT_EQ(description.nclc(), fixedColors);
  EXPECT_EQ(description.iccProfile(), movie::sRGBProfile());
}

TEST(MatchMetadata, GivesBothMoviesTheFixedColors) {
  ImageEntry tagged;
  tagged.extensions = {movie::test::gamaExtension(0x23333), movie::test::nclcExtension(9, 16, 9)};
  const TemporaryFile sourceFile(fileOf("qt  ", {tagged.build()}));
  const TemporaryFile destFile(fileOf("qt  ", {ImageEntry().build()}));
  const auto source = opened(sourceFile), dest = opened(destFile);
  const test::CapturedLog log;
  matchMetadata(*source, *dest);
  expectFixedColors(*source);
  expectFixedColors(*dest);
  EXPECT_THAT(log.texts(), IsEmpty());
}

TEST(MatchMetadata, AddsTheKindOfColorAtomThatTheFileTypeAsksFor) {
  const TemporaryFile sourceFile(fileOf("qt  ", {ImageEntry().build()}));
  const TemporaryFile destFile(fileOf("isom", {ImageEntry().build()}));
  const auto source = opened(sourceFile), dest = opened(destFile);
  matchMetadata(*source, *dest);
  EXPECT_FALSE(descriptionOf(*source).nclxFullRange());
  EXPECT_EQ(descriptionOf(*dest).nclxFullRange(), false);
}

TEST(MatchMetadata, TouchesOnlyTheFirstDescriptionAndNotTheFile) {
  const std::vector<Bytes> entries{ImageEntry().build(), ImageEntry().build()};
  const TemporaryFile file(fileOf("qt  ", entries));
  const auto source = opened(file), dest = opened(file);
  matchMetadata(*source, *dest);
  EXPECT_EQ(descriptionOf(*source, 2).bytes(), entries[1]);
  EXPECT_EQ(descriptionOf(*opened(file)).bytes(), entries[0]);
}

TEST(MatchMetadata, DoesNothingWhenEitherMovieHasNoVideoTrack) {
  const TemporaryFile videoFile(fileOf("qt  ", {ImageEntry().build()}));
  const TemporaryFile soundFile(fileOf("qt  ", {}, "soun"));
  const test::CapturedLog log;
  for (const bool videoFirst : {true, false}) {
    const auto video = opened(videoFile), sound = opened(soundFile);
    videoFirst ? matchMetadata(*video, *sound) : matchMetadata(*sound, *video);
    EXPECT_EQ(descriptionOf(*video).bytes(), ImageEntry().build());
  }
  EXPECT_THAT(log.texts(), IsEmpty());
}

TEST(MatchMetadata, LogsEachFailedWriteAndGoesOn) {
  // Too short for an image description: every edit is refused.
  const TemporaryFile shortFile(fileOf("qt  ", {movie::test::AtomBuilder("apch").zeros(20).build()}));
  const TemporaryFile goodFile(fileOf("qt  ", {ImageEntry().build()}));
  const auto good = opened(goodFile), broken = opened(shortFile);
  {
    const test::CapturedLog log;
    matchMetadata(*opened(shortFile), *broken);
    EXPECT_THAT(log.texts(),
                ElementsAre("Error setting source gamma: -50", "Error setting dest gamma: -50",
                            "Error setting source color: -50", "Error setting dest color: -50",
                            "Error setting source color space: -50", "Error setting dest color space: -50"));
  }
  const test::CapturedLog log;
  matchMetadata(*good, *broken);
  EXPECT_THAT(log.texts(), ElementsAre("Error setting dest gamma: -50", "Error setting dest color: -50",
                                       "Error setting dest color space: -50"));
  expectFixedColors(*good);
}

TEST(MatchMetadata, LogsFailuresForAMovieWithoutAnyDescription) {
  const TemporaryFile emptyFile(fileOf("qt  ", {}));
  const auto source = opened(emptyFile), dest = opened(emptyFile);
  const test::CapturedLog log;
  matchMetadata(*source, *dest);
  EXPECT_EQ(log.texts().size(), 6U);
}

}  // namespace
}  // namespace check
