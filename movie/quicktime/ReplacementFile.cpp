#include "movie/quicktime/ReplacementFile.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <system_error>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <limits.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace movie {

namespace {

constexpr const char* accessList = "system.posix_acl_access";

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

std::string reasonOf(int error) {
  switch (error) {
    case ENOENT:
    case ENOTDIR:
      return "there is no such folder";
    case EACCES:
    case EPERM:
      return "there is no permission to write there";
    case EROFS:
      return "the file system is read-only";
    case ENOSPC:
    case EDQUOT:
      return "there is not enough space on the disk";
    case EFBIG:
      return "the file would be larger than the system allows";
    case ELOOP:
      return "too many symbolic links follow each other";
    default:
      return "the system says \"" + std::generic_category().message(error) + "\"";
  }
}

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
  return tl::make_unexpected(MovieError{path_, {}, 0, reasonOf(number)});
}

ReplacementFile::ReplacementFile(ReplacementFile&& other) noexcept
    : path_(std::move(other.path_)),
      name_(std::move(other.name_)),
      ownName_(std::exchange(other.ownName_, {})),
      folder_(std::exchange(other.folder_, -1)),
      file_(std::exchange(other.file_, -1)) {}

ReplacementFile::~ReplacementFile() {
  if (!ownName_.empty()) ::unlinkat(folder_, ownName_.c_str(), 0);
  if (file_ >= 0) ::close(file_);
  if (folder_ >= 0) ::close(folder_);
}

Result<ReplacementFile> ReplacementFile::create(const std::string& path) {
  ReplacementFile file(path);
  if (auto status = file.settleTarget(); !status) return tl::make_unexpected(status.error());

  const Descriptor existing(::openat(file.folder_, file.name_.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOFOLLOW));
  if (existing.number() < 0) {
    if (errno != ENOENT) return file.failure(errno);
    if (auto made = file.createFile(0666); !made) return tl::make_unexpected(made.error());
    return file;
  }
  // What replaces a file must not be readable to more people than it was, not even before it is complete.
  if (auto made = file.createFile(0600); !made) return tl::make_unexpected(made.error());
  if (auto taken = file.takeOver(existing.number()); !taken) return tl::make_unexpected(taken.error());
  return file;
}

Result<void> ReplacementFile::settleTarget() {
  const auto refused = [&](const char* reason) { return tl::make_unexpected(MovieError{path_, {}, 0, reason}); };
  if (path_.find('\0') != std::string::npos) return refused("a file name cannot hold a zero byte");
  constexpr int mostLinks = 40;
  std::string target = path_;
  struct stat status {};
  for (int links = 0;; ++links) {
    if (::lstat(target.c_str(), &status) != 0) {
      if (errno != ENOENT) return failure(errno);
      break;
    }
    if (!S_ISLNK(status.st_mode)) {
      if (S_ISDIR(status.st_mode)) return refused("it is a folder");
      if (!S_ISREG(status.st_mode)) return refused("it is not a regular file");
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
  folder_ = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  // A folder that may be written but not listed serves, though it cannot be synced by itself.
  if (folder_ < 0 && errno == EACCES) folder_ = ::open(folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC);
  return folder_ < 0 ? Result<void>(failure(errno)) : Result<void>();
}

Result<void> ReplacementFile::createFile(mode_t mode) {
  constexpr int attempts = 100;
  for (int attempt = 0; attempt < attempts && file_ < 0; ++attempt) {
    const std::string name = randomName();
    file_ = ::openat(folder_, name.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, mode);
    if (file_ >= 0) ownName_ = name;
    if (file_ < 0 && errno != EEXIST && errno != EINTR) break;
  }
  return file_ < 0 ? Result<void>(failure(errno)) : Result<void>();
}

Result<void> ReplacementFile::takeOver(int existing) {
  struct stat status {};
  if (::fstat(existing, &status) != 0) return failure(errno);
  if (!S_ISREG(status.st_mode)) return failure(EINVAL);
  const bool ownerKept = ::fchown(file_, status.st_uid, status.st_gid) == 0;
  if (!ownerKept && ::fchown(file_, static_cast<uid_t>(-1), status.st_gid) != 0) errno = 0;  // stays the writer's own
  if (::fchmod(file_, status.st_mode & 0777) != 0) return failure(errno);

  const std::vector<std::string> names = attributeNames(existing);
  for (const std::string& name : names) {
    const auto value = attribute(existing, name.c_str());
    const bool kept = value && ::fsetxattr(file_, name.c_str(), value->data(), value->size(), 0) == 0;
    if (!kept && mustBeKept(name)) return failure(errno);
  }
  // The folder may have given the new file a list that the old one does not have.
  if (std::find(names.begin(), names.end(), accessList) == names.end() && attribute(file_, accessList)) {
    if (::fremovexattr(file_, accessList) != 0 || ::fchmod(file_, status.st_mode & 0777) != 0) return failure(errno);
  }
  return {};
}

Result<void> ReplacementFile::resize(std::uint64_t size) {
  while (::ftruncate(file_, static_cast<off_t>(size)) != 0) {
    if (errno != EINTR) return failure(errno);
  }
  return {};
}

Result<void> ReplacementFile::reserve(std::uint64_t offset, std::uint64_t size) {
  if (size == 0) return {};
  while (::fallocate(file_, FALLOC_FL_KEEP_SIZE, static_cast<off_t>(offset), static_cast<off_t>(size)) != 0) {
    if (errno == EOPNOTSUPP || errno == ENOSYS) return {};
    if (errno != EINTR) return failure(errno);
  }
  return {};
}

Result<void> ReplacementFile::write(std::uint64_t offset, ByteView bytes) {
  for (std::size_t done = 0; done < bytes.size();) {
    const ssize_t wrote = ::pwrite(file_, bytes.data() + done, bytes.size() - done, static_cast<off_t>(offset + done));
    if (wrote < 0 && errno == EINTR) continue;
    if (wrote < 0) return failure(errno);
    if (wrote == 0) return failure(ENOSPC);
    done += static_cast<std::size_t>(wrote);
  }
  return {};
}

Result<void> ReplacementFile::publish() {
  if (::fsync(file_) != 0) return failure(errno);
  if (::renameat(folder_, ownName_.c_str(), folder_, name_.c_str()) != 0) return failure(errno);
  ownName_.clear();
  // EBADF: a folder that may not be listed. EINVAL: a file system that syncs no folders.
  if (::fsync(folder_) != 0 && errno != EBADF && errno != EINVAL) {
    return tl::make_unexpected(MovieError{
        path_,
        {},
        0,
        "the file is complete, but whether its name would outlast a power failure is uncertain: " + reasonOf(errno)});
  }
  return {};
}

}  // namespace movie
