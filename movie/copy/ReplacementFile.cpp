#include "movie/copy/ReplacementFile.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <limits.h>
#include <linux/magic.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace movie {

namespace {

constexpr const char* accessList = "system.posix_acl_access";
constexpr int nameAttempts = 100;

template <typename Call>
auto untilUninterrupted(const Call& call) {
  auto result = call();
  while (result < 0 && errno == EINTR) result = call();
  return result;
}

/// Whether a file made there without a name can be given one. Other file systems may make such files and then not link
/// them, which would show only when all is written.
bool linksUnnamedFiles(int folder) {
  struct statfs status {};
  if (::fstatfs(folder, &status) != 0) return false;
  switch (static_cast<unsigned long>(status.f_type)) {
    case EXT4_SUPER_MAGIC:
    case XFS_SUPER_MAGIC:
    case BTRFS_SUPER_MAGIC:
    case F2FS_SUPER_MAGIC:
    case TMPFS_MAGIC:
      return ::access("/proc/self/fd", X_OK) == 0;
    default:
      return false;
  }
}

/// A descriptor closed with its scope.
class Descriptor {
 public:
  explicit Descriptor(int number) : number_(number) {}
  ~Descriptor() {
    if (number_ >= 0) ::close(number_);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  int number() const { return number_; }

 private:
  int number_;
};

/// "/a" of "/a/b", "." of "b", "/" of "/b".
std::string folderOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  if (slash == std::string::npos) return ".";
  return slash == 0 ? "/" : path.substr(0, slash);
}

std::string nameOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  return slash == std::string::npos ? path : path.substr(slash + 1);
}

std::string linkTarget(const std::string& path) {
  std::array<char, PATH_MAX> buffer{};
  const ssize_t length = ::readlink(path.c_str(), buffer.data(), buffer.size());
  return length <= 0 ? std::string{} : std::string(buffer.data(), static_cast<std::size_t>(length));
}

std::string randomName() {
  std::uint64_t number = 0;
  while (::getrandom(&number, sizeof number, 0) < 0 && errno == EINTR) {
  }
  std::array<char, 48> name{};
  std::snprintf(name.data(), name.size(), ".lumacheck-%016llx.partial", static_cast<unsigned long long>(number));
  return name.data();
}

std::optional<Bytes> attribute(int file, const char* name) {
  const ssize_t size = ::fgetxattr(file, name, nullptr, 0);
  if (size < 0) return std::nullopt;
  Bytes value(static_cast<std::size_t>(size));
  const ssize_t got = ::fgetxattr(file, name, value.data(), value.size());
  if (got < 0) return std::nullopt;
  value.resize(static_cast<std::size_t>(got));
  return value;
}

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

/// Attributes of the system's security modules and of its administrator are not always ours to set.
bool mustBeKept(const std::string& name) {
  return name == accessList || name.rfind("user.", 0) == 0;
}

}  // namespace

tl::unexpected<MovieError> ReplacementFile::failure(int number) const {
  return failed(path_, systemReason(number, Access::Create));
}

ReplacementFile::ReplacementFile(ReplacementFile&& other) noexcept
    : path_(std::move(other.path_)),
      calls_(other.calls_),
      name_(std::move(other.name_)),
      ownName_(std::exchange(other.ownName_, {})),
      replaces_(other.replaces_),
      folder_(std::exchange(other.folder_, -1)),
      file_(std::exchange(other.file_, -1)) {}

ReplacementFile::~ReplacementFile() {
  if (!ownName_.empty()) calls_->unlink(folder_, ownName_.c_str());
  if (file_ >= 0) ::close(file_);
  if (folder_ >= 0) ::close(folder_);
}

