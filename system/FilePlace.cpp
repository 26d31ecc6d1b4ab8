#include "system/FilePlace.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

namespace {

struct CloseFolder {
  void operator()(DIR* entries) const { ::closedir(entries); }
};

}  // namespace

tl::expected<struct stat, int> FilePlace::status() const {
  struct stat status = {};
  if (::fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) return tl::unexpected(errno);
  return status;
}

FileDescriptor FilePlace::openFolder() const {
  return FileDescriptor(::openat(folder, name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
}

tl::expected<OpenedPlace, FileTreeError> OpenedPlace::open(const std::string& path) {
  const auto last = path.find_last_not_of('/');
  if (last == std::string::npos) return tl::unexpected(FileTreeError{path.empty() ? ENOENT : EBUSY, path});
  const std::string trimmed = path.substr(0, last + 1);
  const auto slash = trimmed.rfind('/');
  const std::string parent = slash == std::string::npos ? "." : trimmed.substr(0, slash + 1);
  const std::string name = slash == std::string::npos ? trimmed : trimmed.substr(slash + 1);
  if (name == "." || name == "..") return tl::unexpected(FileTreeError{EINVAL, path});
  FileDescriptor folder(::open(parent.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  if (!folder.isOpen()) return tl::unexpected(FileTreeError{errno, path});
  const int number = folder.get();
  return OpenedPlace{std::move(folder), {number, name, trimmed}};
}

tl::expected<std::vector<std::string>, int> namesInFolder(int folder) {
  const int own = ::openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (own < 0) return tl::unexpected(errno);
  const std::unique_ptr<DIR, CloseFolder> entries(::fdopendir(own));
  if (!entries) {
    const int number = errno;
    ::close(own);
    return tl::unexpected(number);
  }
  std::vector<std::string> names;
  for (errno = 0; const dirent* const entry = ::readdir(entries.get()); errno = 0) {
    if (std::strcmp(entry->d_name, ".") != 0 && std::strcmp(entry->d_name, "..") != 0)
      names.emplace_back(entry->d_name);
  }
  if (errno != 0) return tl::unexpected(errno);
  std::sort(names.begin(), names.end());
  return names;
}

int renameWithoutReplacing(const FilePlace& from, const FilePlace& to) {
  if (::renameat2(from.folder, from.name.c_str(), to.folder, to.name.c_str(), RENAME_NOREPLACE) == 0) return 0;
  if (errno != EINVAL && errno != ENOSYS) return errno;
  // A file system that does not know the flag.
  if (to.status()) return EEXIST;
  return ::renameat(from.folder, from.name.c_str(), to.folder, to.name.c_str()) == 0 ? 0 : errno;
}

bool isInside(int folder, const struct stat& other) {
  FileDescriptor at(::openat(folder, ".", O_PATH | O_DIRECTORY | O_CLOEXEC));
  struct stat before = {};
  while (at.isOpen()) {
    struct stat here = {};
    if (::fstat(at.get(), &here) != 0) return false;
    if (here.st_dev == other.st_dev && here.st_ino == other.st_ino) return true;
    if (here.st_dev == before.st_dev && here.st_ino == before.st_ino) return false;
    before = here;
    at = FileDescriptor(::openat(at.get(), "..", O_PATH | O_DIRECTORY | O_CLOEXEC));
  }
  return false;
}
