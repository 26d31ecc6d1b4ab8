#pragma once

#include <optional>
#include <vector>

#include "movie/atoms/ImageDescription.h"
#include "movie/atoms/MovieError.h"
#include "movie/decode/ffmpeg/LibavHandles.h"

namespace movie {

/// What opening a decoder for one sample description takes.
struct CodecHeader {
  LibavPointer<AVCodecParameters> parameters;
  std::vector<std::uint8_t> palette;  ///< as libav's packet side data has it; empty without a colour table
  std::optional<bool> fullRange;      ///< the container's word, for streams that say nothing themselves
};

/// Reads a sample description the way libav's own demuxer does, but for the colour record: the values that the decoder
/// reports are then the bitstream's own. An everyday description is read here, any other by the demuxer itself: at the
/// first one that module is loaded, which needs about forty more libraries than libav's decoders and takes as long.
/// `majorBrand` is the file's, 0 without ftyp. Error: a clause; libav makes nothing of the description, or the module
/// is missing or does not fit.
tl::expected<CodecHeader, Clause> readCodecHeader(FourCC majorBrand, const ImageDescription& description);

}  // namespace movie
