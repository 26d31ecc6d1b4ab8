#include <algorithm>
#include <cstdio>
#include <filesystem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "movie/copy/FlattenedCopy.h"
#include "movie/save/MetadataSave.h"
#include "tests/movie/copy/FlattenedMovies.h"
#include "tests/movie/save/SaveCases.h"
#include "tests/movie/save/SaveJudge.h"
#include "tests/support/SmallDisk.h"

namespace movie {
namespace {

using namespace test;
using testing::HasSubstr;

/// More than the last page of a file can take.
constexpr std::size_t bulk = 20'000;

class Disk {
 public:
  explicit Disk(std::string folder) : folder_(std::move(folder)) {}
  std::string path(const std::string& name) const { return folder_ + "/" + name; }
  std::string add(const std::string& name, const Bytes& content) const {
    std::FILE* const file = std::fopen(path(name).c_str(), "wb");
    EXPECT_EQ(std::fwrite(content.data(), 1, content.size(), file), content.size());
    EXPECT_EQ(std::fclose(file), 0);
    return path(name);
  }
  std::vector<std::string> names() const {
    std::vector<std::string> found;
    for (const auto& entry : std::filesystem::directory_iterator(folder_)) found.push_back(entry.path().filename());
    std::sort(found.begin(), found.end());
    return found;
  }
  void clear() const {
    for (const std::string& name : names()) ::unlink(path(name).c_str());
  }

 private:
  std::string folder_;
};

/// Saves on a disk that is full and judges the file. Whether it was saved.
bool savedOnFullDisk(const Disk& disk, const SaveCase& subject) {
  disk.clear();
  const std::string path = disk.add("movie.mov", subject.file);
  fillDisk(disk.path("filler"));
  struct stat before {
  }, after{};
  EXPECT_EQ(::stat(path.c_str(), &before), 0);
  const auto movie = openedMovie(path);
  const auto outcome = saveMetadata(*movie, subject.edits);
  EXPECT_EQ(::stat(path.c_str(), &after), 0);
  EXPECT_EQ(disk.names().size(), 2U);
  const Judge judge(subject);
  if (outcome) {
    EXPECT_FALSE(outcome->uncertain);
    EXPECT_EQ(judge.verdictAfter(contentOf(path), subject.edits[0].entry), "");
    return true;
  }
  EXPECT_THAT(outcome.error().reason(), HasSubstr("the disk is full"));
  if (subject.name.find("leftover") == std::string::npos) {
    EXPECT_EQ(contentOf(path), subject.file);
    EXPECT_EQ(before.st_mtim.tv_nsec, after.st_mtim.tv_nsec);
  } else {
    EXPECT_EQ(judge.verdict(contentOf(path)), "");
  }
  // It can be saved as soon as there is room.
  EXPECT_EQ(::unlink(disk.path("filler").c_str()), 0);
  const auto again = saveMetadata(*openedMovie(path), subject.edits);
  EXPECT_TRUE(again) << again.error().message();
  EXPECT_EQ(judge.verdictAfter(contentOf(path), subject.edits[0].entry), "");
  return false;
}

TEST(SmallDisk, ASaveThatFindsNoRoomChangesNothing) {
  onSmallDisk("saves on a full disk", [](const std::string& folder) {
    const Disk disk(folder);
    std::size_t refused = 0;
    for (const SaveCase& subject : test::saveCases(11, bulk)) {
      SCOPED_TRACE(subject.name);
      const bool saved = savedOnFullDisk(disk, subject);
      EXPECT_TRUE(saved || subject.place != SavePlace::Sector);
      EXPECT_TRUE(!saved || subject.place == SavePlace::Sector);
      if (!saved) ++refused;
    }
    EXPECT_GT(refused, 25U);
  });
}

/// A movie that a disk of 1 MB holds once and not twice.
Bytes largeMovie() {
  return test::joined({test::typedMediaData("qt  ", 600'000), test::MovieSpec().build()});
}

TEST(SmallDisk, ACopyThatFindsNoRoomLeavesAllAsItWas) {
  onSmallDisk("copies on a full disk", [](const std::string& folder) {
    const Disk disk(folder);
    const std::string from = disk.add("from.mov", largeMovie());
    for (const bool replaces : {false, true}) {
      if (replaces) disk.add("to.mov", Bytes{1, 2, 3});
      const auto before = disk.names();
      const auto movie = openedMovie(from);
      const auto status = writeFlattenedCopy(*movie, movie->movieAtom(), disk.path("to.mov"));
      ASSERT_FALSE(status);
      EXPECT_EQ(status.error().message(Attempt::Save),
                "Cannot save \"" + disk.path("to.mov") + "\": there is not enough space on the disk.");
      EXPECT_EQ(disk.names(), before);
      EXPECT_EQ(contentOf(from), largeMovie());
      if (replaces) {
        EXPECT_EQ(contentOf(disk.path("to.mov")), (Bytes{1, 2, 3}));
      }
    }
  });
}

TEST(SmallDisk, ACopyHasNoNameUntilItIsComplete) {
  onSmallDisk("a copy without a name", [](const std::string& folder) {
    const Disk disk(folder);
    const std::string from = disk.add("from.mov", Bytes(test::MovieParts{{"ftyp", "moov", "mdat", "mdat"}}.build()));
    for (const bool replaces : {false, true}) {
      if (replaces) disk.add("to.mov", Bytes{1, 2, 3});
      const auto before = disk.names();
      const auto movie = openedMovie(from);
      int told = 0;
      const auto status =
          writeFlattenedCopy(*movie, movie->movieAtom(), disk.path("to.mov"), [&](std::uint64_t, std::uint64_t) {
            EXPECT_EQ(disk.names(), before);
            ++told;
            return true;
          });
      EXPECT_TRUE(status) << status.error().message();
      EXPECT_GT(told, 1);
      EXPECT_THAT(disk.names(), testing::ElementsAre("from.mov", "to.mov"));
      EXPECT_EQ(test::samplesOf(disk.path("to.mov")), test::samplesOf(from));
    }
  });
}

}  // namespace
}  // namespace movie
