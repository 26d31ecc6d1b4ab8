#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "movie/decode/DecoderModule.h"
#include "tests/movie/decode/DecodedMovie.h"
#include "tests/support/MovieFixture.h"

namespace movie::test {
namespace {

TEST(DecoderModule, IsTheSameForEveryThread) {
  preloadDecoder();
  std::vector<Result<MovieDecoderBackend*>> backends(4, failed({}, Reason::NoReasonGiven));
  std::vector<std::thread> threads;
  threads.reserve(backends.size());
  for (auto& backend : backends) threads.emplace_back([&backend] { backend = decoderBackend(); });
  for (std::thread& thread : threads) thread.join();
  for (const auto& backend : backends) {
    ASSERT_TRUE(backend) << backend.error().message();
    EXPECT_EQ(*backend, *decoderBackend());
  }
}

std::string movieFor(const std::vector<std::string>& encoder) {
  std::vector<std::string> arguments{"-f", "lavfi", "-i", "testsrc2=size=160x120:rate=25:duration=2"};
  arguments.insert(arguments.end(), encoder.begin(), encoder.end());
  return fixtureMovie("threads.mov", arguments);
}

TEST(DecoderThreads, TwoMoviesDecodeSideBySide) {
  const std::string first = movieFor({"-c:v", "libx264", "-pix_fmt", "yuv420p", "-g", "12"});
  const std::string second = movieFor({"-c:v", "prores_ks"});
  const auto checksums = [](const std::string& path) {
    DecodedMovie movie(path);
    std::vector<std::uint32_t> sums;
    for (int i = 9; i >= 0; --i) sums.push_back(firstPlaneChecksum(movie.pictureAt(movie.table().duration() * i / 10)));
    return sums;
  };
  const auto firstAlone = checksums(first), secondAlone = checksums(second);
  std::vector<std::uint32_t> firstBeside, secondBeside;
  std::thread one([&] { firstBeside = checksums(first); });
  std::thread two([&] { secondBeside = checksums(second); });
  one.join();
  two.join();
  EXPECT_EQ(firstBeside, firstAlone);
  EXPECT_EQ(secondBeside, secondAlone);
}

TEST(DecoderThreads, TwoDecodersShareOneFile) {
  const std::string path = movieFor({"-c:v", "libx264", "-pix_fmt", "yuv420p", "-g", "12"});
  const auto file = MovieFile::open(path);
  ASSERT_TRUE(file);
  const auto middle = [&file](std::uint32_t& checksum) {
    auto decoder = (*decoderBackend())->makeDecoder(*file, 0);
    if (!decoder) return;
    const SampleTable& table = (*file)->sampleTable(0);
    if (auto picture = (*decoder)->picture({*table.presentedAt(table.duration() / 2), {}, 0, 0})) {
      checksum = firstPlaneChecksum(*picture);
    }
  };
  std::uint32_t one = 1, two = 2;
  std::thread beside([&] { middle(one); });
  middle(two);
  beside.join();
  EXPECT_EQ(one, two);
}

}  // namespace
}  // namespace movie::test
