#pragma once

#include "movie/atoms/ByteOrder.h"
#include "movie/atoms/FourCC.h"

namespace movie {

/// A whole movie file, a few hundred bytes long, with one video track of one sample description and one sample of a
/// single zero byte. What a demuxer makes of a description can be asked of this file instead of the real one: the cost
/// does not grow with the movie, and whatever else is wrong with the movie stays out of the demuxer's reach.
/// `majorBrand` 0 leaves ftyp out. `description` is a whole stsd entry; its data reference is ignored.
Bytes oneSampleMovie(FourCC majorBrand, Bytes description);

}  // namespace movie
