#include "system/FilePlace.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

#include <dirent.h>
#include <fcntl.h>
#include <sys/random.h>
#include <unistd.h>

namespace sys {

namespace {

struct CloseFolder {
  void operator()(DIR* entries) const { ::closedir(entries); }
};

}  // namespace

Result<struct stat> FilePlace::status() const {
  struct stat status = {};
  if (::fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) return failed(errno, Step::Look);
  return status;
}

Descriptor FilePlace::openFolder() const {
  return Descriptor(::openat(folder, name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
}

Result<OpenedPlace> OpenedPlace::open(const std::string& path) {
  const auto last = path.find_last_not_of('/');
  if (last == std::string::npos) return failure(path.empty() ? ENOENT : EBUSY, Step::Open, path);
  const std::string trimmed = path.substr(0, last + 1);
  const auto slash = trimmed.rfind('/');
  const std::string parent = slash == std::string::npos ? "." : trimmed.substr(0, slash + 1);
  const std::string name = slash == std::string::npos ? trimmed : trimmed.substr(slash + 1);
  if (name == "." || name == "..") return failure(EINVAL, Step::Open, path);
  Descriptor folder(::open(parent.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  if (!folder.isOpen()) return failure(errno, Step::Open, path);
  const int number = folder.get();
  return OpenedPlace{std::move(folder), {number, name, trimmed}};
}

Result<std::vector<std::string>> namesInFolder(FileRef folder) {
  const auto failed = [&folder] { return failure(errno, Step::Read, std::string(folder.path)); };
  Descriptor own(::openat(folder.descriptor, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  const std::unique_ptr<DIR, CloseFolder> entries(own.isOpen() ? ::fdopendir(own.get()) : nullptr);
  if (!entries) return failed();
  own.release();
  std::vector<std::string> names;
  for (errno = 0; const dirent* const entry = ::readdir(entries.get()); errno = 0) {
    if (std::strcmp(entry->d_name, ".") != 0 && std::strcmp(entry->d_name, "..") != 0)
      names.emplace_back(entry->d_name);
  }
  if (errno != 0) return failed();
  std::sort(names.begin(), names.end());
  return names;
}

Result<std::vector<std::string>> namesInFolderAt(const std::string& path) {
  const Descriptor folder(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!folder.isOpen()) return failure(errno, Step::Open, path);
  return namesInFolder({folder.get(), path});
}

std::string ownName(std::string_view end) {
  std::uint64_t number = 0;
  untilUninterrupted([&] { return ::getrandom(&number, sizeof number, 0); });
  std::array<char, 32> name{};
  std::snprintf(name.data(), name.size(), ".lumacheck-%016jx", static_cast<std::uintmax_t>(number));
  return name.data() + std::string(end);
}

int renameWithoutReplacing(const FilePlace& from, const FilePlace& to) {
  if (::renameat2(from.folder, from.name.c_str(), to.folder, to.name.c_str(), RENAME_NOREPLACE) == 0) return 0;
  if (errno != EINVAL && errno != ENOSYS) return errno;
  // A file system that does not know the flag.
  if (to.status()) return EEXIST;
  return ::renameat(from.folder, from.name.c_str(), to.folder, to.name.c_str()) == 0 ? 0 : errno;
}

bool isInside(int folder, const struct stat& other) {
  Descriptor at(::openat(folder, ".", O_PATH | O_DIRECTORY | O_CLOEXEC));
  struct stat before = {};
  while (at.isOpen()) {
    struct stat here = {};
    if (::fstat(at.get(), &here) != 0) return false;
    if (isSameFile(here, other)) return true;
    if (isSameFile(here, before)) return false;
    before = here;
    at = Descriptor(::openat(at.get(), "..", O_PATH | O_DIRECTORY | O_CLOEXEC));
  }
  return false;
}

}  // namespace sys
