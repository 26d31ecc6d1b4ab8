#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <vector>

namespace movie {

using Bytes = std::vector<std::uint8_t>;
using ByteView = std::span<const std::uint8_t>;

/// Big-endian reads. The caller has checked that the bytes are there.
inline std::uint16_t read16(ByteView bytes, std::size_t at) {
  return static_cast<std::uint16_t>((bytes[at] << 8) | bytes[at + 1]);
}
inline std::uint32_t read32(ByteView bytes, std::size_t at) {
  return (static_cast<std::uint32_t>(read16(bytes, at)) << 16) | read16(bytes, at + 2);
}
inline std::uint64_t read64(ByteView bytes, std::size_t at) {
  return (static_cast<std::uint64_t>(read32(bytes, at)) << 32) | read32(bytes, at + 4);
}

/// Big-endian writes into bytes that are there.
inline void write16(Bytes& bytes, std::size_t at, std::uint16_t value) {
  bytes[at] = static_cast<std::uint8_t>(value >> 8);
  bytes[at + 1] = static_cast<std::uint8_t>(value);
}
inline void write32(Bytes& bytes, std::size_t at, std::uint32_t value) {
  write16(bytes, at, static_cast<std::uint16_t>(value >> 16));
  write16(bytes, at + 2, static_cast<std::uint16_t>(value));
}
inline void write64(Bytes& bytes, std::size_t at, std::uint64_t value) {
  write32(bytes, at, static_cast<std::uint32_t>(value >> 32));
  write32(bytes, at + 4, static_cast<std::uint32_t>(value));
}

/// The bytes between two offsets.
inline ByteView between(ByteView bytes, std::uint64_t begin, std::uint64_t end) {
  return bytes.subspan(static_cast<std::size_t>(begin), static_cast<std::size_t>(end - begin));
}

inline void append(Bytes& bytes, ByteView more) {
  bytes.insert(bytes.end(), more.begin(), more.end());
}
inline void append32(Bytes& bytes, std::uint32_t value) {
  bytes.resize(bytes.size() + 4);
  write32(bytes, bytes.size() - 4, value);
}

/// Big-endian fields one after the other.
class Fields {
 public:
  explicit Fields(ByteView bytes) : left_(bytes) {}

  /// The next one, of at most 8 bytes; 0 where there are fewer left.
  std::uint64_t next(std::size_t size) {
    isCut_ = isCut_ || size > left_.size();
    if (size > left_.size()) return 0;
    std::uint64_t value = 0;
    for (const std::uint8_t byte : left_.first(size)) value = (value << 8) | byte;
    left_ = left_.subspan(size);
    return value;
  }
  std::size_t left() const { return left_.size(); }  ///< bytes
  bool isCut() const { return isCut_; }              ///< one of the fields was not there

 private:
  ByteView left_;
  bool isCut_ = false;
};

}  // namespace movie
