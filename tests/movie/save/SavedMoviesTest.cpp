#include <algorithm>
#include <cstdio>
#include <fstream>
#include <map>

#include <gtest/gtest.h>

#include "movie/atoms/FileAtoms.h"
#include "movie/atoms/ImageDescription.h"
#include "movie/save/MetadataSave.h"
#include "tests/support/AtomBuilder.h"
#include "tests/support/MovieFixture.h"
#include "tests/support/TemporaryFolder.h"

namespace movie {
namespace {

std::vector<std::string> madeMovies() {
  const std::vector<std::string> picture{"-f", "lavfi", "-i", "testsrc2=s=320x240:d=1:r=25"};
  const std::vector<std::string> sound{"-f", "lavfi", "-i", "sine=d=1"};
  const auto with = [&](const std::vector<std::string>& more, bool heard) {
    std::vector<std::string> all = picture;
    if (heard) all.insert(all.end(), sound.begin(), sound.end());
    all.insert(all.end(), more.begin(), more.end());
    return all;
  };
  std::vector<std::string> all;
  all.push_back(test::fixtureMovie("saved.mov", with({"-c:v", "prores"}, false)));
  all.push_back(test::fixtureMovie("saved.mov", with({"-c:v", "prores", "-movflags", "+faststart"}, false)));
  all.push_back(
      test::fixtureMovie("saved.mov", with({"-c:v", "mjpeg", "-c:a", "pcm_s16le", "-timecode", "01:00:00:00"}, true)));
  all.push_back(test::fixtureMovie("saved.mp4",
                                   with({"-c:v", "libx264", "-pix_fmt", "yuv420p", "-movflags", "+faststart"}, false)));
  all.push_back(test::fixtureMovie(
      "saved.mp4", with({"-c:v", "libx264", "-pix_fmt", "yuv420p", "-c:a", "aac", "-metadata", "title=x"}, true)));
  all.push_back(test::fixtureMovie("saved.mp4", with({"-c:v", "mpeg4", "-moov_size", "20000"}, false)));
  return all;
}

/// Everything of a file that a save has no business with: each atom but the movie atom and free space, under where it
/// stands.
std::map<std::uint64_t, Bytes> restOf(const std::string& path) {
  std::map<std::uint64_t, Bytes> rest;
  const auto file = ReadableFile::open(path).value();
  FileAtoms walk(file);
  while (const auto atom = walk.next()) {
    if (atom->type == fourCC("moov") || atom->type == fourCC("free") || atom->type == fourCC("skip")) continue;
    rest[atom->offset] = file.read(atom->offset, static_cast<std::size_t>(atom->size)).value();
  }
  return rest;
}

std::optional<std::size_t> firstVideo(const MovieFile& movie) {
  for (std::size_t i = 0; i < movie.tracks().size(); ++i) {
    if (movie.tracks()[i].mediaType == videoMedia && !movie.tracks()[i].sampleDescriptions.empty()) return i;
  }
  return std::nullopt;
}

/// Saves the entry and gives back the movie as opened afterwards.
std::shared_ptr<const MovieFile> saved(const std::string& path, std::size_t track, const Bytes& entry) {
  const auto movie = MovieFile::open(path).value();
  const auto outcome = saveMetadata(*movie, {{track, 0, entry}});
  EXPECT_TRUE(outcome) << outcome.error().message();
  const auto after = MovieFile::open(path).value();
  EXPECT_EQ(after->tracks()[track].sampleDescriptions[0], entry);
  EXPECT_TRUE(equalButForColors(movie->movieAtom(), after->movieAtom()));
  return after;
}

void expectSamplesEqual(const MovieFile& before, const MovieFile& after) {
  ASSERT_EQ(before.tracks().size(), after.tracks().size());
  for (std::size_t track = 0; track < before.tracks().size(); ++track) {
    for (std::uint64_t i = 0; i < before.tracks()[track].sampleCount; i += 7) {
      const auto there = before.readSample(track, i, 1 << 20), here = after.readSample(track, i, 1 << 20);
      ASSERT_EQ(there.has_value(), here.has_value());
      if (there) {
        EXPECT_EQ(*there, *here);
      }
    }
  }
}

/// Adds a property that the movie lacks, saves, takes it away and saves again.
void expectToComeBack(const std::string& original) {
  const test::TemporaryFile file(test::contentOf(original));
  const auto before = MovieFile::open(file.path());
  if (!before) return;
  const auto track = firstVideo(**before);
  const auto rest = restOf(file.path());
  if (!track || !canUpdate(**before, {})) return;

  const Bytes entry = (*before)->tracks()[*track].sampleDescriptions[0];
  ImageDescription description(entry);
  const bool hasColor = description.nclc() || description.iccProfile();
  const bool hasGamma = description.gamma().has_value();
  if (hasColor && hasGamma) return;
  ASSERT_EQ(hasGamma ? description.setIccProfile(Bytes(500, 1)) : description.setGamma(0x20000), noErr);
  const auto between = saved(file.path(), *track, description.bytes());
  EXPECT_EQ(restOf(file.path()), rest);
  expectSamplesEqual(**before, *between);

  ASSERT_EQ(description.removeExtension(hasGamma ? fourCC("colr") : fourCC("gama")), noErr);
  ASSERT_EQ(description.bytes(), entry);
  const auto after = saved(file.path(), *track, description.bytes());
  EXPECT_EQ(restOf(file.path()), rest);
  EXPECT_EQ(after->movieAtom().size(), (*before)->movieAtom().size());
  expectSamplesEqual(**before, *after);
}

TEST(SavedMovies, GiveTheirImageDescriptionBackAndKeepAllElse) {
  for (const std::string& movie : madeMovies()) {
    SCOPED_TRACE(movie);
    expectToComeBack(movie);
  }
}

TEST(SavedMovies, OfTheWorldGiveTheirImageDescriptionBackAndKeepAllElse) {
  const std::vector<std::string> movies = test::realMovies();
  if (movies.empty()) GTEST_SKIP() << test::whyNoRealMovies();
  for (const std::string& movie : movies) {
    SCOPED_TRACE(movie);
    expectToComeBack(movie);
  }
}

TEST(SavedMovies, AreOnesThatCanBeSaved) {
  for (const std::string& path : madeMovies()) {
    const test::TemporaryFile copy(test::contentOf(path));
    EXPECT_TRUE(canUpdate(*MovieFile::open(copy.path()).value(), {})) << path;
  }
}

TEST(SavedMovies, OfTheWorldAreOnesThatCanBeSaved) {
  const std::vector<std::string> movies = test::realMovies();
  if (movies.empty()) GTEST_SKIP() << test::whyNoRealMovies();
  for (const std::string& path : movies) {
    const test::TemporaryFile copy(test::contentOf(path));
    EXPECT_TRUE(canUpdate(*MovieFile::open(copy.path()).value(), {})) << path;
  }
}

}  // namespace
}  // namespace movie
