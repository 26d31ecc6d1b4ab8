#include <algorithm>
#include <random>

#include <gtest/gtest.h>
#include <unistd.h>

#include "movie/copy/FlattenedCopy.h"
#include "tests/movie/copy/FlattenedMovies.h"

namespace movie {
namespace {

using test::MovieParts;
using test::TemporaryFolder;

/// Whatever a damaged movie makes of its tables: a copy that is made has every sample that the movie has, and a refused
/// one leaves nothing behind.
TEST(FlattenedDamage, NeverLosesASampleWithoutSayingSo) {
  std::mt19937 random(20260101);  // NOLINT(cert-msc32-c,cert-msc51-cpp): the same damage on every run
  const std::vector<Bytes> seeds{MovieParts{{"ftyp", "moov", "mdat", "free", "mdat"}}.build(),
                                 MovieParts{{"ftyp", "wide", "mdat", "chunks", "moov"}, true}.build(),
                                 MovieParts{{"ftyp", "mdat64", "moov", "mdat0"}}.build()};
  const TemporaryFolder folder;
  const std::string to = folder.path("to.mov");
  int made = 0, refused = 0;
  for (int round = 0; round < 1000; ++round) {
    Bytes bytes = seeds[static_cast<std::size_t>(round) % seeds.size()];
    for (unsigned i = 0; i <= random() % 3; ++i) {
      const std::size_t at = random() % (bytes.size() - 3);
      if (random() % 2 == 0)
        bytes[at] = static_cast<std::uint8_t>(random());
      else
        write32(bytes, at / 4 * 4, static_cast<std::uint32_t>(random() % 5 * 16));
    }
    const std::string from = folder.add("from.mov", bytes);
    const auto movie = MovieFile::open(from);
    if (!movie) continue;
    const auto status = writeFlattenedCopy(**movie, (*movie)->movieAtom(), to);
    if (!status) {
      ++refused;
      ASSERT_EQ(folder.names().size(), 1U) << round;
      continue;
    }
    ++made;
    const auto copy = test::openedMovie(to);
    ASSERT_EQ(copy->tracks().size(), (*movie)->tracks().size()) << round;
    for (std::size_t track = 0; track < copy->tracks().size(); ++track) {
      const std::uint64_t count = (*movie)->tracks()[track].sampleCount;
      ASSERT_EQ(copy->tracks()[track].sampleCount, count) << round;
      for (std::uint64_t sample = 0; sample < std::min<std::uint64_t>(count, 100); ++sample) {
        const auto before = (*movie)->readSample(track, sample, 10'000);
        const auto after = copy->readSample(track, sample, 10'000);
        ASSERT_TRUE(!before || (after && *after == *before)) << "round " << round << ", sample " << sample;
      }
    }
    ASSERT_EQ(::unlink(to.c_str()), 0);
  }
  EXPECT_GT(made, 100);
  EXPECT_GT(refused, 30);
}

}  // namespace
}  // namespace movie
