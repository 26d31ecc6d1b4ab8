#include <algorithm>
#include <chrono>
#include <filesystem>
#include <functional>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include "movie/copy/FlattenedCopy.h"
#include "tests/movie/copy/FlattenedMovies.h"
#include "tests/support/AccessList.h"

namespace movie {
namespace {

namespace fs = std::filesystem;
using namespace test;
using testing::ElementsAre;
using testing::HasSubstr;

const MovieParts usual{{"ftyp", "moov", "mdat", "mdat"}};

// --- what is refused ---

struct RefusalRow {
  const char* name;
  Bytes file;
  const char* reason;
};

Bytes around(const MovieSpec& movie) {
  return test::joined({test::typedMediaData("qt  ", 64), movie.build()});
}

MovieSpec withChunkAt(std::uint64_t offset) {
  MovieSpec movie;
  movie.tracks[0].chunkOffsets = {offset};
  return movie;
}

MovieSpec withMore(const Bytes& more) {
  MovieSpec movie;
  movie.more = {more};
  return movie;
}

/// Puts an atom at the end of the sample table of the only track, which is the last atom in all that it lies in.
Bytes withInTable(const Bytes& more) {
  Bytes movie = MovieSpec().build();
  for (const char* type : {"moov", "trak", "mdia", "minf", "stbl"}) {
    const std::string code = type;
    const auto at = std::search(movie.begin(), movie.end(), code.begin(), code.end()) - movie.begin() - 4;
    const auto place = static_cast<std::size_t>(at);
    write32(movie, place, read32(movie, place) + static_cast<std::uint32_t>(more.size()));
  }
  return test::joined({test::typedMediaData("qt  ", 64), movie, more});
}

TEST(FlattenedRefusals, AreNotLookedForInNestsWithoutEnd) {
  constexpr std::size_t nests = 50'000, header = 8;
  Bytes nested(nests * header);
  for (std::size_t i = 0; i < nests; ++i) {
    write32(nested, i * header, static_cast<std::uint32_t>((nests - i) * header));
    write32(nested, i * header + 4, fourCC("udta"));
  }
  const TemporaryFolder folder;
  const std::string from = folder.add("from.mov", around(withMore(nested))), to = folder.path("to.mov");
  ASSERT_TRUE(copied(from, to));
  EXPECT_EQ(test::openedMovie(to)->movieAtom().size(), test::openedMovie(from)->movieAtom().size());
}

TEST(FlattenedRefusals, NameTheReasonAndLeaveNothingBehind) {
  const Bytes locations = AtomBuilder("iloc").zeros(8).build();
  const Bytes fullMeta = AtomBuilder("meta").u32(0).bytes(locations).build();
  const Bytes flaggedMeta = AtomBuilder("meta").u32(1).bytes(locations).build();
  constexpr const char* others = "it holds places in the file that cannot be moved along";
  constexpr const char* several = "there are several where only one can count";
  const Bytes plain = around(MovieSpec());
  MovieSpec disordered;
  disordered.tracks[0].chunkOffsets = {28, 38, 48};
  disordered.tracks[0].chunks = {{2, 1, 1}, {1, 1, 1}};
  const std::vector<RefusalRow> rows{
      {"past the end", around(withChunkAt(1'000'000)), "chunk 1 of track 1 lies past the end of the file"},
      {"partly past the end",
       test::joined({test::fileType("qt  "), withChunkAt(20 + withChunkAt(0).build().size() + 8).build(),
                     AtomBuilder("mdat").zeros(29).build()}),
       "chunk 1 of track 1 lies past the end of the file"},
      {"over two atoms", around(withChunkAt(70)), "chunk 1 of track 1 does not lie inside one atom of media data"},
      {"in a header", around(withChunkAt(21)), "chunk 1 of track 1 does not lie inside one atom of media data"},
      {"in the movie atom", around(withChunkAt(100)), "chunk 1 of track 1 does not lie inside one atom of media data"},
      {"saio", withInTable(AtomBuilder("saio").zeros(12).build()), others},
      {"iloc", around(withMore(fullMeta)), others},
      {"iloc behind flags", around(withMore(flaggedMeta)), others},
      {"iloc beside, behind flags", test::joined({plain, flaggedMeta}), others},
      {"iloc in udta", around(withMore(test::atomOf("udta", {test::atomOf("meta", {locations})}))), others},
      {"iloc beside", test::joined({plain, fullMeta}), others},
      {"iloc beside, without version and flags", test::joined({plain, test::atomOf("meta", {locations})}), others},
      {"two tables", withInTable(AtomBuilder("stco").u32(0).u32(1).u32(28).build()), several},
      {"both tables", withInTable(AtomBuilder("co64").u32(0).u32(1).u64(28).build()), several},
      {"disordered", around(disordered), "the chunks are not in order"},
      {"mvex", around(withMore(test::movieExtends(1, 1, 10, 0))), "the movie is fragmented"},
      {"sidx", test::joined({plain, AtomBuilder("sidx").zeros(24).build()}), "the movie is fragmented"},
      {"moof", test::joined({plain, test::FragmentSpec().build()}), "the movie is fragmented"}};
  for (const RefusalRow& row : rows) {
    const TemporaryFolder folder;
    const auto status = copied(folder.add("from.mov", row.file), folder.path("to.mov"));
    ASSERT_FALSE(status) << row.name;
    EXPECT_EQ(status.error().reason(), row.reason) << row.name;
    EXPECT_EQ(status.error().file, folder.path("from.mov")) << row.name;
    EXPECT_THAT(folder.names(), ElementsAre("from.mov")) << row.name;
  }
}

TEST(FlattenedRefusals, SayThatTheMovieWasChangedSinceItWasOpened) {
  const TemporaryFolder folder;
  const Bytes content = usual.build();
  const std::string from = folder.add("from.mov", content);
  const auto touch = [&] { fs::last_write_time(from, fs::last_write_time(from) + std::chrono::seconds(3)); };
  const auto grow = [&] { fs::resize_file(from, content.size() + 10); };
  const auto cut = [&] { fs::resize_file(from, content.size() - 1); };
  for (const std::function<void()>& change : std::vector<std::function<void()>>{touch, grow, cut}) {
    folder.add("from.mov", content);
    const auto movie = openedMovie(from);
    change();
    const auto status = writeFlattenedCopy(*movie, movie->movieAtom(), folder.path("to.mov"));
    ASSERT_FALSE(status);
    EXPECT_EQ(status.error().reason(), "the file was changed since it was opened");
  }
  folder.add("from.mov", content);
  const auto status = copied(from, folder.path("to.mov"), [&](std::uint64_t done, std::uint64_t) {
    if (done > 0) touch();
    return true;
  });
  ASSERT_FALSE(status);
  EXPECT_EQ(status.error().reason(), "the file was changed since it was opened");
  EXPECT_THAT(folder.names(), ElementsAre("from.mov"));
}

// --- cancelled ---

TEST(FlattenedFaults, ACancelledCopyLeavesNothingBehind) {
  for (const int steps : {0, 1, 2}) {
    const TemporaryFolder folder;
    const std::string from = folder.add("from.mov", usual.build()), to = folder.add("to.mov", Bytes{1, 2, 3});
    int left = steps;
    const auto status = copied(from, to, [&](std::uint64_t, std::uint64_t) { return left-- > 0; });
    ASSERT_FALSE(status) << steps;
    EXPECT_EQ(status.error().reason(), "it was cancelled");
    EXPECT_THAT(folder.names(), ElementsAre("from.mov", "to.mov"));
    EXPECT_EQ(contentOf(to), (Bytes{1, 2, 3}));
  }
}

// --- the target ---

TEST(FlattenedFaults, ATargetThatCannotBeWrittenIsNamedWithItsReason) {
  const TemporaryFolder folder;
  const std::string from = folder.add("from.mov", usual.build());
  fs::create_directory(folder.path("folder"));
  ASSERT_EQ(::mkfifo(folder.path("pipe").c_str(), 0666), 0);
  fs::create_symlink("round", folder.path("round"));
  fs::create_symlink("folder", folder.path("link"));
  const std::vector<std::pair<std::string, const char*>> rows{
      {folder.path("folder"), "it is a folder"},
      {folder.path("link"), "it is a folder"},
      {folder.path("folder/"), "it is a folder"},
      {folder.path("pipe"), "it is not a regular file"},
      {folder.path("none/to.mov"), "there is no such folder"},
      {folder.path("from.mov/to.mov"), "there is no such folder"},
      {folder.path("none/"), "there is no such folder"},
      {folder.path("round"), "too many symbolic links follow each other"},
      {folder.path(std::string(300, 'a')), "the system says \"File name too long\""},
      {folder.path(std::string("a\0b", 3)), "a file name cannot hold a zero byte"},
      {"", "there is no such folder"}};
  const auto before = folder.names();
  for (const auto& [path, reason] : rows) {
    const auto status = copied(from, path);
    ASSERT_FALSE(status) << path;
    EXPECT_EQ(status.error().reason(), reason) << path;
    EXPECT_EQ(status.error().file, path);
    EXPECT_EQ(folder.names(), before);
  }
}

/// The administrator may write everywhere.
TEST(FlattenedFaults, WhatMayNotBeWrittenIsKept) {
  const bool allowed = ::geteuid() == 0;
  const TemporaryFolder folder;
  const std::string from = folder.add("from.mov", usual.build()), to = folder.add("to.mov", Bytes{1, 2, 3});
  ASSERT_EQ(::chmod(to.c_str(), 0444), 0);
  const auto overwritten = copied(from, to);
  EXPECT_EQ(overwritten.has_value(), allowed);
  EXPECT_EQ(contentOf(to).size() == 3, !allowed);

  fs::create_directory(folder.path("folder"));
  ASSERT_EQ(::chmod(folder.path("folder").c_str(), 0555), 0);
  const auto added = copied(from, folder.path("folder/to.mov"));
  EXPECT_EQ(added.has_value(), allowed);
  EXPECT_EQ(added ? "" : added.error().reason(), allowed ? "" : "there is no permission to write there");
  EXPECT_EQ(fs::is_empty(folder.path("folder")), !allowed);
  EXPECT_THAT(folder.names(), ElementsAre("folder", "from.mov", "to.mov"));
}

TEST(FlattenedFaults, AFileBeyondTheLimitIsAnErrorAndNoSignal) {
  const TemporaryFolder folder;
  const std::string from = folder.add("from.mov", usual.build()), to = folder.path("to.mov");
  rlimit before{};
  ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
  const rlimit small{1000, before.rlim_max};
  ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0);
  const auto status = copied(from, to);
  sigset_t pending{};
  sigpending(&pending);
  ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &before), 0);
  ASSERT_FALSE(status);
  EXPECT_EQ(status.error().reason(), "the file would be larger than the system allows");
  EXPECT_EQ(sigismember(&pending, SIGXFSZ), 0);
  EXPECT_THAT(folder.names(), ElementsAre("from.mov"));
}

