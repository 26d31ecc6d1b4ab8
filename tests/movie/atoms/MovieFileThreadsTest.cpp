#include <array>
#include <atomic>
#include <thread>

#include <gtest/gtest.h>

#include "movie/atoms/MovieFile.h"
#include "tests/support/AtomBuilder.h"

namespace movie {
namespace {

TEST(MovieFileThreads, ReadOneFileAtTheSameTime) {
  test::MovieSpec spec;
  spec.tracks.clear();
  for (std::uint32_t id = 1; id <= 20; ++id) {
    spec.tracks.emplace_back().id = id;
    spec.tracks.back().offsets = {{1, 1}, {1, 2}, {1, -1}};
  }
  const test::TemporaryFile file(test::joined({test::typedMediaData("qt  ", 64), spec.build()}));
  const auto movie = MovieFile::open(file.path());
  ASSERT_TRUE(movie);

  std::atomic<int> ready{0};
  std::atomic<int> right{0};
  const auto readAll = [&] {
    ++ready;
    while (ready < 8) std::this_thread::yield();
    for (std::size_t track = 0; track < 20; ++track) {
      const SampleTable& table = (*movie)->sampleTable(track);
      const auto bytes = (*movie)->readSample(track, 1, 10);
      if (table.presentedAt(1)->index == 2 && bytes && (*bytes)[0] == 10) ++right;
    }
  };
  std::array<std::thread, 8> threads;
  for (std::thread& thread : threads) thread = std::thread(readAll);
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(right, 8 * 20);
}

}  // namespace
}  // namespace movie
