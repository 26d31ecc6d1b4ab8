#pragma once

#include <utility>

#include <unistd.h>

/// Owns one descriptor of the system's, or none.
class FileDescriptor {
 public:
  explicit FileDescriptor(int descriptor = -1) : descriptor_(descriptor) {}
  ~FileDescriptor() { close(); }
  FileDescriptor(FileDescriptor&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
  FileDescriptor& operator=(FileDescriptor&& other) noexcept {
    std::swap(descriptor_, other.descriptor_);
    return *this;
  }

  int get() const { return descriptor_; }
  bool isOpen() const { return descriptor_ >= 0; }
  void close() {
    if (isOpen()) ::close(std::exchange(descriptor_, -1));
  }

 private:
  int descriptor_;
};
