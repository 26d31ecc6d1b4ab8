#pragma once

#include <utility>

#include <unistd.h>

namespace sys {

/// Owns one descriptor of the system's, or none.
class Descriptor {
 public:
  explicit Descriptor(int number = -1) : number_(number) {}
  ~Descriptor() { close(); }
  Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(number_, other.number_);
    return *this;
  }

  int get() const { return number_; }
  bool isOpen() const { return number_ >= 0; }
  /// Gives it away: the caller's to close.
  int release() { return std::exchange(number_, -1); }
  void close() {
    if (isOpen()) ::close(std::exchange(number_, -1));
  }

 private:
  int number_;
};

}  // namespace sys
