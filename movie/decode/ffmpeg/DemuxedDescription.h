#pragma once

#include "movie/decode/ffmpeg/CodecHeader.h"

namespace movie {

/// Has libav's own demuxer read a description; what the container says of the range is left out. `majorBrand` is that
/// of the file it is from, 0 without ftyp. Error: a clause. The demuxer's module exports this.
tl::expected<CodecHeader, Clause> demuxDescription(FourCC majorBrand, const ImageDescription& description);

}  // namespace movie
