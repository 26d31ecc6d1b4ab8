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

}  // namespace movie
