#pragma once

#include <mutex>
#include <utility>

namespace sys {

/// A value that several threads read and replace.
template <typename Value>
class Guarded {
 public:
  explicit Guarded(Value value = {}) : value_(std::move(value)) {}

  Value get() const {
    const std::lock_guard guard(mutex_);
    return value_;
  }
  /// The value before goes after the lock does.
  void set(Value value) {
    const std::lock_guard guard(mutex_);
    std::swap(value_, value);
  }

 private:
  mutable std::mutex mutex_;
  Value value_;
};

}  // namespace sys
