#include <array>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <map>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include "system/FileTree.h"
#include "system/FileTreeCopy.h"
#include "system/FileTreeRemoval.h"
#include "tests/support/SmallDisk.h"
#include "tests/system/OrdinaryUser.h"

namespace sys {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

const std::vector<std::string> awkwardNames = {"-rf",  "--",  "a;id",       "$(id)",   "two\nlines",
                                               " ",    "@a",  "*",          ".hidden", "not UTF-8 \xff",
                                               "\x01", "a:b", "back\\slash"};

/// What tells one file from another: type, permissions, owner, times, links and attributes, and what is in it.
std::string described(const std::string& path) {
  struct stat status = {};
  if (::lstat(path.c_str(), &status) != 0) return "missing";
  std::string text = std::to_string(status.st_mode) + " " + std::to_string(status.st_uid) + ":" +
                     std::to_string(status.st_gid) + " " + std::to_string(status.st_mtim.tv_sec) + "." +
                     std::to_string(status.st_mtim.tv_nsec);
  if (S_ISLNK(status.st_mode)) return text + " -> " + fs::read_symlink(path).string();
  std::array<char, 100> value = {};
  const ssize_t length = ::getxattr(path.c_str(), "user.note", value.data(), value.size());
  if (length > 0) text += " " + std::string(value.data(), static_cast<std::size_t>(length));
  if (S_ISREG(status.st_mode)) {
    std::ifstream stream(path, std::ios::binary);
    text += " " + std::string(std::istreambuf_iterator<char>(stream), {});
  }
  return text;
}

using Snapshot = std::map<std::string, std::string>;

/// The tree by the names in it, without entering links.
Snapshot snapshot(const std::string& root) {
  Snapshot entries{{"", described(root)}};
  if (!fs::is_directory(fs::symlink_status(root))) return entries;
  for (const auto& entry : fs::recursive_directory_iterator(root)) {
    entries[entry.path().string().substr(root.size())] = described(entry.path().string());
  }
  return entries;
}

std::vector<std::string> namesIn(const std::string& folder) {
  std::vector<std::string> names;
  for (const auto& entry : fs::directory_iterator(folder)) names.push_back(entry.path().filename().string());
  std::sort(names.begin(), names.end());
  return names;
}

void write(const std::string& path, const std::string& content = "content") {
  std::ofstream(path, std::ios::binary) << content;
}

void setTime(const std::string& path, time_t seconds) {
  const struct timespec times[] = {{seconds, 1}, {seconds, 123456789}};
  EXPECT_EQ(::utimensat(AT_FDCWD, path.c_str(), times, AT_SYMLINK_NOFOLLOW), 0);
}

void note(const std::string& path, const std::string& text) {
  EXPECT_EQ(::setxattr(path.c_str(), "user.note", text.data(), text.size(), 0), 0);
}

/// A folder with one of everything.
std::string makeTree(const std::string& root) {
  fs::create_directories(root + "/folder/empty");
  for (const std::string& name : awkwardNames) write(root + "/folder/" + name, name);
  for (const std::string& name : awkwardNames) fs::create_directory(root + "/" + name);
  write(root + "/script", "#!/bin/sh\n");
  EXPECT_EQ(::chmod((root + "/script").c_str(), 04755), 0);
  note(root + "/script", std::string("with a null\0character", 21));
  write(root + "/locked");
  EXPECT_EQ(::chmod((root + "/locked").c_str(), 0400), 0);
  EXPECT_EQ(::symlink("/etc/passwd", (root + "/outside").c_str()), 0);
  EXPECT_EQ(::symlink("nowhere", (root + "/dangling").c_str()), 0);
  EXPECT_EQ(::symlink("folder", (root + "/to folder").c_str()), 0);
  EXPECT_EQ(::symlink("..", (root + "/folder/up").c_str()), 0);
  EXPECT_EQ(::mkfifo((root + "/pipe").c_str(), 0640), 0);
  EXPECT_EQ(::mknod((root + "/socket").c_str(), S_IFSOCK | 0600, 0), 0);
  setTime(root + "/script", 443779200);
  setTime(root + "/outside", 443779201);
  setTime(root + "/pipe", 443779202);
  note(root + "/folder", "a folder's");
  EXPECT_EQ(::chmod((root + "/folder").c_str(), 0555), 0);
  setTime(root + "/folder", 443779203);
  setTime(root, 443779204);
  return root;
}

class FileTree : public testing::Test {
 protected:
  FileTree() {
    std::string pattern = (fs::temp_directory_path() / "lumacheck-tree-XXXXXX").string();
    root_ = ::mkdtemp(pattern.data());
  }
  ~FileTree() override {
    for (const auto& entry : fs::recursive_directory_iterator(root_)) {
      if (entry.is_directory() && !entry.is_symlink()) fs::permissions(entry.path(), fs::perms::owner_all);
    }
    fs::remove_all(root_);
  }
  FileTree(const FileTree&) = delete;
  FileTree& operator=(const FileTree&) = delete;

