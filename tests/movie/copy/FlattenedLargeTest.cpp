#include <algorithm>
#include <stdexcept>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include "movie/atoms/MovieAtoms.h"
#include "movie/copy/FlattenedCopy.h"
#include "tests/movie/copy/FlattenedMovies.h"

namespace movie {
namespace {

using namespace test;

constexpr std::uint64_t fourGigabytes = std::uint64_t{1} << 32;

/// One track for each chunk of three samples of 2 bytes, at these places of the file.
Bytes movieOver(const std::vector<std::uint64_t>& chunks, bool wide) {
  MovieSpec movie;
  movie.tracks.clear();
  for (const std::uint64_t chunk : chunks) {
    TrackSpec track;
    track.id = static_cast<std::uint32_t>(movie.tracks.size() + 1);
    track.sizes = {2, 2, 2};
    track.chunkOffsets = {chunk};
    track.wideOffsets = wide;
    movie.tracks.push_back(track);
  }
  return movie.build();
}

/// Writes pieces of a file that is all holes elsewhere.
std::string sparseFile(const TemporaryFolder& folder, std::uint64_t size,
                       const std::vector<std::pair<std::uint64_t, Bytes>>& pieces) {
  std::string path = folder.path("from.mov");
  const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
  bool good = file >= 0 && ::ftruncate(file, static_cast<off_t>(size)) == 0;
  for (const auto& [offset, bytes] : pieces) {
    good = good &&
           ::pwrite(file, bytes.data(), bytes.size(), static_cast<off_t>(offset)) == static_cast<ssize_t>(bytes.size());
  }
  ::close(file);
  if (!good) throw std::runtime_error("cannot write " + path);
  return path;
}

Bytes mediaHeader(std::uint64_t size, bool wide) {
  Bytes header = wide ? AtomBuilder("mdat").u64(size).build() : AtomBuilder("mdat").build();
  write32(header, 0, wide ? 1 : static_cast<std::uint32_t>(size));
  return header;
}

Bytes marked(unsigned first) {
  return AtomBuilder("mark").u8(first).u8(first + 1).u8(first + 2).u8(first + 3).u8(first + 4).u8(first + 5).build();
}

/// What a chunk of `marked` bytes looks like behind the 8 bytes of its header.
std::vector<Bytes> samplesMarked(unsigned first) {
  const auto byte = [&](unsigned more) { return static_cast<std::uint8_t>(first + more); };
  return {{byte(0), byte(1)}, {byte(2), byte(3)}, {byte(4), byte(5)}};
}

/// Which kind of table each track of a file has: true for co64.
std::vector<bool> wideTables(const std::string& path) {
  const auto movie = openedMovie(path);
  const Bytes bytes(movie->movieAtom().begin(), movie->movieAtom().end());
  const auto parsed = parseMovieAtom(bytes, readAtoms(bytes).atoms.at(0), {});
  if (!parsed) throw std::runtime_error(parsed.error().message());
  std::vector<bool> wide;
  for (const TrackAtoms& track : parsed->tracks) wide.push_back(track.tables.wideOffsets);
  return wide;
}

std::uint64_t spaceTaken(const std::string& path) {
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0) throw std::runtime_error("no " + path);
  return static_cast<std::uint64_t>(status.st_blocks) * 512;
}

TEST(FlattenedLarge, WidensTheTablesThatNeedItAndThoseThatTheWideningPushesOver) {
  const TemporaryFolder folder;
  // The free space moves the media data by 4096 bytes, each wider table by 4 more.
  const std::uint64_t over = fourGigabytes - 4000, pushedOver = fourGigabytes - 1 - 4096, justFits = pushedOver - 8;
  const Bytes movie = movieOver({1000, pushedOver, over, justFits}, false);
  ASSERT_LT(20 + movie.size(), 4000U);
  const std::uint64_t begin = 20 + movie.size(), end = fourGigabytes - 3000;
  const Bytes early = marked(10), last = marked(60);
  Bytes fit(8);
  for (std::size_t i = 0; i < fit.size(); ++i) fit[i] = static_cast<std::uint8_t>(100 + i);
  const Bytes pushed{110, 111, 112, 113, 114, 115};
  const std::string from = sparseFile(folder, end,
                                      {{0, test::fileType("qt  ")},
                                       {20, movieOver({begin + 100, pushedOver, over, justFits}, false)},
                                       {begin, mediaHeader(end - begin, false)},
                                       {begin + 92, early},
                                       {justFits, fit},
                                       {pushedOver, pushed},
                                       {over - 8, last}});
  const std::string to = folder.path("to.mov");
  const auto status = copied(from, to);
  ASSERT_TRUE(status) << status.error().message();
  EXPECT_EQ(wideTables(from), (std::vector<bool>{false, false, false, false}));
  EXPECT_EQ(wideTables(to), (std::vector<bool>{false, true, true, false}));
  const auto samples = test::samplesOf(to);
  EXPECT_EQ(samples, test::samplesOf(from));
  EXPECT_EQ(samples[0], samplesMarked(10));
  EXPECT_EQ(samples[1], samplesMarked(110));
  EXPECT_EQ(samples[2], samplesMarked(60));
  EXPECT_EQ(samples[3], samplesMarked(100));
  EXPECT_LT(spaceTaken(to), std::uint64_t{1} << 20);
}

struct LargeRow {
  const char* name;
  bool movieFirst;
  bool wideHeader;
  bool openEnded;
};

TEST(FlattenedLarge, CopiesMediaDataOfMoreThanFourGigabytes) {
  const std::vector<LargeRow> rows{
      {"movie first", true, true, false}, {"movie last", false, true, false}, {"open end", true, false, true}};
  for (const LargeRow& row : rows) {
    const TemporaryFolder folder;
    const std::uint64_t movieSize = movieOver({0, 0}, true).size();
    const std::uint64_t begin = 20 + (row.movieFirst ? movieSize : 0), end = begin + 3 * fourGigabytes / 2;
    const std::uint64_t early = begin + 1000, late = end - 5000;
    const Bytes movie = movieOver({late + 8, early + 8}, true);
    const std::string from = sparseFile(folder, end + (row.movieFirst ? 0 : movieSize),
                                        {{0, test::fileType("qt  ")},
                                         {row.movieFirst ? 20 : end, movie},
                                         {begin, mediaHeader(row.openEnded ? 0 : end - begin, row.wideHeader)},
                                         {early, marked(10)},
                                         {late, marked(60)}});
    const std::string to = folder.path("to.mov");
    const auto status = copied(from, to);
    ASSERT_TRUE(status) << row.name << ": " << status.error().message();
    EXPECT_EQ(test::samplesOf(to), (std::vector<std::vector<Bytes>>{samplesMarked(60), samplesMarked(10)}));
    EXPECT_EQ(test::topLevelTypes(to), (row.movieFirst ? std::vector<std::string>{"ftyp", "moov", "free", "mdat"}
                                                       : std::vector<std::string>{"ftyp", "mdat", "moov"}));
    EXPECT_LT(spaceTaken(to), std::uint64_t{1} << 20) << row.name;
  }
}

/// A file in memory alone is on a file system of its own, between which and others the kernel does not copy.
TEST(FlattenedLarge, CopiesAcrossFileSystemsByReadingAndWriting) {
  const int memory = ::memfd_create("movie", MFD_CLOEXEC);
  ASSERT_GE(memory, 0);
  TrackSpec track;
  track.commonSize = 1'234'567;
  const std::uint64_t media = std::uint64_t{3} * track.commonSize;
  MovieSpec spec;
  spec.tracks = {track};
  Bytes file = test::joined({test::fileType("qt  "), AtomBuilder("mdat").zeros(media).build(), spec.build()});
  for (std::size_t i = 28; i < 28 + media; ++i) file[i] = static_cast<std::uint8_t>(i * 31 / 7);
  ASSERT_EQ(::write(memory, file.data(), file.size()), static_cast<ssize_t>(file.size()));

  const TemporaryFolder folder;
  const std::string from = "/proc/self/fd/" + std::to_string(memory), to = folder.path("to.mov");
  std::vector<std::uint64_t> told;
  const auto movie = openedMovie(from);
  const auto status = writeFlattenedCopy(*movie, movie->movieAtom(), to, [&](std::uint64_t done, std::uint64_t all) {
    EXPECT_EQ(all, media + 12);  // and what ftyp holds
    told.push_back(done);
    return true;
  });
  ASSERT_TRUE(status) << status.error().message();
  EXPECT_EQ(test::contentOf(to), file);
  ASSERT_GE(told.size(), 2U);
  EXPECT_EQ(told.front(), 0U);
  EXPECT_EQ(told.back(), media + 12);
  EXPECT_TRUE(std::is_sorted(told.begin(), told.end()));
  ::close(memory);
}

}  // namespace
}  // namespace movie
