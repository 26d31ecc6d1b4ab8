#include "SharedFiles/privileged/StagingFolder.h"

#include <cstdio>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "system/FilePlace.h"

namespace privileged {

namespace {

/// Nobody else's, whatever has been put under its name in the meantime.
bool isOurs(const sys::Descriptor& folder) {
  struct stat status {};
  return ::fstat(folder.get(), &status) == 0 && status.st_uid == ::geteuid() && (status.st_mode & 077) == 0;
}

}  // namespace

StagingFolder::StagingFolder(sys::Descriptor parent, std::string name, sys::Descriptor descriptor)
    : parent_(std::move(parent)), name_(std::move(name)), descriptor_(std::move(descriptor)) {}

tl::expected<StagingFolder, ExitStatus> StagingFolder::makeIn(const PinnedFolder& parent) {
  const std::string name = sys::ownName();
  sys::Descriptor held(::fcntl(parent.descriptor.get(), F_DUPFD_CLOEXEC, 0));
  if (!held.isOpen() || ::mkdirat(held.get(), name.c_str(), 0700) != 0) return tl::unexpected(ExitStatus::cannotCreate);
  sys::Descriptor folder(::openat(held.get(), name.c_str(), O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  StagingFolder staging(std::move(held), name, std::move(folder));
  if (!staging.descriptor_.isOpen() || !isOurs(staging.descriptor_)) return tl::unexpected(ExitStatus::changed);
  return staging;
}

StagingFolder::~StagingFolder() {
  // Without effect on anything but an empty folder.
  if (parent_.isOpen()) ::unlinkat(parent_.get(), name_.c_str(), AT_REMOVEDIR);
}

bool StagingFolder::holds(const std::string& entry) const {
  struct stat status {};
  return ::fstatat(descriptor_.get(), entry.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0;
}

bool StagingFolder::moveOut(const std::string& entry, const std::string& name) const {
  return ::renameat(descriptor_.get(), entry.c_str(), parent_.get(), name.c_str()) == 0;
}

bool StagingFolder::moveToFreePlace(const std::string& entry, const PinnedEntry& place) const {
  return ::renameat2(descriptor_.get(), entry.c_str(), place.folder.descriptor.get(), place.name.c_str(),
                     RENAME_NOREPLACE) == 0;
}

}  // namespace privileged
