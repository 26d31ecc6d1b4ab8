#pragma once

#include "movie/decode/Picture.h"
#include "movie/render/ColorSet.h"
#include "movie/render/RgbFrame.h"

namespace movie {

/// A picture as an sRGB display shows it under a colour set: full-range RGB through the transfer in force (see
/// ColorSet.h), so that a difference in tags is seen. With nothing in force the values are shown as they are.
RgbFrame renderDisplayFrame(const Picture& picture, const ColorSet& colors);

}  // namespace movie
