#pragma once

#include <string>

#include <tl/expected.hpp>

#include "SharedFiles/privileged/PinnedFolder.h"

namespace privileged {

/// A folder that only this process's user may enter, made inside another one and removed again once it is empty.
class StagingFolder {
 public:
  /// Fails with `cannotCreate`, or with `changed` when something else stands under the new folder's name.
  static tl::expected<StagingFolder, ExitStatus> makeIn(const PinnedFolder& parent);
  ~StagingFolder();
  StagingFolder(StagingFolder&& other) noexcept = default;
  StagingFolder& operator=(StagingFolder&&) = delete;

  const sys::Descriptor& descriptor() const { return descriptor_; }
  const std::string& name() const { return name_; }
  bool holds(const std::string& entry) const;

  /// Renames an entry of this folder to a name in the parent. Replaces a file by a file or folder by an empty one, and
  /// follows no link.
  bool moveOut(const std::string& entry, const std::string& name) const;
  /// Renames an entry of this folder to a place where nothing stands.
  bool moveToFreePlace(const std::string& entry, const PinnedEntry& place) const;

 private:
  StagingFolder(sys::Descriptor parent, std::string name, sys::Descriptor descriptor);

  sys::Descriptor parent_;
  std::string name_;
  sys::Descriptor descriptor_;
};

}  // namespace privileged