Result<ReplacementFile> ReplacementFile::create(const std::string& path, CopyCalls& calls) {
  ReplacementFile file(path, calls);
  TRY(file.settleTarget());

  const Descriptor existing(untilUninterrupted(
      [&] { return calls.open(file.folder_, file.name_.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOFOLLOW, 0); }));
  if (existing.number() < 0) {
    if (errno != ENOENT) return file.failure(errno);
    TRY(file.createFile(0666));
    return file;
  }
  file.replaces_ = true;
  // What replaces a file must not be readable to more people than it was, not even before it is complete.
  TRY(file.createFile(0600));
  TRY(file.takeOver(existing.number()));
  return file;
}

Result<void> ReplacementFile::settleTarget() {
  if (path_.find('\0') != std::string::npos) return failed(path_, Reason::ZeroByteInName);
  constexpr int mostLinks = 40;
  std::string target = path_;
  struct stat status {};
  for (int links = 0;; ++links) {
    if (::lstat(target.c_str(), &status) != 0) {
      if (errno != ENOENT) return failure(errno);
      break;
    }
    if (!S_ISLNK(status.st_mode)) {
      if (S_ISDIR(status.st_mode)) return failed(path_, Reason::IsFolder);
      if (!S_ISREG(status.st_mode)) return failed(path_, Reason::NotRegularFile);
      if (::faccessat(AT_FDCWD, target.c_str(), W_OK, AT_EACCESS) != 0) return failure(errno);
      break;
    }
    if (links == mostLinks) return failure(ELOOP);
    const std::string next = linkTarget(target);
    if (next.empty()) return failure(ENOENT);
    target = next.front() == '/' ? next : folderOf(target).append("/").append(next);
  }
  name_ = nameOf(target);
  if (name_.empty()) return failure(ENOENT);
  return openFolder(folderOf(target));
}

Result<void> ReplacementFile::openFolder(const std::string& folder) {
  const auto open = [&](int flags) {
    return untilUninterrupted(
        [&] { return calls_->open(AT_FDCWD, folder.c_str(), flags | O_DIRECTORY | O_CLOEXEC, 0); });
  };
  folder_ = open(O_RDONLY);
  // A folder that may be written but not listed serves, though it cannot be synced by itself.
  if (folder_ < 0 && errno == EACCES) folder_ = open(O_PATH);
  return folder_ < 0 ? Result<void>(failure(errno)) : Result<void>();
}

Result<void> ReplacementFile::createFile(mode_t mode) {
  createUnnamed(mode);
  for (int attempt = 0; attempt < nameAttempts && file_ < 0; ++attempt) {
    const std::string name = randomName();
    file_ = calls_->open(folder_, name.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, mode);
    if (file_ >= 0) ownName_ = name;
    if (file_ < 0 && errno != EEXIST && errno != EINTR) break;
  }
  return file_ < 0 ? Result<void>(failure(errno)) : Result<void>();
}

/// Where it cannot be had, one with a name will do.
void ReplacementFile::createUnnamed(mode_t mode) {
  if (!linksUnnamedFiles(folder_)) return;
  file_ = untilUninterrupted([&] { return calls_->open(folder_, ".", O_RDWR | O_TMPFILE | O_CLOEXEC, mode); });
}

/// Whether the file now has the group of the other one.
bool ReplacementFile::takeOwner(const struct stat& status) {
  const auto give = [&](uid_t owner) {
    return untilUninterrupted([&] { return calls_->fchown(file_, owner, status.st_gid); }) == 0;
  };
  struct stat own {};
  return give(status.st_uid) || give(static_cast<uid_t>(-1)) ||
         (::fstat(file_, &own) == 0 && own.st_gid == status.st_gid);
}

