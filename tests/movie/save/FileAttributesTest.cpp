#include <cstdlib>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include "movie/copy/FlattenedCopy.h"
#include "movie/save/MetadataSave.h"
#include "tests/movie/copy/FlattenedMovies.h"
#include "tests/movie/save/SaveCases.h"
#include "tests/support/AccessList.h"
#include "tests/support/MovieFixture.h"

namespace movie {
namespace {

namespace fs = std::filesystem;
using test::openedMovie;
using test::SaveCase;
using test::TemporaryFolder;

bool takesAttributes(const std::string& folder) {
  std::string path = folder + "/lumacheck-XXXXXX";
  const int file = ::mkstemp(path.data());
  if (file < 0) return false;
  const bool takes = ::fsetxattr(file, "user.reviewed", "x", 1, 0) == 0;
  ::close(file);
  ::unlink(path.c_str());
  return takes;
}

/// A folder whose file system has extended attributes: among the temporary files, or else where the tests keep movies.
class AttributeFolder {
 public:
  AttributeFolder() {
    const std::string usual = fs::temp_directory_path().string();
    const std::string kept = fs::path(test::fixtureFile("here.txt", "touch", {})).parent_path().string();
    for (const std::string& place : {usual, kept}) {
      if (folder_ || !takesAttributes(place)) continue;
      ::setenv("TMPDIR", place.c_str(), 1);
      folder_.emplace();
    }
    ::setenv("TMPDIR", usual.c_str(), 1);
    if (!folder_) throw std::runtime_error("Extended attributes are needed, in " + usual + " or in " + kept + ".");
  }
  const TemporaryFolder& operator*() const { return *folder_; }
  const TemporaryFolder* operator->() const { return &*folder_; }

