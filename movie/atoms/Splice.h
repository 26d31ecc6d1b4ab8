#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "movie/atoms/AtomReader.h"

namespace movie {

/// Takes out `oldSize` bytes, 1 or more, at `offset` and puts others there.
struct Splice {
  std::uint64_t offset = 0;
  std::uint64_t oldSize = 0;
  Bytes replacement;
};

/// `bytes` with the splices made, which lie apart from each other, and with the sizes of `containers` true again: of
/// the atoms around them, which may be named more than once. None where a size does not fit into its field.
std::optional<Bytes> spliced(ByteView bytes, const std::vector<Atom>& containers, std::vector<Splice> splices);

}  // namespace movie
