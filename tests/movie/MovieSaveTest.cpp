#include <gtest/gtest.h>

#include "movie/Movie.h"
#include "tests/support/AtomBuilder.h"

namespace movie {
namespace {

using test::joined;
using test::TemporaryFile;

Bytes movieFile() {
  test::MovieSpec movie;
  movie.tracks[0].chunkOffsets = {28};
  return joined({test::typedMediaData("qt  ", 64), movie.build()});
}

void setGamma(Movie& movie, std::int32_t gamma) {
  Media& media = movie.tracksOfMediaType(videoMedia)[0]->media();
  ImageDescription description = *media.imageDescription(1);
  ASSERT_EQ(description.setGamma(gamma), noErr);
  ASSERT_TRUE(media.setSampleDescription(1, description));
}

std::optional<std::int32_t> gammaOf(const Movie& movie) {
  return movie.tracksOfMediaType(videoMedia)[0]->media().imageDescription(1)->gamma();
}

TEST(MovieSave, SavesTheEditsAndHoldsTheNewFile) {
  const TemporaryFile file(movieFile());
  auto movie = Movie::movieWithFile(file.path()).value();
  const auto copy = movie->copy();
  setGamma(*movie, 0x20000);
  ASSERT_TRUE(movie->canUpdateMovieFile());
  const auto outcome = movie->updateMovieFile();
  ASSERT_TRUE(outcome) << outcome.error().message();
  EXPECT_EQ(outcome->place, SavePlace::Tail);
  EXPECT_EQ(gammaOf(*movie), 0x20000);
  EXPECT_EQ(gammaOf(*Movie::movieWithFile(file.path()).value()), 0x20000);
  EXPECT_NE(movie->file(), copy->file());
  EXPECT_EQ(*copy->file()->readSample(0, 2, 10), *movie->file()->readSample(0, 2, 10));

  const auto again = movie->updateMovieFile();
  ASSERT_TRUE(again) << again.error().message();
  EXPECT_EQ(again->place, SavePlace::Unchanged);
}

TEST(MovieSave, KnowsWhatIsNotSaved) {
  const TemporaryFile file(movieFile());
  auto movie = Movie::movieWithFile(file.path()).value();
  EXPECT_FALSE(movie->hasUnsavedChanges());
  const auto before = *movie->tracksOfMediaType(videoMedia)[0]->media().imageDescription(1);
  setGamma(*movie, 0x20000);
  EXPECT_TRUE(movie->hasUnsavedChanges());
  EXPECT_TRUE(movie->copy()->hasUnsavedChanges());
  movie->tracksOfMediaType(videoMedia)[0]->media().setSampleDescription(1, before);
  EXPECT_FALSE(movie->hasUnsavedChanges()) << "as the file has it";
  setGamma(*movie, 0x20000);
  ASSERT_TRUE(movie->updateMovieFile());
  EXPECT_FALSE(movie->hasUnsavedChanges());
  EXPECT_FALSE(Movie::movie()->hasUnsavedChanges());
}

TEST(MovieSave, SavesOverAndOverWithoutGrowing) {
  const TemporaryFile file(movieFile());
  auto movie = Movie::movieWithFile(file.path()).value();
  std::uint64_t largest = 0;
  for (std::int32_t i = 1; i <= 20; ++i) {
    Media& media = movie->tracksOfMediaType(videoMedia)[0]->media();
    ImageDescription description = *media.imageDescription(1);
    description.removeExtension(fourCC("colr"));
    description.setIccProfile(Bytes(static_cast<std::size_t>(100 + i % 7), static_cast<std::uint8_t>(i)));
    media.setSampleDescription(1, description);
    const auto outcome = movie->updateMovieFile();
    ASSERT_TRUE(outcome) << outcome.error().message();
    if (i == 4) largest = movie->file()->size();
    if (i > 4) {
      EXPECT_LE(movie->file()->size(), largest) << i;
    }
  }
}

TEST(MovieSave, ACopyWhoseFileWasSavedMeanwhileIsRefused) {
  const TemporaryFile file(movieFile());
  auto movie = Movie::movieWithFile(file.path()).value();
  const auto copy = movie->copy();
  setGamma(*movie, 0x20000);
  setGamma(*copy, 0x10000);
  ASSERT_TRUE(movie->updateMovieFile());
  const auto outcome = copy->updateMovieFile();
  ASSERT_FALSE(outcome);
  EXPECT_EQ(outcome.error().reason(), "the file was changed on disk since it was loaded");
  EXPECT_EQ(gammaOf(*copy), 0x10000);
  EXPECT_FALSE(copy->canUpdateMovieFile());
}

TEST(MovieSave, AnEmptyMovieCannotBeSaved) {
  EXPECT_FALSE(Movie::movie()->canUpdateMovieFile());
  EXPECT_FALSE(Movie::movie()->updateMovieFile());
}

}  // namespace
}  // namespace movie
