#include <cstdio>
#include <filesystem>

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include "movie/atoms/ReadableFile.h"
#include "tests/support/AtomBuilder.h"

namespace movie {
namespace {

using test::TemporaryFile;

std::string reasonOf(const std::string& path) {
  const auto file = ReadableFile::open(path);
  return file ? "opened" : file.error().reason();
}

TEST(ReadableFile, ReadsNoMoreThanTheFileHas) {
  const TemporaryFile temporary(Bytes{1, 2, 3, 4, 5});
  const auto file = ReadableFile::open(temporary.path());
  ASSERT_TRUE(file);
  EXPECT_EQ(file->size(), 5U);
  EXPECT_EQ(*file->read(1, 3), (Bytes{2, 3, 4}));
  EXPECT_EQ(*file->read(3, SIZE_MAX), (Bytes{4, 5}));
  EXPECT_EQ(*file->read(5, 1), Bytes{});
  EXPECT_EQ(*file->read(UINT64_MAX, 1), Bytes{});
}

TEST(ReadableFile, ReadsWhatIsLeftOfAFileThatBecameShorter) {
  const TemporaryFile temporary(Bytes{1, 2, 3, 4, 5});
  const auto file = ReadableFile::open(temporary.path());
  ASSERT_TRUE(file);
  temporary.resize(2);
  EXPECT_EQ(*file->read(1, 4), Bytes{2});
}

TEST(ReadableFile, SaysWhyItCannotBeOpened) {
  EXPECT_EQ(reasonOf(""), "there is no such file");
  EXPECT_EQ(reasonOf("/nowhere/at/all.mov"), "there is no such file");
  EXPECT_EQ(reasonOf(std::filesystem::temp_directory_path().string()), "it is a folder");
  EXPECT_EQ(reasonOf("/dev/null"), "it is not a regular file");
  EXPECT_EQ(reasonOf("/dev/zero"), "it is not a regular file");
  const TemporaryFile file(Bytes{1});
  EXPECT_EQ(reasonOf(file.path() + "/below"), "there is no such file");
  EXPECT_EQ(reasonOf(file.path() + std::string(1, '\0') + ".mov"), "a file name cannot hold a zero byte");
  EXPECT_NE(reasonOf(std::string(5000, 'a')).find("the system says"), std::string::npos);
}

TEST(ReadableFile, DoesNotWaitForAPipe) {
  const TemporaryFile place(Bytes{1});
  const std::string pipe = place.path() + ".pipe";
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  EXPECT_EQ(reasonOf(pipe), "it is not a regular file");
  ::unlink(pipe.c_str());
}

TEST(ReadableFile, RefusesASocket) {
  const TemporaryFile place(Bytes{1});
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::snprintf(address.sun_path, sizeof address.sun_path, "%s.s", place.path().c_str());
  const int socket = ::socket(AF_UNIX, SOCK_STREAM, 0);
  ASSERT_EQ(::bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  EXPECT_EQ(reasonOf(address.sun_path), "it is not a regular file");
  ::close(socket);
  ::unlink(address.sun_path);
}

TEST(ReadableFile, FollowsALinkAndRefusesARing) {
  const TemporaryFile file(Bytes{1});
  const std::string link = file.path() + ".link";
  std::filesystem::create_symlink(file.path(), link);
  EXPECT_EQ(reasonOf(link), "opened");
  std::filesystem::remove(link);
  std::filesystem::create_symlink(link, link);
  EXPECT_NE(reasonOf(link).find("the system says"), std::string::npos);
  std::filesystem::remove(link);
}

TEST(ReadableFile, NeedsPermission) {
  const TemporaryFile file(Bytes{1});
  ASSERT_EQ(::chmod(file.path().c_str(), 0), 0);
  // The superuser may read it all the same.
  EXPECT_EQ(reasonOf(file.path()), ::geteuid() == 0 ? "opened" : "there is no permission to read the file");
}

}  // namespace
}  // namespace movie
