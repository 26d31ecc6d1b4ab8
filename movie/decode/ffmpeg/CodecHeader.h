#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

#include "movie/decode/ffmpeg/LibavHandles.h"
#include "movie/quicktime/MovieFile.h"

namespace movie {

/// What opening a decoder for one sample description takes.
struct CodecHeader {
  LibavPointer<AVCodecParameters> parameters;
  std::vector<std::uint8_t> palette;  ///< as libav's packet side data has it; empty without a colour table
  std::optional<bool> fullRange;      ///< the container's word, for streams that say nothing themselves
};

/// Reads the first sample description of a track the way libav's own demuxer does, but for the colour record: the
/// values that the decoder reports are then the bitstream's own. Error: libav makes nothing of it.
Result<CodecHeader> readCodecHeader(const MovieFile& file, const TrackInfo& track);

}  // namespace movie
