#include "system/FileAttributes.h"

#include <cerrno>
#include <optional>
#include <string>
#include <vector>

#include <linux/posix_acl.h>
#include <sys/xattr.h>

namespace sys {

namespace {

constexpr const char* accessList = "system.posix_acl_access";

std::vector<std::string> attributeNames(int file) {
  const ssize_t size = ::flistxattr(file, nullptr, 0);
  if (size <= 0) return {};
  std::string list(static_cast<std::size_t>(size), '\0');
  const ssize_t got = ::flistxattr(file, list.data(), list.size());
  std::vector<std::string> names;
  for (std::size_t at = 0; got > 0 && at < static_cast<std::size_t>(got); at += names.back().size() + 1) {
    names.emplace_back(list.c_str() + at);
  }
  return names;
}

std::optional<std::string> attribute(int file, const char* name) {
  const ssize_t size = ::fgetxattr(file, name, nullptr, 0);
  if (size < 0) return std::nullopt;
  std::string value(static_cast<std::size_t>(size), '\0');
  const ssize_t got = ::fgetxattr(file, name, value.data(), value.size());
  if (got < 0) return std::nullopt;
  value.resize(static_cast<std::size_t>(got));
  return value;
}

/// Gives the file's group what an access list gives all others, and leaves the mask, which bounds named users too, as
/// it is. Behind a version of 4 bytes the list has entries of 8: a tag, rights and an id, little-endian.
void giveGroupRightsOfOthers(std::string& list) {
  const auto rightsOf = [&list](int tag) -> char* {
    constexpr std::size_t version = 4, entry = 8, rights = 2;
    for (std::size_t at = version; at + entry <= list.size(); at += entry) {
      if (list[at] == static_cast<char>(tag)) return &list[at + rights];
    }
    return nullptr;
  };
  char* const group = rightsOf(ACL_GROUP_OBJ);
  const char* const others = rightsOf(ACL_OTHER);
  if (group != nullptr && others != nullptr) *group = *others;
}

class Inheritance {
 public:
  Inheritance(FileRef from, FileRef to, const struct stat& status, Heir heir, FileCalls& calls)
      : from_(from), to_(to), status_(status), heir_(heir), calls_(calls) {}

  /// Goes on after a failure; the first one is told.
  Result<void> run() {
    takeOwner();
    TRY(own_, statusOf(to_, calls_));
    note(takeAttributes());
    note(takePermissions());
    if (heir_ == Heir::Copy) note(takeTimes());
    if (error_ == 0) return {};
    return failure(error_, Step::SetAttributes, std::string(to_.path));
  }

 private:
  void note(bool done) {
    if (!done && error_ == 0) error_ = errno;
  }

  void takeOwner() {
    const auto give = [&](uid_t owner) {
      return untilUninterrupted([&] { return calls_.fchown(to_.descriptor, owner, status_.st_gid); }) == 0;
    };
    static_cast<void>(give(status_.st_uid) || give(static_cast<uid_t>(-1)));
  }

  /// Attributes of the system's security modules and of its administrator are not always ours to set.
  bool mustBeKept(const std::string& name) const {
    return heir_ == Heir::Replacement && (name == accessList || name.rfind("user.", 0) == 0);
  }

  /// Whether it takes a file's place in a group that the file was not in: what that group may do is what all others
  /// may.
  bool isInOtherGroup() const { return heir_ == Heir::Replacement && own_.st_gid != status_.st_gid; }

  bool takeAttributes() {
    const std::vector<std::string> names = attributeNames(from_.descriptor);
    for (const std::string& name : names) {
      auto value = attribute(from_.descriptor, name.c_str());
      if (value && name == accessList) {
        hasList_ = true;
        if (isInOtherGroup()) giveGroupRightsOfOthers(*value);
      }
      const auto set = [&] { return calls_.fsetxattr(to_.descriptor, name.c_str(), value->data(), value->size()); };
      const bool kept = value && untilUninterrupted(set) == 0;
      if (!kept && mustBeKept(name)) return false;
    }
    // The folder may have given the new file a list that the old one does not have.
    const bool ownList = !hasList_ && attribute(to_.descriptor, accessList).has_value();
    return !ownList || ::fremovexattr(to_.descriptor, accessList) == 0 || !mustBeKept(accessList);
  }

  bool takePermissions() {
    mode_t mode = permissionsOfCopy(status_, own_.st_uid, own_.st_gid);
    if (heir_ == Heir::Replacement) mode &= 0777U;
    // With a list the group's bits are its mask.
    if (isInOtherGroup() && !hasList_) mode = (mode & 0707U) | ((mode & 07U) << 3U);
    return untilUninterrupted([&] { return calls_.fchmod(to_.descriptor, mode); }) == 0;
  }

  bool takeTimes() {
    const struct timespec times[] = {status_.st_atim, status_.st_mtim};
    return untilUninterrupted([&] { return calls_.futimens(to_.descriptor, times); }) == 0;
  }

  FileRef from_, to_;
  const struct stat& status_;
  Heir heir_;
  FileCalls& calls_;
  struct stat own_ {};  ///< of the heir, once it has its owner
  bool hasList_ = false;
  int error_ = 0;
};

}  // namespace

Result<void> inheritAttributes(FileRef from, FileRef to, const struct stat& status, Heir heir, FileCalls& calls) {
  return Inheritance(from, to, status, heir, calls).run();
}

mode_t permissionsOfCopy(const struct stat& original, uid_t owner, gid_t group) {
  mode_t permissions = original.st_mode & 07777U;
  if (owner != original.st_uid) permissions &= ~mode_t{S_ISUID};
  if (group != original.st_gid && !S_ISDIR(original.st_mode)) permissions &= ~mode_t{S_ISGID};
  return permissions;
}

}  // namespace sys
