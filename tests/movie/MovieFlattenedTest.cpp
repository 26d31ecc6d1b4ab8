#include <gtest/gtest.h>

#include "movie/Movie.h"
#include "tests/movie/copy/FlattenedMovies.h"

namespace movie {
namespace {

using test::MovieParts;
using test::TemporaryFolder;

std::unique_ptr<Movie> opened(const std::string& path) {
  auto movie = Movie::movieWithFile(path);
  if (!movie) throw std::runtime_error(movie.error().message());
  return std::move(*movie);
}

void setGamma(Movie& movie, std::int32_t gamma) {
  Media& media = movie.tracksOfMediaType(videoMedia).at(0)->media();
  ImageDescription description = *media.imageDescription(1);
  ASSERT_EQ(description.setGamma(gamma), noErr);
  ASSERT_TRUE(media.setSampleDescription(1, description));
}

std::optional<std::int32_t> gammaOf(const Movie& movie) {
  return movie.tracksOfMediaType(videoMedia).at(0)->media().imageDescription(1)->gamma();
}

TEST(MovieFlattened, TakesTheEditsOfTheMovieAndLeavesItsFileAlone) {
  const TemporaryFolder folder;
  const std::string from = folder.add("from.mov", MovieParts{{"ftyp", "moov", "mdat"}}.build());
  const std::string to = folder.path("to.mov");
  const auto movie = opened(from);
  setGamma(*movie, 0x20000);
  movie->setCurrentTime({.value = 7, .scale = 600});
  const auto status = movie->writeToFile(to);
  ASSERT_TRUE(status) << status.error().message();
  EXPECT_EQ(gammaOf(*opened(to)), 0x20000);
  EXPECT_EQ(gammaOf(*opened(from)), std::nullopt);
  EXPECT_EQ(movie->path(), from);
  EXPECT_EQ(gammaOf(*movie), 0x20000);
  EXPECT_EQ(movie->currentTime().value, 7);
  EXPECT_EQ(test::samplesOf(to), test::samplesOf(from));
}

TEST(MovieFlattened, GoesOnWithTheNewFileWhereItReplacedItsOwn) {
  const TemporaryFolder folder;
  const std::string path = folder.add("movie.mov", MovieParts{{"ftyp", "mdat", "moov"}}.build());
  const auto samples = test::samplesOf(path);
  const auto movie = opened(path);
  const auto copy = movie->copy();
  Track* const track = movie->tracksOfMediaType(videoMedia).at(0);
  const auto before = movie->file();
  for (const std::int32_t gamma : {0x20000, 0x1CCCD}) {
    setGamma(*movie, gamma);
    const auto status = movie->writeToFile(path);
    ASSERT_TRUE(status) << status.error().message();
    EXPECT_EQ(gammaOf(*opened(path)), gamma);
    EXPECT_EQ(gammaOf(*movie), gamma);
  }
  EXPECT_NE(movie->file(), before);
  EXPECT_EQ(copy->file(), before);
  EXPECT_EQ(movie->tracksOfMediaType(videoMedia).at(0), track);
  EXPECT_EQ(&track->info(), movie->file()->tracks().data());
  EXPECT_EQ(test::samplesOf(path), samples);
  EXPECT_EQ(*copy->file()->readSample(0, 2, 100), samples[0][2]);
}

TEST(MovieFlattened, AnEmptyMovieAndACancelledOneSaySo) {
  const TemporaryFolder folder;
  EXPECT_EQ(Movie::movie()->writeToFile(folder.path("to.mov")).error().reason(), "there is no movie to write");
  const auto movie = opened(folder.add("movie.mov", MovieParts{{"ftyp", "mdat", "moov"}}.build()));
  const auto status = movie->writeToFile(movie->path(), [](std::uint64_t, std::uint64_t) { return false; });
  ASSERT_FALSE(status);
  EXPECT_EQ(status.error().reason(), "it was cancelled");
  EXPECT_EQ(folder.names().size(), 1U);
}

}  // namespace
}  // namespace movie
