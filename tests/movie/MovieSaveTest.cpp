#include <algorithm>
#include <chrono>
#include <filesystem>
#include <functional>
#include <string>
#include <thread>

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

/// Saves what takes a while to be written, and has something done to the file's name meanwhile.
Result<SaveOutcome> savedDuring(Movie& movie, const std::function<void(const std::string& path)>& meanwhile) {
  constexpr std::size_t large = std::size_t{16} << 20;
  Media& media = movie.tracksOfMediaType(videoMedia)[0]->media();
  ImageDescription description = *media.imageDescription(1);
  EXPECT_EQ(description.setIccProfile(Bytes(large, 1)), noErr);
  EXPECT_TRUE(media.setSampleDescription(1, description));
  const std::string path = movie.path();
  const auto before = std::filesystem::file_size(path);
  const std::jthread other([&](const std::stop_token& saved) {
    while (std::filesystem::file_size(path) == before && !saved.stop_requested())
      std::this_thread::sleep_for(std::chrono::microseconds(100));
    meanwhile(path);
  });
  return movie.updateMovieFile();
}

void expectUncertain(const Result<SaveOutcome>& outcome, const Movie& movie, const std::string& note) {
  ASSERT_TRUE(outcome) << outcome.error().message();
  EXPECT_TRUE(outcome->uncertain);
  EXPECT_TRUE(movie.hasUnsavedChanges());
  const auto begins = [&](const std::string& each) { return each.starts_with(note); };
  EXPECT_TRUE(std::any_of(outcome->notes.begin(), outcome->notes.end(), begins)) << note;
}

TEST(MovieSave, IsUncertainWhereAnotherFileTookTheNameMeanwhile) {
  const TemporaryFile file(movieFile()), other(movieFile());
  auto movie = Movie::movieWithFile(file.path()).value();
  const auto outcome =
      savedDuring(*movie, [&](const std::string& path) { std::filesystem::rename(other.path(), path); });
  expectUncertain(outcome, *movie, "Another file took the name of the movie");
  EXPECT_TRUE(movie->standsAtItsPath());
}

TEST(MovieSave, IsUncertainWhereTheFileDoesNotOpenAgain) {
  const TemporaryFile file(movieFile());
  auto movie = Movie::movieWithFile(file.path()).value();
  const auto outcome = savedDuring(*movie, [](const std::string& path) { std::filesystem::remove(path); });
  expectUncertain(outcome, *movie, "The file was saved but does not open again.");
}

TEST(MovieSave, AnEmptyMovieCannotBeSaved) {
  EXPECT_FALSE(Movie::movie()->canUpdateMovieFile());
  EXPECT_FALSE(Movie::movie()->updateMovieFile());
}

}  // namespace
}  // namespace movie