TEST(FlattenedTarget, ANewFileHasTheModeThatTheUserMaskLeaves) {
  const TemporaryFolder folder;
  const std::string from = folder.add("from.mov", usual.build()), to = folder.path("to.mov");
  const mode_t before = ::umask(027);
  const auto status = copied(from, to);
  ::umask(before);
  ASSERT_TRUE(status);
  struct stat found {};
  ASSERT_EQ(::stat(to.c_str(), &found), 0);
  EXPECT_EQ(found.st_mode & 07777, 0640U);
}

std::string attribute(const std::string& path, const char* name) {
  std::string value(200, '\0');
  const ssize_t size = ::getxattr(path.c_str(), name, value.data(), value.size());
  return size < 0 ? "none" : value.substr(0, static_cast<std::size_t>(size));
}

TEST(FlattenedTarget, AnOverwrittenFileGivesItsModeAttributesAndAccessList) {
  const std::string list = test::someAccessList();
  constexpr const char* access = test::accessListName;
  const TemporaryFolder folder;
  const std::string from = folder.add("from.mov", usual.build()), to = folder.add("to.mov", Bytes{1, 2, 3});
  ASSERT_EQ(::chmod(to.c_str(), 0604), 0);
  // On a file system without these there is nothing to keep, and nothing must appear.
  (void)::setxattr(to.c_str(), "user.reviewed", "by hand", 7, 0);
  (void)::setxattr(to.c_str(), access, list.data(), list.size(), 0);
  struct stat old {
  }, found{};
  ASSERT_EQ(::stat(to.c_str(), &old), 0);
  const std::string reviewed = attribute(to, "user.reviewed"), oldList = attribute(to, access);

  const auto status = copied(from, to);
  ASSERT_TRUE(status) << status.error().message();
  ASSERT_EQ(::stat(to.c_str(), &found), 0);
  EXPECT_EQ(found.st_mode, old.st_mode);
  EXPECT_EQ(found.st_uid, old.st_uid);
  EXPECT_NE(found.st_ino, old.st_ino);
  EXPECT_EQ(attribute(to, "user.reviewed"), reviewed);
  EXPECT_EQ(attribute(to, access), oldList);
  EXPECT_EQ(test::samplesOf(to), test::samplesOf(from));
}

