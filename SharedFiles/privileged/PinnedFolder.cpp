#include "SharedFiles/privileged/PinnedFolder.h"

#include <array>
#include <cerrno>
#include <climits>
#include <utility>

#include <fcntl.h>
#include <unistd.h>

#include "SharedFiles/privileged/ToolCommand.h"

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

std::string placeOf(const sys::Descriptor& descriptor) {
  std::array<char, PATH_MAX> place{};
  const std::string link = "/proc/self/fd/" + std::to_string(descriptor.get());
  const ssize_t length = ::readlink(link.c_str(), place.data(), place.size());
  return length > 0 ? std::string(place.data(), static_cast<std::size_t>(length)) : std::string();
}

/// The folder, if it still lies where the path says.
tl::expected<PinnedFolder, ExitStatus> pinned(sys::Descriptor descriptor, const std::string& path) {
  if (placeOf(descriptor) != path) return tl::unexpected(ExitStatus::changed);
  return PinnedFolder{std::move(descriptor), path};
}

}  // namespace

tl::expected<PinnedFolder, ExitStatus> pinFolder(const std::string& plainPath) {
  sys::Descriptor folder(::open("/", folderFlags));
  for (const std::string& name : componentsOf(plainPath)) {
    auto next = openFolderIn(folder, name);
    if (!next) return tl::unexpected(next.error());
    folder = std::move(*next);
  }
  return pinned(std::move(folder), plainPath);
}

tl::expected<PinnedFolder, ExitStatus> pinFolderIn(const PinnedFolder& parent, const std::string& name) {
  auto folder = openFolderIn(parent.descriptor, name);
  if (!folder) return tl::unexpected(folder.error());
  return pinned(std::move(*folder), parent.pathOf(name));
}

tl::expected<struct stat, ExitStatus> PinnedEntry::status() const {
  return statusIn(folder.descriptor, name);
}

tl::expected<PinnedEntry, ExitStatus> pinEntry(const std::string& plainPath) {
  auto folder = pinFolder(parentOf(plainPath));
  if (!folder) return tl::unexpected(folder.error());
  return PinnedEntry{std::move(*folder), nameOf(plainPath)};
}

std::string parentOf(const std::string& plainPath) {
  const std::size_t slash = plainPath.rfind('/');
  return slash == 0 ? "/" : plainPath.substr(0, slash);
}

std::string nameOf(const std::string& plainPath) {
  return plainPath.substr(plainPath.rfind('/') + 1);
}

}  // namespace privileged