 private:
  std::optional<TemporaryFolder> folder_;
};

std::map<std::string, std::string> attributesOf(const std::string& path) {
  std::string list(4096, '\0'), value(8192, '\0');
  const ssize_t size = ::listxattr(path.c_str(), list.data(), list.size());
  EXPECT_GE(size, 0);
  std::map<std::string, std::string> found;
  for (std::size_t at = 0; at < static_cast<std::size_t>(size);) {
    const std::string name = list.c_str() + at;
    const ssize_t length = ::getxattr(path.c_str(), name.c_str(), value.data(), value.size());
    EXPECT_GE(length, 0) << name;
    found[name] = value.substr(0, static_cast<std::size_t>(length));
    at += name.size() + 1;
  }
  return found;
}

void mark(const std::string& path) {
  EXPECT_EQ(::setxattr(path.c_str(), "user.reviewed", "by hand", 7, 0), 0);
  EXPECT_EQ(::setxattr(path.c_str(), "user.empty", "", 0, 0), 0);
  EXPECT_EQ(::setxattr(path.c_str(), "user.long", std::string(2000, 'x').data(), 2000, 0), 0);
  // Only the administrator can give a file away, and only he sees whether it stays so.
  if (::geteuid() == 0) {
    EXPECT_EQ(::chown(path.c_str(), 1234, 5678), 0);
    EXPECT_EQ(::setxattr(path.c_str(), "trusted.reviewed", "yes", 3, 0), 0);
  }
}

struct statx statusOf(const std::string& path) {
  struct statx status {};
  EXPECT_EQ(::statx(AT_FDCWD, path.c_str(), AT_SYMLINK_NOFOLLOW, STATX_BASIC_STATS | STATX_BTIME, &status), 0);
  return status;
}

void expectSameOwnersAndModes(const struct statx& after, const struct statx& before) {
  EXPECT_EQ(after.stx_mode, before.stx_mode);
  EXPECT_EQ(after.stx_uid, before.stx_uid);
  EXPECT_EQ(after.stx_gid, before.stx_gid);
}

auto timeOf(const struct statx_timestamp& time) {
  return std::pair(time.tv_sec, time.tv_nsec);
}

/// Long ago, so that a save shows in the times however coarse the clock is.
void age(const std::string& path) {
  const struct timespec times[2] = {{1'000'000'000, 5}, {1'000'000'000, 5}};
  EXPECT_EQ(::utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
}

void expectOnlyTheTimesOfChangeToChange(const std::string& path, const std::function<void()>& save) {
  age(path);
  const auto attributes = attributesOf(path);
  const struct statx before = statusOf(path);
  save();
  const struct statx after = statusOf(path);
  EXPECT_EQ(attributesOf(path), attributes);
  EXPECT_EQ(after.stx_ino, before.stx_ino);
  expectSameOwnersAndModes(after, before);
  EXPECT_EQ(after.stx_nlink, before.stx_nlink);
  EXPECT_EQ(after.stx_attributes, before.stx_attributes);
  EXPECT_EQ(timeOf(after.stx_btime), timeOf(before.stx_btime));
  EXPECT_GT(timeOf(after.stx_mtime), timeOf(before.stx_mtime));
  EXPECT_GT(timeOf(after.stx_ctime), timeOf(before.stx_ctime));
}

TEST(FileAttributes, ASaveInPlaceKeepsThemAll) {
  const AttributeFolder folder;
  for (const SaveCase& subject : test::saveCases(11)) {
    SCOPED_TRACE(subject.name);
    const std::string path = folder->add("movie.mov", subject.file);
    fs::create_hard_link(path, folder->path("other name.mov"));
    mark(path);
    ASSERT_EQ(::setxattr(path.c_str(), test::accessListName, test::someAccessList().data(), 44, 0), 0);
    expectOnlyTheTimesOfChangeToChange(path, [&] {
      const auto outcome = saveMetadata(*openedMovie(path), subject.edits);
      EXPECT_TRUE(outcome) << outcome.error().message();
    });
    ::unlink(path.c_str());
    ::unlink(folder->path("other name.mov").c_str());
  }
}

TEST(FileAttributes, ASaveInPlaceKeepsEveryAccessMode) {
  const AttributeFolder folder;
  const SaveCase subject = test::saveCases(0).front();
  for (const mode_t mode : {0600U, 0640U, 0606U, 0666U, 0777U, 0700U}) {
    const std::string path = folder->add("movie.mov", subject.file);
    ASSERT_EQ(::chmod(path.c_str(), mode), 0);
    expectOnlyTheTimesOfChangeToChange(path, [&] { EXPECT_TRUE(saveMetadata(*openedMovie(path), subject.edits)); });
    EXPECT_EQ(statusOf(path).stx_mode & 07777U, mode);
    ::unlink(path.c_str());
  }
}

void flatten(const std::string& from, const std::string& to) {
  const auto movie = openedMovie(from);
  const auto status = writeFlattenedCopy(*movie, movie->movieAtom(), to);
  ASSERT_TRUE(status) << status.error().message();
}

const Bytes& someMovie() {
  static const Bytes bytes = test::MovieParts{{"ftyp", "moov", "mdat", "mdat"}}.build();
  return bytes;
}

TEST(FileAttributes, ACopyTakesThoseOfTheFileThatItReplaces) {
  const AttributeFolder folder;
  const std::string from = folder->add("from.mov", someMovie()), to = folder->add("to.mov", Bytes{1, 2, 3});
  mark(to);
  ASSERT_EQ(::setxattr(to.c_str(), test::accessListName, test::someAccessList().data(), 44, 0), 0);
  const auto attributes = attributesOf(to);
  ASSERT_GE(attributes.size(), 4U);
  const struct statx before = statusOf(to);
  flatten(from, to);
  const struct statx after = statusOf(to);
  EXPECT_EQ(attributesOf(to), attributes);
  expectSameOwnersAndModes(after, before);
  EXPECT_NE(after.stx_ino, before.stx_ino);
}

TEST(FileAttributes, ACopyOverItsOwnMovieKeepsThem) {
  const AttributeFolder folder;
  const std::string path = folder->add("movie.mov", someMovie());
  mark(path);
  const auto attributes = attributesOf(path);
  flatten(path, path);
  EXPECT_EQ(attributesOf(path), attributes);
}

/// Without what would let others act as the owner.
TEST(FileAttributes, ACopyTakesTheAccessModeOfTheFileThatItReplaces) {
  const AttributeFolder folder;
  const std::string from = folder->add("from.mov", someMovie());
  for (const mode_t mode : {0600U, 0640U, 0606U, 0666U, 0755U, 04755U, 02755U, 01644U}) {
    const std::string to = folder->add("to.mov", Bytes{1, 2, 3});
    ASSERT_EQ(::chmod(to.c_str(), mode), 0);
    flatten(from, to);
    EXPECT_EQ(statusOf(to).stx_mode & 07777U, mode & 0777U);
    ::unlink(to.c_str());
  }
}

TEST(FileAttributes, ANewCopyHasNoneOfItsSource) {
  const AttributeFolder folder;
  const std::string from = folder->add("from.mov", someMovie()), plain = folder->add("plain.mov", Bytes{});
  mark(from);
  ASSERT_EQ(::chmod(from.c_str(), 0777), 0);
  flatten(from, folder->path("to.mov"));
  EXPECT_EQ(attributesOf(folder->path("to.mov")), attributesOf(plain));
  EXPECT_EQ(statusOf(folder->path("to.mov")).stx_mode, statusOf(plain).stx_mode);
  EXPECT_EQ(statusOf(folder->path("to.mov")).stx_uid, ::geteuid());
}

}  // namespace
}  // namespace movie
