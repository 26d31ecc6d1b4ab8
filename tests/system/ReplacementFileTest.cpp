#include <cerrno>
#include <filesystem>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "system/ReplacementFile.h"
#include "tests/support/FaultyCalls.h"
#include "tests/support/TemporaryFolder.h"

namespace sys {
namespace {

namespace fs = std::filesystem;
using movie::Bytes;
using movie::test::contentOf;
using movie::test::TemporaryFolder;
using test::FaultyCalls;
using testing::ElementsAre;
using Call = FaultyCalls::Call;
using Fault = FaultyCalls::Fault;

const Bytes oldBytes{'o', 'l', 'd'}, newBytes{'n', 'e', 'w', 'e', 'r'};

/// A name in a folder, at which the old file stands or nothing.
struct Place {
  explicit Place(bool standing) : before(standing ? "old" : "nothing") { reset(); }
  void reset() const {
    for (const std::string& name : folder.names()) ::unlink(folder.path(name).c_str());
    if (before == "old") folder.add("file", oldBytes);
  }
  std::string path() const { return folder.path("file"); }
  std::string found() const {
    const auto names = folder.names();
    if (names.empty()) return "nothing";
    if (names != std::vector<std::string>{"file"}) return "leftovers";
    const Bytes content = contentOf(path());
    return content == oldBytes ? "old" : content == newBytes ? "new" : "damaged";
  }

  TemporaryFolder folder;
  std::string before;
};

/// With a name of its own until it is complete, or without one where the file system has that.
Fault ofFileSystem(bool named, Call call) {
  return {named && call == Call::OpenUnnamed ? EOPNOTSUPP : 0, false};
}

TEST(ReplacementFile, IsTheOldOneOrTheNewWhateverCallFails) {
  for (const bool standing : {false, true}) {
    for (const bool named : {false, true}) {
      const Place place(standing);
      FaultyCalls good([named](Call call, std::size_t) { return ofFileSystem(named, call); });
      ASSERT_TRUE(writeWhole(place.path(), "newer", good));
      EXPECT_EQ(place.found(), "new");
      for (std::size_t at = 0; at < good.callCount(); ++at) {
        for (const int error : {EIO, ENOSPC, EACCES, EINTR}) {
          SCOPED_TRACE(testing::Message() << place.before << ", named " << named << ", call " << at << ": " << error);
          place.reset();
          FaultyCalls calls([&](Call call, std::size_t number) {
            const Fault own = ofFileSystem(named, call);
            return own.error == 0 && number == at ? Fault{error, false} : own;
          });
          const auto result = writeWhole(place.path(), "newer", calls);
          const bool stands = result || result.error().what == Step::SyncName;
          EXPECT_EQ(place.found(), stands ? "new" : place.before);
          EXPECT_TRUE(result || error != EINTR);
        }
      }
    }
  }
}

TEST(ReplacementFile, IsOnTheDiskBeforeItHasItsNameAndItsFolderAfterwards) {
  for (const bool standing : {false, true}) {
    const Place place(standing);
    std::vector<Call> order;
    FaultyCalls calls([&order](Call call, std::size_t) {
      if (call == Call::Write || call == Call::Sync || call == Call::Rename || call == Call::Link)
        order.push_back(call);
      return ofFileSystem(true, call);
    });
    ASSERT_TRUE(writeWhole(place.path(), "newer", calls));
    EXPECT_THAT(order, ElementsAre(Call::Write, Call::Sync, Call::Rename, Call::Sync));
  }
}

TEST(ReplacementFile, TakesTheModeOfTheOldOneWithoutSetIdBits) {
  const Place place(true);
  ASSERT_EQ(::chmod(place.path().c_str(), 06751), 0);
  ASSERT_TRUE(writeWhole(place.path(), "newer"));
  struct stat status {};
  ASSERT_EQ(::stat(place.path().c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777U, 0751U);
}

TEST(ReplacementFile, StandsWhereALinkLeads) {
  const Place place(true);
  const TemporaryFolder other;
  fs::create_symlink(place.path(), other.path("link"));
  ASSERT_TRUE(writeWhole(other.path("link"), "newer"));
  EXPECT_TRUE(fs::is_symlink(other.path("link")));
  EXPECT_EQ(place.found(), "new");
}

TEST(ReplacementFile, KeepsAFileThatTookTheNameMeanwhile) {
  for (const bool named : {false, true}) {
    const Place place(false);
    FaultyCalls calls([named](Call call, std::size_t) { return ofFileSystem(named, call); });
    auto file = ReplacementFile::create(place.path(), calls);
    ASSERT_TRUE(file);
    ASSERT_TRUE(file->write(0, newBytes));
    place.folder.add("file", oldBytes);
    const auto result = file->publish();
    ASSERT_FALSE(result);
    EXPECT_EQ(result.error().code, EEXIST);
    EXPECT_EQ(contentOf(place.path()), oldBytes);
  }
}

TEST(ReplacementFile, CanBeReadBeforeItHasItsName) {
  for (const bool named : {false, true}) {
    const Place place(true);
    FaultyCalls calls([named](Call call, std::size_t) { return ofFileSystem(named, call); });
    auto file = ReplacementFile::create(place.path(), calls);
    ASSERT_TRUE(file);
    ASSERT_TRUE(file->write(0, newBytes));
    EXPECT_EQ(contentOf(file->pathWhileOpen()), newBytes);
    EXPECT_EQ(contentOf(place.path()), oldBytes);
    ASSERT_TRUE(file->publish());
    EXPECT_EQ(contentOf(file->pathWhileOpen()), newBytes);
    EXPECT_EQ(place.found(), "new");
  }
}

TEST(ReplacementFile, RefusesWhatIsNoFile) {
  const TemporaryFolder folder;
  fs::create_directory(folder.path("folder"));
  ASSERT_EQ(::mkfifo(folder.path("pipe").c_str(), 0600), 0);
  fs::create_symlink("loop", folder.path("loop"));
  const auto codeOf = [&](const std::string& path) {
    const auto result = writeWhole(path, "newer");
    return result ? 0 : result.error().code;
  };
  EXPECT_EQ(codeOf(folder.path("folder")), EISDIR);
  EXPECT_EQ(codeOf(folder.path("pipe")), ENXIO);
  EXPECT_EQ(codeOf(folder.path("loop")), ELOOP);
  EXPECT_EQ(codeOf(folder.path("none/file")), ENOENT);
  EXPECT_EQ(codeOf(folder.path("pipe/file")), ENOTDIR);
  EXPECT_EQ(codeOf(folder.path(std::string("a\0b", 3))), EILSEQ);
  EXPECT_EQ(codeOf(""), ENOENT);
  EXPECT_THAT(folder.names(), ElementsAre("folder", "loop", "pipe"));
}

}  // namespace
}  // namespace sys
