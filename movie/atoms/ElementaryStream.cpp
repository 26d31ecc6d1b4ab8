#include "movie/atoms/ElementaryStream.h"

#include <algorithm>

namespace movie {
namespace {

ByteView without(ByteView bytes, std::size_t count) {
  return bytes.subspan(std::min(count, bytes.size()));
}

/// The body of the descriptor that `bytes` starts with, empty where it is of another kind.
ByteView descriptor(ByteView bytes, std::uint8_t tag, bool& plain) {
  if (bytes.empty() || bytes[0] != tag) return {};
  std::size_t size = 0;
  std::size_t at = 1;
  bool more = true;
  for (; more && at < bytes.size() && at <= 4; ++at) {
    size = (size << 7) | (bytes[at] & 0x7FU);
    more = (bytes[at] & 0x80U) != 0;
  }
  const ByteView rest = bytes.subspan(at);
  plain = plain && size <= rest.size();
  return more ? ByteView() : rest.first(std::min(size, rest.size()));
}

}  // namespace

ElementaryStream readElementaryStream(ByteView esds) {
  constexpr std::uint8_t streamTag = 3, configTag = 4, setupTag = 5;
  ElementaryStream result;
  const ByteView stream = descriptor(without(esds, 4), streamTag, result.plain);
  if (stream.size() < 3) return result;
  const unsigned flags = stream[2];
  result.plain = result.plain && flags == 0;
  std::size_t optional = 3;
  if ((flags & 0x80U) != 0) optional += 2;
  if ((flags & 0x40U) != 0 && optional < stream.size()) optional += 1U + stream[optional];
  if ((flags & 0x20U) != 0) optional += 2;
  const ByteView config = descriptor(without(stream, optional), configTag, result.plain);
  if (config.empty()) return result;
  result.objectType = config[0];
  result.setup = descriptor(without(config, 13), setupTag, result.plain);
  return result;
}

}  // namespace movie
