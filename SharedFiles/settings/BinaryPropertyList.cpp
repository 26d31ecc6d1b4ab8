#include "SharedFiles/settings/BinaryPropertyList.h"

#include <QtGlobal>
#include <optional>

namespace {

class BinaryShape {
 public:
  BinaryShape(const QByteArray& bytes, int deepest)
      : bytes_(bytes), size_(static_cast<quint64>(bytes.size())), deepest_(deepest) {}

  bool isSound() {
    constexpr quint64 trailerSize = 32;
    if (size_ < trailerSize) return false;
    const quint64 trailer = size_ - trailerSize;
    offsetSize_ = number(trailer + 6, 1).value_or(0);
    referenceSize_ = number(trailer + 7, 1).value_or(0);
    objects_ = number(trailer + 8, 8).value_or(0);
    const quint64 top = number(trailer + 16, 8).value_or(0);
    table_ = number(trailer + 24, 8).value_or(size_);
    return objects_ <= size_ && table_ < size_ && isSound(top, 0);
  }

 private:
  static constexpr quint64 wideInteger = 0x14;  ///< the marker of one of 16 bytes
  enum Kind : quint64 { integer = 1, data = 4, ascii = 5, utf16 = 6, array = 0xA, set = 0xC, dictionary = 0xD };

  // An object may be referred to many times, and becomes as many.
  static constexpr quint64 mostParts = 1'000'000, mostBytes = quint64{64} << 20U;

  /// Nothing where the bytes end before, and for a width that no number has.
  std::optional<quint64> number(quint64 at, quint64 width) const {
    if (width < 1 || width > 8 || at > size_ || size_ - at < width) return std::nullopt;
    quint64 value = 0;
    for (quint64 i = 0; i < width; ++i)
      value = value << 8 | static_cast<unsigned char>(bytes_[static_cast<qsizetype>(at + i)]);
    return value;
  }

  std::optional<quint64> offsetOf(quint64 object) const { return number(table_ + object * offsetSize_, offsetSize_); }

  bool isSound(quint64 object, int depth) {
    if (object >= objects_ || depth > deepest_ || ++parts_ > mostParts) return false;
    const auto offset = offsetOf(object);
    const auto marker = offset ? number(*offset, 1) : std::nullopt;
    if (!marker || *marker >> 4 == set) return false;
    if (*marker == wideInteger) return number(*offset + 1, 8) == 0U;
    const quint64 kind = *marker >> 4;
    if (kind == data || kind == ascii || kind == utf16) return holdsFewBytes(kind, *offset);
    return (kind != array && kind != dictionary) || holdsSoundParts(kind, *offset, depth);
  }

  struct Run {
    quint64 count, first;
  };

  /// How many parts an object has, and where they begin. Nothing for a count that the file cannot hold.
  std::optional<Run> partsOf(quint64 offset) const {
    constexpr quint64 countFollows = 0xF;
    const quint64 count = *number(offset, 1) & countFollows, first = offset + 1;
    if (count != countFollows) return Run{count, first};
    const quint64 size = number(first, 1).value_or(0);
    const auto counted =
        size >> 4 == integer && (size & 0xF) <= 3 ? number(first + 1, 1U << (size & 0xF)) : std::nullopt;
    if (!counted || *counted > size_) return std::nullopt;
    return Run{*counted, first + 1 + (quint64{1} << (size & 0xF))};
  }

  bool holdsFewBytes(quint64 kind, quint64 offset) {
    const auto parts = partsOf(offset);
    if (!parts) return false;
    text_ += kind == utf16 ? 2 * parts->count : parts->count;
    return text_ <= mostBytes;
  }

  /// Whether a sound object is a text without a null character: over a key with one libplist ends the program.
  bool isKey(quint64 object) const {
    const quint64 offset = *offsetOf(object), kind = *number(offset, 1) >> 4, width = kind == utf16 ? 2 : 1;
    const auto parts = partsOf(offset);
    if (!parts || (kind != ascii && kind != utf16)) return false;
    for (quint64 i = 0; i < parts->count; ++i) {
      if (number(parts->first + i * width, width).value_or(0) == 0) return false;
    }
    return true;
  }

  bool holdsSoundParts(quint64 kind, quint64 offset, int depth) {
    const auto parts = partsOf(offset);
    if (!parts) return false;
    const auto [count, first] = *parts;
    const quint64 references = kind == dictionary ? 2 * count : count;
    for (quint64 i = 0; i < references; ++i) {
      const auto part = number(first + i * referenceSize_, referenceSize_);
      if (!part || !isSound(*part, depth + 1)) return false;
      if (kind == dictionary && i < count && !isKey(*part)) return false;
    }
    return true;
  }

  const QByteArray& bytes_;
  const quint64 size_;
  const int deepest_;
  quint64 offsetSize_ = 0, referenceSize_ = 0, objects_ = 0, table_ = 0, parts_ = 0, text_ = 0;
};

}  // namespace

bool isBinaryPropertyList(const QByteArray& bytes) {
  return bytes.startsWith("bplist00");
}

bool isShallowBinaryPropertyList(const QByteArray& bytes, int deepest) {
  return isBinaryPropertyList(bytes) && BinaryShape(bytes, deepest).isSound();
}