TEST(FlattenedTarget, ALinkMeansWhatItLeadsTo) {
  const TemporaryFolder folder, other;
  const std::string from = folder.add("from.mov", usual.build());
  const std::string there = other.add("there.mov", Bytes{1, 2, 3});
  fs::create_symlink(there, folder.path("link.mov"));
  fs::create_symlink("link.mov", folder.path("second.mov"));
  fs::create_symlink(other.path("new.mov"), folder.path("dangling.mov"));
  EXPECT_TRUE(copied(from, folder.path("second.mov")));
  EXPECT_TRUE(copied(from, folder.path("dangling.mov")));
  EXPECT_THAT(other.names(), ElementsAre("new.mov", "there.mov"));
  EXPECT_EQ(test::samplesOf(there), test::samplesOf(from));
  EXPECT_EQ(test::samplesOf(other.path("new.mov")), test::samplesOf(from));
  for (const char* name : {"link.mov", "second.mov", "dangling.mov"}) {
    EXPECT_TRUE(fs::is_symlink(folder.path(name))) << name;
  }
}

TEST(FlattenedTarget, TheMovieItselfIsReplacedAndStillReadsAsItWas) {
  const TemporaryFolder folder;
  const Bytes content = usual.build();
  const std::string path = folder.add("movie.mov", content);
  fs::create_hard_link(path, folder.path("other name.mov"));
  const auto movie = openedMovie(path);
  const auto before = test::samplesOf(path);
  const auto status = writeFlattenedCopy(*movie, movie->movieAtom(), path);
  ASSERT_TRUE(status) << status.error().message();
  EXPECT_EQ(test::samplesOf(path), before);
  EXPECT_EQ(*movie->readSample(0, 4, 100), before[0][4]);
  EXPECT_NE(contentOf(path), content);
  EXPECT_EQ(contentOf(folder.path("other name.mov")), content);
  EXPECT_THAT(folder.names(), ElementsAre("movie.mov", "other name.mov"));
}

TEST(FlattenedTarget, ANameInTheCurrentFolderNeedsNoFolder) {
  const TemporaryFolder folder;
  const std::string from = folder.add("from.mov", usual.build());
  const fs::path before = fs::current_path();
  fs::current_path(folder.path("."));
  const auto status = copied(from, "to.mov");
  fs::current_path(before);
  EXPECT_TRUE(status);
  EXPECT_THAT(folder.names(), ElementsAre("from.mov", "to.mov"));
}

}  // namespace
}  // namespace movie
