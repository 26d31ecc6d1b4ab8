#include <cerrno>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "system/Descriptor.h"
#include "system/FileBytes.h"
#include "tests/support/FaultyCalls.h"
#include "tests/support/TemporaryFolder.h"

namespace sys {
namespace {

using movie::Bytes;
using test::FaultyCalls;
using Call = FaultyCalls::Call;
using Fault = FaultyCalls::Fault;

class BytesOfAFile : public testing::Test {
 protected:
  BytesOfAFile() { descriptor_ = Descriptor(::open(folder_.add("file", content_).c_str(), O_RDWR | O_CLOEXEC)); }
  FileRef file() const { return {descriptor_.get(), "file"}; }

  const movie::test::TemporaryFolder folder_;
  const Bytes content_{1, 2, 3, 4, 5, 6, 7, 8, 9};
  Descriptor descriptor_;
};

TEST_F(BytesOfAFile, AreReadAsFarAsItReaches) {
  FaultyCalls calls([](Call, std::size_t number) { return Fault{number % 2 == 0 ? EINTR : 0, true}; });
  Bytes bytes(20);
  const auto got = readAt(file(), 4, bytes, calls);
  ASSERT_TRUE(got);
  EXPECT_EQ(*got, 5U);
  EXPECT_EQ(Bytes(bytes.begin(), bytes.begin() + 5), (Bytes{5, 6, 7, 8, 9}));
}

TEST_F(BytesOfAFile, AreWrittenAllOrTheErrorTold) {
  FaultyCalls calls([](Call, std::size_t number) { return Fault{number % 2 == 0 ? EINTR : 0, true}; });
  ASSERT_TRUE(writeAt(file(), 7, Bytes{11, 12, 13, 14}, calls));
  EXPECT_EQ(movie::test::contentOf(folder_.path("file")), (Bytes{1, 2, 3, 4, 5, 6, 7, 11, 12, 13, 14}));

  calls.failWith([](Call, std::size_t) { return Fault{ENOSPC, false}; });
  const auto failed = writeAt(file(), 0, Bytes{1}, calls);
  ASSERT_FALSE(failed);
  EXPECT_EQ(failed.error().code, ENOSPC);
  EXPECT_EQ(failed.error().what, Step::Write);
  EXPECT_EQ(failed.error().path, "file");
}

TEST(WriteAll, WaitsForAPipeThatIsFull) {
  int ends[2]{};
  ASSERT_EQ(::pipe2(ends, O_CLOEXEC), 0);
  const Descriptor reading(ends[0]);
  Descriptor writing(ends[1]);
  ASSERT_EQ(::fcntl(writing.get(), F_SETFL, O_NONBLOCK), 0);
  const std::string text(500'000, 'x');
  std::size_t got = 0;
  std::thread reader([&] {
    std::vector<char> bytes(10'000);
    for (ssize_t some = 1; some > 0; got += static_cast<std::size_t>(some)) {
      some = readSome(reading.get(), bytes.data(), bytes.size());
    }
  });
  EXPECT_EQ(writeAll(writing.get(), text), 0);
  writing.close();
  reader.join();
  EXPECT_EQ(got, text.size());
}

TEST(WriteAll, TellsWhyItCannot) {
  const Descriptor reading(::open("/dev/null", O_RDONLY | O_CLOEXEC));
  EXPECT_EQ(writeAll(reading.get(), "text"), EBADF);
  EXPECT_EQ(writeAll(reading.get(), ""), 0);
}

}  // namespace
}  // namespace sys