  std::string path(const std::string& name) const { return root_ + "/" + name; }
  static int numberOf(const Result<void>& result) { return result ? 0 : result.error().code; }

  std::string root_;
};

// --- Copies ----------------------------------------------------------------------------------------------------------

TEST_F(FileTree, CopiesEverythingAsItIs) {
  const std::string source = makeTree(path("source"));
  const Snapshot before = snapshot(source);
  EXPECT_EQ(numberOf(copyTree(source, path("copy"))), 0);
  EXPECT_EQ(snapshot(path("copy")), before);
  EXPECT_EQ(snapshot(source), before);
  EXPECT_THAT(namesIn(root_), ElementsAre("copy", "source"));
}

TEST_F(FileTree, CopiesMovesAndRemovesUnderAnyName) {
  for (const std::string& name : awkwardNames) {
    write(path(name), name);
    EXPECT_EQ(numberOf(copyTree(path(name), path("copy of " + name))), 0);
    EXPECT_EQ(numberOf(moveTree(path("copy of " + name), path(name + " moved"))), 0);
    EXPECT_EQ(snapshot(path(name + " moved")), snapshot(path(name)));
    EXPECT_EQ(numberOf(removeTree(path(name))), 0);
    EXPECT_EQ(numberOf(removeTree(path(name + " moved"))), 0);
    EXPECT_THAT(namesIn(root_), IsEmpty());
  }
}

TEST_F(FileTree, CopiesALinkAsALinkWhateverSlashesFollow) {
  fs::create_directory(path("folder"));
  for (const std::string end : {"", "/", "//"}) {
    fs::remove(path("link"));
    fs::create_symlink("folder", path("link"));
    EXPECT_EQ(numberOf(copyTree(path("link") + end, path("copy") + end)), 0);
    EXPECT_EQ(fs::read_symlink(path("copy")), "folder");
    EXPECT_EQ(numberOf(removeTree(path("copy") + end)), 0);
    EXPECT_TRUE(fs::is_directory(path("folder")));
  }
}

TEST_F(FileTree, KeepsHoles) {
  constexpr off_t size = off_t{1} << 32U;
  const int file = ::open(path("sparse").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
  EXPECT_EQ(::pwrite(file, "in between", 10, size / 2), 10);
  EXPECT_EQ(::ftruncate(file, size), 0);
  ::close(file);
  EXPECT_EQ(numberOf(copyTree(path("sparse"), path("copy"))), 0);
  struct stat status = {};
  EXPECT_EQ(::stat(path("copy").c_str(), &status), 0);
  EXPECT_EQ(status.st_size, size);
  EXPECT_LT(status.st_blocks, 1000);
  std::ifstream copy(path("copy"), std::ios::binary);
  copy.seekg(size / 2);
  std::string text(10, ' ');
  copy.read(text.data(), 10);
  EXPECT_EQ(text, "in between");
}

TEST_F(FileTree, CopiesAFileThatDoesNotTellItsSize) {
  EXPECT_EQ(numberOf(copyTree("/proc/self/status", path("copy"))), 0);
  EXPECT_GT(fs::file_size(path("copy")), 100U);
}

TEST_F(FileTree, RefusesADestinationThatExists) {
  write(path("source"), "new");
  write(path("file"), "old");
  fs::create_directory(path("folder"));
  fs::create_symlink("nowhere", path("dangling"));
  for (const std::string name : {"file", "folder", "dangling", "source"}) {
    const std::string before = described(path(name));
    EXPECT_EQ(numberOf(copyTree(path("source"), path(name))), EEXIST);
    EXPECT_EQ(numberOf(moveTree(path("source"), path(name))), EEXIST);
    EXPECT_EQ(described(path(name)), before);
  }
  EXPECT_THAT(namesIn(root_), ElementsAre("dangling", "file", "folder", "source"));
  EXPECT_THAT(namesIn(path("folder")), IsEmpty());
}

TEST_F(FileTree, RefusesToPutAFolderIntoItself) {
  fs::create_directories(path("folder/deep/deeper"));
  fs::create_symlink("folder", path("alias"));
  for (const std::string inside : {"folder/x", "folder/deep/deeper/x", "alias/x", "alias/deep/../x"}) {
    EXPECT_EQ(numberOf(copyTree(path("folder"), path(inside))), EINVAL) << inside;
    EXPECT_EQ(numberOf(moveTree(path("folder"), path(inside))), EINVAL) << inside;
  }
  EXPECT_THAT(namesIn(path("folder")), ElementsAre("deep"));
  EXPECT_THAT(namesIn(path("folder/deep/deeper")), IsEmpty());
  EXPECT_EQ(numberOf(copyTree(path("folder"), path("folder 2"))), 0);
}

TEST_F(FileTree, RefusesPathsWithoutALastName) {
  write(path("file"));
  fs::create_directories(path("a/b"));
  for (const std::string last : {"/.", "/..", "/b/..", "/b/../"}) {
    EXPECT_EQ(numberOf(removeTree(path("a") + last)), EINVAL) << last;
    EXPECT_EQ(numberOf(copyTree(path("a") + last, path("x"))), EINVAL) << last;
    EXPECT_EQ(numberOf(moveTree(path("a") + last, path("x"))), EINVAL) << last;
  }
  EXPECT_EQ(numberOf(copyTree(path("file"), "/")), EBUSY);
  EXPECT_EQ(numberOf(copyTree("/", path("x"))), EBUSY);
  EXPECT_EQ(numberOf(copyTree("", path("x"))), ENOENT);
  EXPECT_TRUE(fs::exists(path("a/b")) && fs::exists(path("file")));
}

TEST_F(FileTree, RefusesSourcesAndFoldersThatAreMissing) {
  write(path("file"));
  EXPECT_EQ(numberOf(copyTree(path("vanished"), path("copy"))), ENOENT);
  EXPECT_EQ(numberOf(moveTree(path("vanished"), path("copy"))), ENOENT);
  EXPECT_EQ(numberOf(removeTree(path("vanished"))), ENOENT);
  EXPECT_EQ(numberOf(copyTree(path("file"), path("missing/copy"))), ENOENT);
  EXPECT_EQ(numberOf(moveTree(path("file"), path("missing/copy"))), ENOENT);
  EXPECT_EQ(numberOf(copyTree(path("file"), path("file/copy"))), ENOTDIR);
  EXPECT_EQ(numberOf(copyTree(path("file"), path(std::string(300, 'x')))), ENAMETOOLONG);
  EXPECT_THAT(namesIn(root_), ElementsAre("file"));
}

TEST_F(FileTree, LeavesNothingOfACopyThatFails) {
  const OrdinaryUser user(root_);
  fs::create_directories(path("source/a/empty"));
  write(path("source/a/file"));
  write(path("source/b"));
  EXPECT_EQ(::chmod(path("source/a").c_str(), 0555), 0);
  EXPECT_EQ(::chmod(path("source/b").c_str(), 0), 0);
  EXPECT_EQ(numberOf(copyTree(path("source"), path("copy"))), EACCES);
  EXPECT_THAT(namesIn(root_), ElementsAre("source"));
  EXPECT_EQ(numberOf(copyTree(path("source/a"), path("copy"))), 0);
  EXPECT_EQ(snapshot(path("copy")), snapshot(path("source/a")));
  EXPECT_EQ(::chmod(path("copy").c_str(), 0755), 0);
}

TEST_F(FileTree, LetsOneOfManyCopiesAppearWhole) {
  const std::string content(1 << 20, 'x');
  write(path("source"), content);
  std::array<int, 8> numbers = {};
  std::vector<std::thread> threads;
  for (int& number : numbers) {
    threads.emplace_back([&number, this] { number = numberOf(copyTree(path("source"), path("copy"))); });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(std::count(numbers.begin(), numbers.end(), 0), 1);
  EXPECT_EQ(std::count(numbers.begin(), numbers.end(), EEXIST), 7);
  EXPECT_EQ(described(path("copy")), described(path("source")));
  EXPECT_THAT(namesIn(root_), ElementsAre("copy", "source"));
}

TEST_F(FileTree, WorksHundredsOfFoldersDeep) {
  std::string deep = path("deep");
  for (int i = 0; i < 300; ++i) deep += "/d";
  fs::create_directories(deep);
  write(deep + "/file");
  EXPECT_EQ(numberOf(copyTree(path("deep"), path("copy"))), 0);
  EXPECT_EQ(snapshot(path("copy")), snapshot(path("deep")));
  EXPECT_EQ(numberOf(removeTree(path("copy"))), 0);
  EXPECT_EQ(numberOf(removeTree(path("deep"))), 0);
}

// --- Removal ---------------------------------------------------------------------------------------------------------

TEST_F(FileTree, RemovesTreesAndNothingThatLinksLeadTo) {
  write(path("kept"));
  fs::create_directories(path("tree/folder"));
  fs::create_symlink("../kept", path("tree/file link"));
  fs::create_symlink("..", path("tree/folder/up"));
  for (const std::string& name : awkwardNames) write(path("tree/folder/" + name));
  EXPECT_EQ(numberOf(removeTree(path("tree"))), 0);
  EXPECT_THAT(namesIn(root_), ElementsAre("kept"));
}

TEST_F(FileTree, RemovesNothingButWhatIsRecorded) {
  const auto opened = OpenedPlace::open(path("source"));
  ASSERT_TRUE(opened);
  const std::vector<std::pair<std::string, std::function<void()>>> changes = {
      {"longer", [this] { write(path("source/file"), "longer than before"); }},
      {"touched", [this] { setTime(path("source/file"), 1000); }},
      {"added", [this] { write(path("source/folder/new")); }},
      {"replaced", [this] {
         write(path("new"), "content");
         fs::rename(path("new"), path("source/folder/file"));
       }}};
  for (const auto& [name, change] : changes) {
    fs::remove_all(path("source"));
    fs::create_directories(path("source/folder"));
    write(path("source/file"));
    write(path("source/folder/file"));
    PendingCopy copy({opened->folder.get(), "copy", path("copy")}, TreeCopy::Durability::synced);
    EXPECT_EQ(numberOf(copy.make(opened->place)), 0);
    EXPECT_EQ(numberOf(checkRemoval(opened->place, copy.record())), 0);
    change();
    EXPECT_EQ(numberOf(checkRemoval(opened->place, copy.record())), EBUSY) << name;
    const auto changed = snapshot(path("source/folder"));
    EXPECT_EQ(numberOf(TreeRemoval(copy.record()).remove(opened->place)), EBUSY) << name;
    EXPECT_TRUE(fs::exists(path("source"))) << name;
    if (name == "added") {
      EXPECT_EQ(described(path("source/folder/new")), changed.at("/new"));
    }
  }
  EXPECT_THAT(namesIn(root_), ElementsAre("source"));
}

TEST_F(FileTree, TellsBeforeItRemovesAnythingWhatIsForbidden) {
  const OrdinaryUser user(root_);
  fs::create_directories(path("source/z"));
  write(path("source/a"));
  write(path("source/z/file"));
  EXPECT_EQ(::chmod(path("source/z").c_str(), 0555), 0);
  const auto opened = OpenedPlace::open(path("source"));
  ASSERT_TRUE(opened);
  PendingCopy copy({opened->folder.get(), "copy", path("copy")}, TreeCopy::Durability::synced);
  EXPECT_EQ(numberOf(copy.make(opened->place)), 0);
  EXPECT_EQ(numberOf(checkRemoval(opened->place, copy.record())), EACCES);
  EXPECT_EQ(::chmod(root_.c_str(), 0555), 0);
  EXPECT_EQ(numberOf(checkRemovalFromFolder(opened->place)), EACCES);
  EXPECT_EQ(numberOf(removeTree(path("source/z"))), EACCES);
  EXPECT_EQ(::chmod(root_.c_str(), 0755), 0);
  EXPECT_TRUE(fs::exists(path("source/a")) && fs::exists(path("source/z/file")));
}

// --- Folders ---------------------------------------------------------------------------------------------------------

TEST_F(FileTree, MakesFoldersOnTheWayOrNone) {
  EXPECT_EQ(numberOf(createFolders(path("a/b/c"))), 0);
  EXPECT_EQ(numberOf(createFolders(path("a/b/c"))), 0);
  fs::create_symlink("a", path("link"));
  EXPECT_EQ(numberOf(createFolders(path("link"))), 0);
  EXPECT_EQ(numberOf(createFolders(path("link//x/"))), 0);
  EXPECT_TRUE(fs::is_directory(path("a/x")));
  write(path("file"));
  EXPECT_EQ(numberOf(createFolders(path("file"))), EEXIST);
  EXPECT_EQ(numberOf(createFolders(path("file/x"))), EEXIST);
  fs::create_symlink("nowhere", path("dangling"));
  EXPECT_EQ(numberOf(createFolders(path("dangling"))), EEXIST);
  EXPECT_EQ(numberOf(createFolders(path("new/newer/" + std::string(300, 'x')))), ENAMETOOLONG);
  EXPECT_THAT(namesIn(root_), ElementsAre("a", "dangling", "file", "link"));
  EXPECT_EQ(numberOf(createFolders("/")), 0);
}

// --- To another file system, and a full one
// ---------------------------------------------------------------------------

TEST_F(FileTree, MovesToAnotherFileSystemAndBack) {
  movie::test::onSmallDisk("a move to another file system", [this](const std::string& disk) {
    const std::string source = makeTree(path("source"));
    // The small disk knows no attributes of users.
    EXPECT_EQ(::removexattr((source + "/script").c_str(), "user.note"), 0);
    EXPECT_EQ(::removexattr((source + "/folder").c_str(), "user.note"), 0);
    const Snapshot before = snapshot(source);
    EXPECT_EQ(numberOf(moveTree(source, disk + "/moved")), 0);
    EXPECT_EQ(snapshot(disk + "/moved"), before);
    EXPECT_THAT(namesIn(root_), IsEmpty());
    EXPECT_EQ(::chmod((disk + "/moved/folder").c_str(), 0755), 0);
    EXPECT_EQ(numberOf(moveTree(disk + "/moved", path("back"))), 0);
    EXPECT_EQ(snapshot(path("back")).size(), before.size());
    EXPECT_THAT(namesIn(disk), IsEmpty());
  });
}

TEST_F(FileTree, LosesNothingAndLeavesNothingWhenTheDiskIsFull) {
  movie::test::onSmallDisk("a full disk", [this](const std::string& disk) {
    fs::create_directories(path("source/folder"));
    write(path("source/a"), "small");
    write(path("source/folder/b"), std::string(2 << 20, 'x'));
    EXPECT_EQ(::chmod(path("source/folder").c_str(), 0755), 0);
    const Snapshot before = snapshot(path("source"));
    EXPECT_EQ(numberOf(copyTree(path("source"), disk + "/copy")), ENOSPC);
    EXPECT_EQ(numberOf(moveTree(path("source"), disk + "/moved")), ENOSPC);
    EXPECT_EQ(numberOf(moveTree(path("source/folder/b"), disk + "/moved")), ENOSPC);
    EXPECT_THAT(namesIn(disk), IsEmpty());
    EXPECT_EQ(snapshot(path("source")), before);
  });
}

TEST_F(FileTree, StopsAMoveWhoseSourceMayNotBeRemoved) {
  movie::test::onSmallDisk("a source that nobody may write to", [this](const std::string& disk) {
    fs::create_directories(path("source/folder"));
    write(path("source/file"));
    const std::string source = path("source");
    ASSERT_EQ(::mount(source.c_str(), source.c_str(), nullptr, MS_BIND, nullptr), 0);
    ASSERT_EQ(
        ::mount(nullptr, source.c_str(), nullptr, MS_REMOUNT | MS_BIND | MS_RDONLY | MS_NOSUID | MS_NODEV, nullptr), 0);
    const Snapshot before = snapshot(source);
    EXPECT_EQ(numberOf(moveTree(source + "/file", disk + "/file")), EROFS);
    EXPECT_EQ(numberOf(moveTree(source + "/folder", disk + "/folder")), EROFS);
    EXPECT_THAT(namesIn(disk), IsEmpty());
    EXPECT_EQ(snapshot(source), before);
    EXPECT_EQ(numberOf(copyTree(source + "/file", source + "/copy")), EROFS);
    ::umount(source.c_str());
  });
}

TEST_F(FileTree, KeepsTheWholeCopyWhenTheSourceCannotGoEntirely) {
  movie::test::onSmallDisk("a source with a disk in it", [this](const std::string& disk) {
    fs::create_directories(path("source/disk"));
    write(path("source/a"));
    ASSERT_EQ(::mount("lumacheck", path("source/disk").c_str(), "tmpfs", 0, "size=1m"), 0);
    write(path("source/disk/b"), "in the disk");
    const auto result = moveTree(path("source"), disk + "/moved");
    EXPECT_EQ(numberOf(result), EBUSY);
    EXPECT_TRUE(!result && result.error().what == Step::RemoveOriginal);
    EXPECT_TRUE(fs::exists(disk + "/moved/a") && fs::exists(disk + "/moved/disk/b"));
    ::umount(path("source/disk").c_str());
  });
}

}  // namespace
}  // namespace sys
