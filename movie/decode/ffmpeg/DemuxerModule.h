#pragma once

#include <string>

#include "movie/atoms/MovieError.h"
#include "movie/decode/ffmpeg/DemuxedDescription.h"

namespace movie {

using DemuxedDescriptionReader = DemuxedDescriptionResult (*)(FourCC majorBrand, const ImageDescription& description);

/// What the demuxer's module exports under the name `lumacheckDemuxedDescriptionReader`; null for another interface
/// than its own.
using DemuxerModuleEntry = DemuxedDescriptionReader (*)(int interfaceVersion);

/// demuxDescription() of the module that lies beside this one, loaded at the first call: libav's demuxers need about
/// forty more libraries than its decoders, and take as long to load. Thread-safe. Error: a clause; it is missing or
/// does not fit.
tl::expected<DemuxedDescriptionReader, Clause> demuxedDescriptionReader();

}  // namespace movie
