#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "check/MetadataSync.h"
#include "movie/render/IccProfile.h"
#include "tests/check/BuiltMovie.h"
#include "tests/check/CapturedLog.h"

namespace check {
namespace {

using movie::Bytes;
using movie::Movie;
using movie::test::ImageEntry;
using movie::test::TemporaryFile;
using test::movieFile;
using test::opened;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr movie::NclcParameters fixedColors{movie::fourCC("nclc"), 1, 1, 1};

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
  const TemporaryFile sourceFile(movieFile({tagged.build()}));
  const TemporaryFile destFile(movieFile({ImageEntry().build()}));
  const auto source = opened(sourceFile), dest = opened(destFile);
  const test::CapturedLog log;
  matchMetadata(*source, *dest);
  expectFixedColors(*source);
  expectFixedColors(*dest);
  EXPECT_THAT(log.texts(), IsEmpty());
}

TEST(MatchMetadata, AddsTheKindOfColorAtomThatTheFileTypeAsksFor) {
  const TemporaryFile sourceFile(movieFile({ImageEntry().build()}));
  const TemporaryFile destFile(movieFile({ImageEntry().build()}, "vide", "isom"));
  const auto source = opened(sourceFile), dest = opened(destFile);
  matchMetadata(*source, *dest);
  EXPECT_FALSE(descriptionOf(*source).nclxFullRange());
  EXPECT_EQ(descriptionOf(*dest).nclxFullRange(), false);
}

TEST(MatchMetadata, TouchesOnlyTheFirstDescriptionAndNotTheFile) {
  const std::vector<Bytes> entries{ImageEntry().build(), ImageEntry().build()};
  const TemporaryFile file(movieFile(entries));
  const auto source = opened(file), dest = opened(file);
  matchMetadata(*source, *dest);
  EXPECT_EQ(descriptionOf(*source, 2).bytes(), entries[1]);
  EXPECT_EQ(descriptionOf(*opened(file)).bytes(), entries[0]);
}

TEST(MatchMetadata, DoesNothingWhenEitherMovieHasNoVideoTrack) {
  const TemporaryFile videoFile(movieFile({ImageEntry().build()}));
  const TemporaryFile soundFile(movieFile({}, "soun"));
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
  const TemporaryFile shortFile(movieFile({movie::test::AtomBuilder("apch").zeros(20).build()}));
  const TemporaryFile goodFile(movieFile({ImageEntry().build()}));
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
  const TemporaryFile emptyFile(movieFile({}));
  const auto source = opened(emptyFile), dest = opened(emptyFile);
  const test::CapturedLog log;
  matchMetadata(*source, *dest);
  EXPECT_EQ(log.texts().size(), 6U);
}

}  // namespace
}  // namespace check
