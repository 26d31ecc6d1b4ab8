#pragma once

#include <string>

#include "movie/atoms/ByteOrder.h"

namespace fuzz {

/// A regular file without a folder, for what opens files by their names. It takes one content after the other.
class MemoryFile {
 public:
  MemoryFile();
  ~MemoryFile();
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;

  /// Its path, with that content.
  const std::string& holding(movie::ByteView content);

 private:
  int descriptor_;
  std::string path_;
};

}  // namespace fuzz
