#include "SharedFiles/privileged/PinnedFolder.h"

#include <cerrno>
#include <filesystem>
#include <utility>

#include <fcntl.h>

#include "SharedFiles/privileged/ToolCommand.h"
#include "system/Error.h"

namespace privileged {

namespace {

constexpr int folderFlags = O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

tl::expected<struct stat, ExitStatus> statusIn(const sys::Descriptor& folder, const std::string& name) {
  struct stat found {};
  if (::fstatat(folder.get(), name.c_str(), &found, AT_SYMLINK_NOFOLLOW) == 0) return found;
  return tl::unexpected(errno == ENOENT ? ExitStatus::notThere : ExitStatus::systemError);
}

tl::expected<sys::Descriptor, ExitStatus> openFolderIn(const sys::Descriptor& parent, const std::string& name) {
  sys::Descriptor folder(::openat(parent.get(), name.c_str(), folderFlags));
  if (folder.isOpen()) return folder;
  if (errno != ENOTDIR) return tl::unexpected(ExitStatus::notThere);
  const auto standing = statusIn(parent, name);
  const bool isFile = standing && !S_ISLNK(standing->st_mode) && !S_ISDIR(standing->st_mode);
  return tl::unexpected(isFile ? ExitStatus::notThere : ExitStatus::changed);
}

/// The folder, if it still lies where the path says.
tl::expected<PinnedFolder, ExitStatus> pinned(sys::Descriptor descriptor, const std::string& path) {
  std::error_code error;
  const auto place = std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(descriptor.get()), error);
  if (place.native() != path) return tl::unexpected(ExitStatus::changed);
  return PinnedFolder{std::move(descriptor), path};
}

}  // namespace

tl::expected<PinnedFolder, ExitStatus> pinFolder(const std::string& plainPath) {
  sys::Descriptor folder(::open("/", folderFlags));
  for (const std::string& name : componentsOf(plainPath)) {
    TRY(auto next, openFolderIn(folder, name));
    folder = std::move(next);
  }
  return pinned(std::move(folder), plainPath);
}

tl::expected<PinnedFolder, ExitStatus> pinFolderIn(const PinnedFolder& parent, const std::string& name) {
  TRY(auto folder, openFolderIn(parent.descriptor, name));
  return pinned(std::move(folder), parent.pathOf(name));
}

tl::expected<struct stat, ExitStatus> PinnedEntry::status() const {
  return statusIn(folder.descriptor, name);
}

tl::expected<PinnedEntry, ExitStatus> pinEntry(const std::string& plainPath) {
  TRY(auto folder, pinFolder(parentOf(plainPath)));
  return PinnedEntry{std::move(folder), nameOf(plainPath)};
}

std::string parentOf(const std::string& plainPath) {
  const std::size_t slash = plainPath.rfind('/');
  return slash == 0 ? "/" : plainPath.substr(0, slash);
}

std::string nameOf(const std::string& plainPath) {
  return plainPath.substr(plainPath.rfind('/') + 1);
}

}  // namespace privileged
