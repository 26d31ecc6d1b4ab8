// Every packet and every decoded frame of whole movies, before and after a save and in a flattened copy.

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "movie/atoms/AtomReader.h"
#include "movie/atoms/ImageDescription.h"
#include "movie/copy/FlattenedCopy.h"
#include "movie/save/MetadataSave.h"
#include "tests/movie/copy/FlattenedMovies.h"
#include "tests/support/MovieFixture.h"

namespace movie {
namespace {

namespace fs = std::filesystem;
using test::contentOf;
using test::fixtureMovie;
using test::openedMovie;
using test::TemporaryFolder;

std::vector<std::string> scene(std::vector<std::string> coding) {
  std::vector<std::string> all{"-f", "lavfi", "-i", "testsrc2=s=192x108:d=1:r=25", "-f", "lavfi", "-i", "sine=d=1"};
  all.insert(all.end(), coding.begin(), coding.end());
  return all;
}

/// The media's hashes, packet by packet and frame by frame.
std::string hashesOf(const std::string& path) {
  const std::string read = "ffmpeg -nostdin -v error -xerror -i '" + path + "' -map 0:v? -map 0:a? ";
  return test::outputOf(read + "-c copy -f framehash -") + test::outputOf(read + "-f framehash -");
}

/// Puts 64-bit offsets in the place of the 32-bit ones of a movie atom at the end of its file. The four bytes more of
/// every offset move nothing that counts.
Bytes withWideOffsets(const Bytes& file) {
  const auto wide = [](const auto& self, ByteView atom) -> Bytes {
    const std::string type(atom.begin() + 4, atom.begin() + 8);
    Bytes body;
    if (type == "stco") {
      body.assign(atom.begin() + 8, atom.begin() + 16);
      for (std::size_t at = 16; at < atom.size(); at += 4) {
        body.insert(body.end(), 4, 0);
        body.insert(body.end(), atom.begin() + static_cast<std::ptrdiff_t>(at),
                    atom.begin() + static_cast<std::ptrdiff_t>(at + 4));
      }
    } else if (type == "moov" || type == "trak" || type == "mdia" || type == "minf" || type == "stbl") {
      for (std::size_t at = 8; at < atom.size(); at += read32(atom, at)) {
        const Bytes child = self(self, atom.subspan(at, read32(atom, at)));
        body.insert(body.end(), child.begin(), child.end());
      }
    } else {
      return Bytes(atom.begin(), atom.end());
    }
    Bytes made(8);
    write32(made, 0, static_cast<std::uint32_t>(8 + body.size()));
    write32(made, 4, type == "stco" ? fourCC("co64") : read32(atom, 4));
    made.insert(made.end(), body.begin(), body.end());
    return made;
  };
  for (std::size_t at = 0; at < file.size(); at += read32(file, at)) {
    if (read32(file, at + 4) != fourCC("moov")) continue;
    Bytes all(file.begin(), file.begin() + static_cast<std::ptrdiff_t>(at));
    const Bytes movie = wide(wide, ByteView(file).subspan(at));
    all.insert(all.end(), movie.begin(), movie.end());
    return all;
  }
  return {};
}

struct MovieRow {
  std::string name;
  std::string path;
};

std::vector<MovieRow> movies(const TemporaryFolder& folder) {
  const std::string last = fixtureMovie("frames.mov", scene({"-c:v", "mjpeg", "-c:a", "pcm_s16le"}));
  return {
      {"ProRes with a timecode",
       fixtureMovie("frames.mov", scene({"-c:v", "prores", "-c:a", "pcm_s24be", "-timecode", "01:00:00:00"}))},
      {"ProRes, movie first", fixtureMovie("frames.mov", scene({"-c:v", "prores_ks", "-movflags", "+faststart"}))},
      {"H.264 with an edit list", fixtureMovie("frames.mp4", scene({"-c:v", "libx264", "-bf", "3", "-c:a", "aac"}))},
      {"H.264, movie first",
       fixtureMovie("frames.mp4", scene({"-c:v", "libx264", "-c:a", "aac", "-movflags", "+faststart"}))},
      {"MPEG-4 with room", fixtureMovie("frames.mp4", scene({"-c:v", "mpeg4", "-c:a", "aac", "-moov_size", "20000"}))},
      {"JPEG", last},
      {"64-bit offsets", folder.add("wide.mov", withWideOffsets(contentOf(last)))}};
}

/// An edit that makes the first video track's description longer. (A profile would show among the hashes, as data
/// beside the first packet.)
SampleDescriptionEdit recoloured(const MovieFile& movie) {
  for (std::size_t i = 0; i < movie.tracks().size(); ++i) {
    if (movie.tracks()[i].mediaType != videoMedia) continue;
    ImageDescription description(movie.tracks()[i].sampleDescriptions[0]);
    EXPECT_EQ(description.setGamma(0x1CCCD), noErr);
    const auto flavour = movie.isQuickTime() ? ColorAtomFlavour::Nclc : ColorAtomFlavour::NclxVideoRange;
    EXPECT_EQ(description.setNclc({fourCC("nclc"), 9, 16, 9}, flavour), noErr);
    return {i, 0, description.bytes()};
  }
  ADD_FAILURE() << "no video track";
  return {};
}

TEST(SavedFrames, AreThoseOfTheMovieBeforeInEveryCodec) {
  const TemporaryFolder folder;
  for (const MovieRow& row : movies(folder)) {
    SCOPED_TRACE(row.name);
    const std::string path = folder.add("saved" + fs::path(row.path).extension().string(), contentOf(row.path));
    const std::string before = hashesOf(path);
    EXPECT_GT(std::count(before.begin(), before.end(), '\n'), 60);
    for (int round = 0; round < 2; ++round) {
      const auto movie = openedMovie(path);
      SampleDescriptionEdit edit = recoloured(*movie);
      if (round == 1) edit.entry = openedMovie(row.path)->tracks()[edit.track].sampleDescriptions[0];
      const auto outcome = saveMetadata(*movie, {edit});
      ASSERT_TRUE(outcome) << outcome.error().message();
      EXPECT_NE(outcome->place, SavePlace::Unchanged);
      EXPECT_EQ(hashesOf(path), before);
    }
  }
}

TEST(SavedFrames, AreThoseOfTheMovieInItsFlattenedCopy) {
  const TemporaryFolder folder;
  for (const MovieRow& row : movies(folder)) {
    SCOPED_TRACE(row.name);
    const std::string to = folder.path("copy" + fs::path(row.path).extension().string());
    const auto movie = openedMovie(row.path);
    const auto atom = editedMovieAtom(movie->movieAtom(), {recoloured(*movie)});
    ASSERT_TRUE(atom);
    const auto status = writeFlattenedCopy(*movie, *atom, to);
    ASSERT_TRUE(status) << status.error().message();
    EXPECT_EQ(hashesOf(to), hashesOf(row.path));
  }
}

TEST(SavedFrames, OfAFragmentedMovieAreLeftAlone) {
  const TemporaryFolder folder;
  const std::string fragmented =
      fixtureMovie("frames.mp4", scene({"-c:v", "libx264", "-movflags", "+frag_keyframe+empty_moov"}));
  const Bytes content = contentOf(fragmented);
  const std::string path = folder.add("movie.mp4", content), to = folder.path("to.mp4");
  const auto movie = openedMovie(path);
  const auto saved = saveMetadata(*movie, {recoloured(*movie)});
  ASSERT_FALSE(saved);
  EXPECT_EQ(saved.error().message(Attempt::Save).rfind("Cannot save \"" + path + "\": the movie is fragmented", 0), 0U)
      << saved.error().message(Attempt::Save);
  const auto copied = writeFlattenedCopy(*movie, movie->movieAtom(), to);
  ASSERT_FALSE(copied);
  EXPECT_EQ(copied.error().reason(), "the movie is fragmented");
  EXPECT_EQ(contentOf(path), content);
  EXPECT_FALSE(fs::exists(to));
}

}  // namespace
}  // namespace movie
