#pragma once

#include <string>
#include <vector>

#include "movie/atoms/ImageDescription.h"
#include "movie/atoms/MovieError.h"
#include "movie/decode/ffmpeg/LibavHandles.h"

namespace movie {

/// What libav's demuxer makes of a sample description.
struct DemuxedDescription {
  LibavPointer<AVCodecParameters> parameters;
  std::vector<std::uint8_t> palette;  ///< as libav's packet side data has it; empty without a colour table
};

/// Error: a clause.
using DemuxedDescriptionResult = tl::expected<DemuxedDescription, Clause>;

/// Has libav's own demuxer read a description. `majorBrand` is that of the file it is from, 0 without ftyp.
DemuxedDescriptionResult demuxDescription(FourCC majorBrand, const ImageDescription& description);

}  // namespace movie
