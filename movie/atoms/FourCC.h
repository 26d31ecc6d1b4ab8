#pragma once

#include <cstdint>
#include <string>

namespace movie {

/// A four-character code, big-endian: 'moov' is 0x6D6F6F76.
using FourCC = std::uint32_t;

constexpr FourCC fourCC(const char (&code)[5]) {
  return (static_cast<FourCC>(static_cast<unsigned char>(code[0])) << 24) |
         (static_cast<FourCC>(static_cast<unsigned char>(code[1])) << 16) |
         (static_cast<FourCC>(static_cast<unsigned char>(code[2])) << 8) |
         static_cast<FourCC>(static_cast<unsigned char>(code[3]));
}

/// The four characters for a message; a character outside printable ASCII shows as '?'.
inline std::string fourCCText(FourCC code) {
  std::string text(4, '?');
  for (int i = 0; i < 4; ++i) {
    const auto c = static_cast<unsigned char>(code >> (24 - 8 * i));
    if (c >= 0x20 && c < 0x7F) text[static_cast<std::size_t>(i)] = static_cast<char>(c);
  }
  return text;
}

}  // namespace movie
