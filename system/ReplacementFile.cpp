#include "system/ReplacementFile.h"

#include <cerrno>
#include <filesystem>
#include <utility>

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

#include "system/FileAttributes.h"
#include "system/FilePlace.h"

namespace sys {

namespace {

constexpr int nameAttempts = 100;

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

/// Tries names of its own until one is free; `use` is asked for each and answers as a system call does. Empty, with
/// errno, when there is none.
template <typename Use>
std::string useOwnName(const Use& use) {
  for (int attempt = 0; attempt < nameAttempts; ++attempt) {
    std::string name = ownName(".partial");
    if (use(name.c_str()) >= 0) return name;
    if (errno != EEXIST && errno != EINTR) break;
  }
  return {};
}

}  // namespace

ReplacementFile::ReplacementFile(ReplacementFile&& other) noexcept
    : path_(std::move(other.path_)),
      calls_(other.calls_),
      name_(std::move(other.name_)),
      ownName_(std::exchange(other.ownName_, {})),
      replaces_(other.replaces_),
      folder_(std::move(other.folder_)),
      file_(std::move(other.file_)) {}

ReplacementFile::~ReplacementFile() {
  if (!ownName_.empty()) calls_->unlink(folder_.get(), ownName_.c_str());
}

Result<ReplacementFile> ReplacementFile::create(const std::string& path, FileCalls& calls) {
  ReplacementFile file(path, calls);
  TRY(file.settleTarget());
  constexpr int flags = O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOFOLLOW;
  const Descriptor existing(
      untilUninterrupted([&] { return calls.open(file.folder_.get(), file.name_.c_str(), flags, 0); }));
  if (!existing.isOpen() && errno != ENOENT) return file.failed(errno, Step::Create);
  file.replaces_ = existing.isOpen();
  // What replaces a file must not be readable to more people than it was, not even before it is complete.
  TRY(file.createFile(file.replaces_ ? 0600 : 0666));
  if (file.replaces_) TRY(file.takeOver(existing));
  return file;
}

std::string ReplacementFile::pathWhileOpen() const {
  return "/proc/self/fd/" + std::to_string(file_.get());
}

Result<void> ReplacementFile::settleTarget() {
  if (path_.find('\0') != std::string::npos) return failed(EILSEQ, Step::Create);
  constexpr int mostLinks = 40;
  std::filesystem::path target = path_;
  struct stat status {};
  for (int links = 0;; ++links) {
    if (::lstat(target.c_str(), &status) != 0) {
      if (errno != ENOENT) return failed(errno, Step::Create);
      break;
    }
    if (!S_ISLNK(status.st_mode)) {
      if (!S_ISREG(status.st_mode)) return failed(S_ISDIR(status.st_mode) ? EISDIR : ENXIO, Step::Create);
      if (::faccessat(AT_FDCWD, target.c_str(), W_OK, AT_EACCESS) != 0) return failed(errno, Step::Create);
      break;
    }
    if (links == mostLinks) return failed(ELOOP, Step::Create);
    std::error_code error;
    target = target.parent_path() / std::filesystem::read_symlink(target, error);
    if (error) return failed(ENOENT, Step::Create);
  }
  name_ = target.filename().string();
  if (name_.empty()) return failed(ENOENT, Step::Create);
  return openFolder(target.has_parent_path() ? target.parent_path().string() : ".");
}

Result<void> ReplacementFile::openFolder(const std::string& folder) {
  const auto open = [&](int flags) {
    return Descriptor(
        untilUninterrupted([&] { return calls_->open(AT_FDCWD, folder.c_str(), flags | O_DIRECTORY | O_CLOEXEC, 0); }));
  };
  folder_ = open(O_RDONLY);
  // A folder that may be written but not listed serves, though it cannot be synced by itself.
  if (!folder_.isOpen() && errno == EACCES) folder_ = open(O_PATH);
  return folder_.isOpen() ? Result<void>() : failed(errno, Step::Create);
}

/// One without a name, or where that cannot be had one with a name of its own.
Result<void> ReplacementFile::createFile(mode_t mode) {
  constexpr int flags = O_RDWR | O_CLOEXEC;
  const auto open = [&](const char* name, int more) {
    file_ = Descriptor(calls_->open(folder_.get(), name, flags | more, mode));
    return file_.get();
  };
  if (linksUnnamedFiles(folder_.get())) untilUninterrupted([&] { return open(".", O_TMPFILE); });
  if (file_.isOpen()) return {};
  ownName_ = useOwnName([&](const char* name) { return open(name, O_CREAT | O_EXCL | O_NOFOLLOW); });
  return ownName_.empty() ? failed(errno, Step::Create) : Result<void>();
}

Result<void> ReplacementFile::takeOver(const Descriptor& existing) {
  const FileRef old{existing.get(), path_};
  TRY(const struct stat status, statusOf(old, *calls_));
  if (!S_ISREG(status.st_mode)) return failed(ENXIO, Step::Create);
  return inheritAttributes(old, ref(), status, Heir::Replacement, *calls_);
}

Result<void> ReplacementFile::resize(std::uint64_t size) {
  const auto end = static_cast<off_t>(size);
  const int result = untilUninterrupted([&] { return calls_->ftruncate(file_.get(), end); });
  return result == 0 ? Result<void>() : failed(errno, Step::Resize);
}

Result<void> ReplacementFile::reserve(std::uint64_t offset, std::uint64_t size) {
  if (size == 0) return {};
  const int result = untilUninterrupted(
      [&] { return calls_->reserve(file_.get(), static_cast<off_t>(offset), static_cast<off_t>(size)); });
  const bool made = result == 0 || errno == EOPNOTSUPP || errno == ENOSYS;
  return made ? Result<void>() : failed(errno, Step::Reserve);
}

/// A link never takes the place of another file, and a rename does so only where that is meant.
Result<void> ReplacementFile::takeName() {
  const auto link = [this](const char* name) { return calls_->link(file_.get(), folder_.get(), name); };
  const auto rename = [this](unsigned flags) {
    return untilUninterrupted([&] { return calls_->rename(folder_.get(), ownName_.c_str(), name_.c_str(), flags); });
  };
  if (replaces_ && ownName_.empty()) {
    ownName_ = useOwnName(link);
    if (ownName_.empty()) return failed(errno, Step::Create);
  }
  int result = ownName_.empty() ? untilUninterrupted([&] { return link(name_.c_str()); })
                                : rename(replaces_ ? 0 : RENAME_NOREPLACE);
  const bool cannotTell = result != 0 && (errno == EINVAL || errno == ENOSYS);
  if (cannotTell && !ownName_.empty() && !replaces_) result = rename(0);
  if (result != 0) return failed(errno, Step::Create);
  ownName_.clear();
  return {};
}

Result<void> ReplacementFile::publish() {
  if (untilUninterrupted([this] { return calls_->fsync(file_.get()); }) != 0) return failed(errno, Step::Sync);
  TRY(takeName());
  const int synced = untilUninterrupted([this] { return calls_->fsync(folder_.get()); });
  // EBADF: a folder that may not be listed. EINVAL: a file system that syncs no folders.
  const bool settled = synced == 0 || errno == EBADF || errno == EINVAL;
  return settled ? Result<void>() : failed(errno, Step::SyncName);
}

Result<void> writeWhole(const std::string& path, std::string_view bytes, FileCalls& calls) {
  TRY(auto file, ReplacementFile::create(path, calls));
  TRY(file.write(0, {reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()}));
  return file.publish();
}

}  // namespace sys
