#pragma once

#include <string>
#include <vector>

#include "movie/atoms/ByteOrder.h"

namespace movie::test {

/// A folder of its own under the tests' temporary folder, gone with this object and all that is in it.
class TemporaryFolder {
 public:
  TemporaryFolder();
  ~TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  std::string path(const std::string& name) const { return path_ + "/" + name; }
  /// Writes a file and gives its path.
  std::string add(const std::string& name, const Bytes& content) const;
  std::vector<std::string> names() const;  ///< sorted

 private:
  std::string path_;
};

/// All bytes of a file; throws where it cannot be read.
Bytes contentOf(const std::string& path);
std::string textOf(const std::string& path);

}  // namespace movie::test
