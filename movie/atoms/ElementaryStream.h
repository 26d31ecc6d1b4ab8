#pragma once

#include <cstdint>

#include "movie/atoms/ByteOrder.h"

namespace movie {

/// What the descriptors of an esds atom say. Source: ISO/IEC 14496-1, 7.2.6; the sizes are 7 bits a byte, 8.3.3.
struct ElementaryStream {
  std::uint8_t objectType = 0;  ///< 0 where it cannot be found
  ByteView setup;               ///< what the decoder is set up with, a view into the esds
  bool plain = true;            ///< nothing is cut, and no optional field stands before the decoder's part
};

/// `esds` is the body of the atom. A descriptor that is cut reaches as far as there are bytes.
ElementaryStream readElementaryStream(ByteView esds);

}  // namespace movie
