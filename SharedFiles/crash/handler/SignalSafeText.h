#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace crash {

/// A text in memory of its own, for signal handlers: no allocation, no locale, no errno. What does not fit is cut off.
class SignalSafeText {
 public:
  static constexpr std::size_t capacity = 4095;

  const char* text() const { return text_.data(); }
  std::size_t size() const { return size_; }
  void clear() {
    size_ = 0;
    text_[0] = '\0';
  }

  SignalSafeText& add(char character) {
    if (size_ < capacity) text_[size_++] = character;
    text_[size_] = '\0';
    return *this;
  }
  SignalSafeText& add(const char* text) {
    for (; text != nullptr && *text != '\0'; ++text) add(*text);
    return *this;
  }
  /// At least so many digits.
  SignalSafeText& addNumber(std::uint64_t number, unsigned base = 10, unsigned digits = 1) {
    constexpr std::size_t most = 64;
    std::array<char, most> reversed{};
    std::size_t count = 0;
    for (; (number != 0 || count < digits) && count < most; number /= base) {
      reversed[count++] = "0123456789abcdef"[number % base];
    }
    while (count > 0) add(reversed[--count]);
    return *this;
  }
  SignalSafeText& addAddress(std::uint64_t address) { return add("0x").addNumber(address, 16); }

 private:
  std::array<char, capacity + 1> text_{};
  std::size_t size_ = 0;
};

}  // namespace crash
