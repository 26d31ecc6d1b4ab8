#pragma once

#include <cstdint>
#include <map>
#include <stop_token>
#include <utility>

#include <sys/stat.h>

#include "system/FilePlace.h"
#include "system/FileTree.h"

namespace sys {

/// What a copy was made of: every file and folder of a tree, with what tells that it has changed since.
class TreeRecord {
 public:
  void add(const struct stat& status) { stamps_[{status.st_dev, status.st_ino}] = stampOf(status); }
  /// Whether the file is of the tree and as it was. A folder is, whatever has come into it.
  bool holds(const struct stat& status) const;

 private:
  struct Stamp {
    off_t size;
    std::int64_t seconds, nanoseconds;
    bool operator==(const Stamp&) const = default;
  };
  static Stamp stampOf(const struct stat& status) {
    return {status.st_size, status.st_mtim.tv_sec, status.st_mtim.tv_nsec};
  }

  std::map<std::pair<dev_t, ino_t>, Stamp> stamps_;
};

/// Copies a tree to a place where nothing stands. What a failure leaves there is the caller's to remove.
class TreeCopy {
 public:
  enum class Durability { later, synced };

  explicit TreeCopy(Durability durability, std::stop_token stop = {})
      : durability_(durability), stop_(std::move(stop)) {}

  Result<void> copy(const FilePlace& from, const FilePlace& to);
  const TreeRecord& record() const { return record_; }

 private:
  Result<void> copyFolder(const FilePlace& from, const FilePlace& to, const struct stat& status);
  Result<void> copyRegularFile(const FilePlace& from, const FilePlace& to, const struct stat& status);
  Result<void> copyLink(const FilePlace& from, const FilePlace& to, const struct stat& status);
  Result<void> copySpecialFile(const FilePlace& from, const FilePlace& to, const struct stat& status);
  Result<void> settle(FileRef from, FileRef to, const struct stat& status) const;

  Durability durability_;
  std::stop_token stop_;
  TreeRecord record_;
};

/// Copies a tree beside a place, under a name of its own: see copyTree(). What it made is removed again unless it was
/// revealed.
class PendingCopy {
 public:
  /// The error of what already forbids the copy: a destination that exists or lies in the source.
  static Result<void> allowed(const FilePlace& from, const FilePlace& to);

  PendingCopy(FilePlace to, TreeCopy::Durability durability, const std::stop_token& stop = {});
  ~PendingCopy();
  PendingCopy(const PendingCopy&) = delete;
  PendingCopy& operator=(const PendingCopy&) = delete;

  Result<void> make(const FilePlace& from);
  /// Gives the copy its name.
  Result<void> reveal();
  const TreeRecord& record() const { return copy_.record(); }

 private:
  FilePlace to_, pending_;
  TreeCopy copy_;
  bool made_ = false;
};

}  // namespace sys