Result<void> ReplacementFile::takeOver(int existing) {
  struct stat status {};
  if (::fstat(existing, &status) != 0) return failure(errno);
  if (!S_ISREG(status.st_mode)) return failure(EINVAL);
  mode_t mode = status.st_mode & 0777;
  if (!takeOwner(status)) mode = (mode & 0707) | ((mode & 07) << 3);
  const auto setMode = [&] { return untilUninterrupted([&] { return calls_->fchmod(file_, mode); }); };
  if (setMode() != 0) return failure(errno);

  const std::vector<std::string> names = attributeNames(existing);
  for (const std::string& name : names) {
    const auto value = attribute(existing, name.c_str());
    const auto set = [&] { return calls_->fsetxattr(file_, name.c_str(), value->data(), value->size()); };
    const bool kept = value && untilUninterrupted(set) == 0;
    if (!kept && mustBeKept(name)) return failure(errno);
  }
  // The folder may have given the new file a list that the old one does not have.
  if (std::find(names.begin(), names.end(), accessList) == names.end() && attribute(file_, accessList)) {
    if (::fremovexattr(file_, accessList) != 0 || setMode() != 0) return failure(errno);
  }
  return {};
}

Result<void> ReplacementFile::resize(std::uint64_t size) {
  const auto end = static_cast<off_t>(size);
  if (untilUninterrupted([&] { return calls_->ftruncate(file_, end); }) != 0) return failure(errno);
  return {};
}

Result<void> ReplacementFile::reserve(std::uint64_t offset, std::uint64_t size) {
  if (size == 0) return {};
  const int result =
      untilUninterrupted([&] { return calls_->reserve(file_, static_cast<off_t>(offset), static_cast<off_t>(size)); });
  if (result != 0 && errno != EOPNOTSUPP && errno != ENOSYS) return failure(errno);
  return {};
}

Result<void> ReplacementFile::write(std::uint64_t offset, ByteView bytes) {
  for (std::size_t done = 0; done < bytes.size();) {
    const ssize_t wrote = untilUninterrupted([&] {
      return calls_->pwrite(file_, bytes.data() + done, bytes.size() - done, static_cast<off_t>(offset + done));
    });
    if (wrote < 0) return failure(errno);
    if (wrote == 0) return failure(ENOSPC);
    done += static_cast<std::size_t>(wrote);
  }
  return {};
}

Result<void> ReplacementFile::takeOwnName() {
  int result = -1;
  for (int attempt = 0; attempt < nameAttempts && result != 0; ++attempt) {
    const std::string name = randomName();
    result = calls_->link(file_, folder_, name.c_str());
    if (result == 0) ownName_ = name;
    if (result != 0 && errno != EEXIST && errno != EINTR) break;
  }
  return result != 0 ? Result<void>(failure(errno)) : Result<void>();
}

/// A link never takes the place of another file, and a rename does so only where that is meant.
Result<void> ReplacementFile::takeName() {
  if (replaces_ && ownName_.empty()) {
    TRY(takeOwnName());
  }
  const auto rename = [this](unsigned flags) {
    return untilUninterrupted([&] { return calls_->rename(folder_, ownName_.c_str(), name_.c_str(), flags); });
  };
  int result = ownName_.empty() ? untilUninterrupted([&] { return calls_->link(file_, folder_, name_.c_str()); })
                                : rename(replaces_ ? 0 : RENAME_NOREPLACE);
  const bool cannotTell = result != 0 && (errno == EINVAL || errno == ENOSYS);
  if (cannotTell && !ownName_.empty() && !replaces_) result = rename(0);
  if (result != 0 && errno == EEXIST) return failed(path_, Reason::NameTaken);
  if (result != 0) return failure(errno);
  ownName_.clear();
  return {};
}

Result<void> ReplacementFile::publish() {
  if (untilUninterrupted([this] { return calls_->fsync(file_); }) != 0) return failure(errno);
  TRY(takeName());
  const int synced = untilUninterrupted([this] { return calls_->fsync(folder_); });
  // EBADF: a folder that may not be listed. EINVAL: a file system that syncs no folders.
  if (synced != 0 && errno != EBADF && errno != EINVAL) {
    return failed(path_, {Reason::NameUncertain, {systemReason(errno, Access::Create)}});
  }
  return {};
}

}  // namespace movie
