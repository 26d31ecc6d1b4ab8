#include <cerrno>
#include <filesystem>
#include <fstream>
#include <stop_token>
#include <string>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "system/Descriptor.h"
#include "system/FileCopying.h"
#include "tests/support/FaultyCalls.h"
#include "tests/support/TemporaryFolder.h"

namespace sys {
namespace {

using movie::test::contentOf;
using test::FaultyCalls;
using Call = FaultyCalls::Call;
using Fault = FaultyCalls::Fault;
using movie::Bytes;

/// A file of three megabytes and an empty one.
class FileCopies : public testing::Test {
 protected:
  FileCopies() {
    for (std::size_t i = 0; i < content_.size(); ++i) content_[i] = static_cast<std::uint8_t>(i * 7 + i / 251);
    folder_.add("from", content_);
    from_ = Descriptor(::open(folder_.path("from").c_str(), O_RDONLY | O_CLOEXEC));
    to_ = Descriptor(::open(folder_.path("to").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
  }
  FileRef from() const { return {from_.get(), "from"}; }
  FileRef to() const { return {to_.get(), "to"}; }
  Bytes copied() const { return contentOf(folder_.path("to")); }

  const movie::test::TemporaryFolder folder_;
  Bytes content_ = Bytes(3'000'000);
  Descriptor from_, to_;
};

TEST_F(FileCopies, AreMadeByHandWhereTheKernelDoesNotCopyBetweenTheTwo) {
  for (const int code : {EXDEV, EINVAL, ENOSYS, EOPNOTSUPP, EPERM}) {
    ASSERT_EQ(::ftruncate(to_.get(), 0), 0);
    std::size_t asked = 0, read = 0;
    FaultyCalls calls([&](Call call, std::size_t) {
      if (call == Call::Copy) ++asked;
      if (call == Call::Read) ++read;
      return Fault{call == Call::Copy ? code : 0, false};
    });
    const auto result = copyContents(from(), to(), {}, calls);
    ASSERT_TRUE(result) << code;
    EXPECT_EQ(copied(), content_) << code;
    EXPECT_EQ(asked, 1U) << code;
    EXPECT_GE(read, 3U) << code;
  }
}

TEST_F(FileCopies, TellAtOnceOfWhatFailsInsideTheKernel) {
  for (const int code : {ENOSPC, EDQUOT, EFBIG, EROFS}) {
    std::size_t read = 0;
    FaultyCalls calls([&](Call call, std::size_t) {
      if (call == Call::Read) ++read;
      return Fault{call == Call::Copy ? code : 0, false};
    });
    const auto result = copyContents(from(), to(), {}, calls);
    ASSERT_FALSE(result) << code;
    EXPECT_EQ(result.error().code, code);
    EXPECT_EQ(result.error().what, Step::Copy);
    EXPECT_EQ(result.error().path, "to");
    EXPECT_EQ(read, 0U) << "tried again by reading";
  }
}

TEST_F(FileCopies, TellWhichOfTheTwoFailsWhenMadeByHand) {
  for (const int inKernel : {EXDEV, EIO}) {
    for (const auto& [failing, path] : {std::pair(Call::Read, "from"), std::pair(Call::Write, "to")}) {
      FaultyCalls calls([&, failing = failing](Call call, std::size_t) {
        return Fault{call == Call::Copy ? inKernel : call == failing ? EIO : 0, false};
      });
      const auto result = copyContents(from(), to(), {}, calls);
      ASSERT_FALSE(result) << inKernel;
      EXPECT_EQ(result.error().code, EIO);
      EXPECT_EQ(result.error().path, path);
    }
  }
}

TEST_F(FileCopies, GoOnAfterInterruptionsAndShortCounts) {
  for (const int byHand : {0, EXDEV}) {
    ASSERT_EQ(::ftruncate(to_.get(), 0), 0);
    FaultyCalls calls([byHand](Call call, std::size_t number) {
      if (number % 3 == 1) return Fault{EINTR, false};
      return Fault{call == Call::Copy ? byHand : 0, true};
    });
    const auto result = copyContents(from(), to(), {}, calls);
    ASSERT_TRUE(result) << result.error().code;
    EXPECT_EQ(copied(), content_);
  }
}

TEST_F(FileCopies, EndBetweenTwoPiecesWhenNoMoreIsWanted) {
  FaultyCalls calls([](Call call, std::size_t) { return Fault{call == Call::Copy ? EXDEV : 0, false}; });
  std::vector<std::uint64_t> told;
  FileCopying copying(
      to(),
      [&told](std::uint64_t done) {
        told.push_back(done);
        return told.size() < 3;
      },
      FileCopying::Writeback::AtOnce, calls);
  const auto result = copying.copy(from(), {0, content_.size(), 0});
  ASSERT_FALSE(result);
  EXPECT_EQ(result.error().code, ECANCELED);
  EXPECT_THAT(told, testing::ElementsAre(0, 1 << 20, 2 << 20));
}

TEST_F(FileCopies, AreAsLongAsTheFileReaches) {
  for (const int byHand : {0, EXDEV}) {
    FaultyCalls calls([byHand](Call call, std::size_t) { return Fault{call == Call::Copy ? byHand : 0, false}; });
    const auto result =
        FileCopying(to(), {}, FileCopying::Writeback::Later, calls).copy(from(), {content_.size() - 10, 1000, 5});
    ASSERT_TRUE(result);
    EXPECT_EQ(*result, 10U);
    EXPECT_EQ(copied().size(), 15U);
  }
}

TEST_F(FileCopies, HaveTheHolesOfTheFile) {
  constexpr off_t size = off_t{64} << 20U;
  Descriptor sparse(::open(folder_.path("sparse").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
  ASSERT_EQ(::ftruncate(sparse.get(), size), 0);
  ASSERT_EQ(::pwrite(sparse.get(), "middle", 6, size / 2), 6);
  ASSERT_TRUE(copyContents({sparse.get(), "sparse"}, to()));
  struct stat status {};
  ASSERT_EQ(::fstat(to_.get(), &status), 0);
  EXPECT_EQ(status.st_size, size);
  EXPECT_LT(status.st_blocks, 4096);
  char bytes[6]{};
  ASSERT_EQ(::pread(to_.get(), bytes, 6, size / 2), 6);
  EXPECT_EQ(std::string(bytes, 6), "middle");
}

}  // namespace
}  // namespace sys
