#pragma once

#include "movie/atoms/ImageDescription.h"
#include "movie/decode/ffmpeg/LibavHandles.h"

namespace movie {

/// The codec parameters of a description that holds nothing out of the ordinary: a codec that most movies have, the
/// extensions that go with it and no others, no colour table. They are what libav's demuxer would give to a decoder,
/// colour record and aspect ratio left out. Null for every other description.
LibavPointer<AVCodecParameters> everydayParameters(const ImageDescription& description);

}  // namespace movie
