#pragma once

#include <filesystem>
#include <fstream>
#include <functional>
#include <string>

#include <gtest/gtest.h>
#include <unistd.h>

#include "tests/support/TemporaryFolder.h"

namespace movie::test {

/// A copy of a movie with other bytes in it, gone at the end. One at a time.
class EditedCopy {
 public:
  EditedCopy(const std::string& path, const std::function<void(std::string& bytes)>& edit) {
    std::string bytes = textOf(path);
    edit(bytes);
    std::ofstream(path_, std::ios::binary) << bytes;
  }
  ~EditedCopy() { std::filesystem::remove(path_); }
  EditedCopy(const EditedCopy&) = delete;
  EditedCopy& operator=(const EditedCopy&) = delete;

  const std::string& path() const { return path_; }

 private:
  std::string path_ = testing::TempDir() + "edited-" + std::to_string(::getpid()) + ".mov";
};

}  // namespace movie::test
