#include "movie/atoms/Utf16.h"

#include <array>

namespace movie {
namespace {

void appendUtf8(std::string& text, char32_t code) {
  constexpr std::array<char32_t, 4> leads{0, 0xC0, 0xE0, 0xF0};
  const std::size_t tails = code < 0x80 ? 0 : code < 0x800 ? 1 : code < 0x10000 ? 2 : 3;
  text += static_cast<char>(leads[tails] | (code >> (6 * tails)));
  for (std::size_t i = tails; i-- > 0;) text += static_cast<char>(0x80 | ((code >> (6 * i)) & 0x3F));
}

}  // namespace

std::string utf8Of(std::u16string_view units) {
  const auto isHigh = [](char32_t unit) { return unit >= 0xD800 && unit < 0xDC00; };
  const auto isLow = [](char32_t unit) { return unit >= 0xDC00 && unit < 0xE000; };
  std::string text;
  for (std::size_t i = 0; i < units.size(); ++i) {
    const char32_t unit = units[i], next = i + 1 < units.size() ? units[i + 1] : 0;
    if (isHigh(unit) && isLow(next)) {
      appendUtf8(text, 0x10000 + ((unit - 0xD800) << 10) + (next - 0xDC00));
      ++i;
    } else {
      appendUtf8(text, isHigh(unit) || isLow(unit) ? 0xFFFD : unit);
    }
  }
  return text;
}

}  // namespace movie
