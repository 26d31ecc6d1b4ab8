#include "movie/atoms/Splice.h"

#include <algorithm>
#include <limits>

namespace movie {

std::optional<Bytes> spliced(ByteView bytes, const std::vector<Atom>& containers, std::vector<Splice> splices) {
  std::sort(splices.begin(), splices.end(), [](const Splice& a, const Splice& b) { return a.offset < b.offset; });
  std::vector<std::uint64_t> grown{0};  // modulo 2^64: by all splices before the one of that index
  for (const Splice& splice : splices) grown.push_back(grown.back() + splice.replacement.size() - splice.oldSize);
  const auto grownBefore = [&](std::uint64_t offset) {
    const auto found = std::lower_bound(splices.begin(), splices.end(), offset,
                                        [](const Splice& splice, std::uint64_t at) { return splice.offset < at; });
    return grown[static_cast<std::size_t>(found - splices.begin())];
  };

  Bytes sized(bytes.begin(), bytes.end());
  for (const Atom& atom : containers) {
    const std::uint64_t size = atom.size + grownBefore(atom.end()) - grownBefore(atom.offset);
    const auto at = static_cast<std::size_t>(atom.offset);
    if (atom.headerSize == 16) {
      write64(sized, at + 8, size);
    } else if (size <= std::numeric_limits<std::uint32_t>::max()) {
      write32(sized, at, static_cast<std::uint32_t>(size));
    } else {
      return std::nullopt;
    }
  }

  Bytes result;
  result.reserve(static_cast<std::size_t>(sized.size() + grown.back()));
  std::uint64_t done = 0;
  for (const Splice& splice : splices) {
    append(result, between(sized, done, splice.offset));
    append(result, splice.replacement);
    done = splice.offset + splice.oldSize;
  }
  append(result, between(sized, done, sized.size()));
  return result;
}

}  // namespace movie
