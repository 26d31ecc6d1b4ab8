#pragma once

#include <algorithm>
#include <array>
#include <memory>
#include <mutex>
#include <utility>

namespace movie {

/// The few values made last, by their keys, so that a frame does not make again what the frame before it made.
/// Thread-safe; while one is made the others wait. What cannot be made (null) is not kept.
template <typename Key, typename Value, std::size_t kept = 4>
class RecentlyUsed {
 public:
  template <typename Make>
  std::shared_ptr<const Value> get(const Key& key, Make make) {
    const std::lock_guard lock(mutex_);
    auto found = std::find_if(entries_.begin(), entries_.end(),
                              [&](const Entry& entry) { return entry.value && entry.key == key; });
    if (found == entries_.end()) {
      std::shared_ptr<const Value> value = make();
      if (!value) return nullptr;
      *--found = {key, std::move(value)};
    }
    std::rotate(entries_.begin(), found, found + 1);
    return entries_.front().value;
  }

 private:
  struct Entry {
    Key key{};
    std::shared_ptr<const Value> value;
  };
  std::mutex mutex_;
  std::array<Entry, kept> entries_;
};

}  // namespace movie
