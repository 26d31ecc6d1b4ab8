#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "movie/decode/ffmpeg/PlaneScaler.h"

namespace movie {

/// scalePlaneQuickly() where each result sample is the mean of a block of whole samples, all of one size: the usual way
/// to a small picture, and twice as quick. None where it is not so, and where sums over a block's rows are too large.
std::optional<std::vector<std::uint16_t>> blockMeans(const PlaneRows& rows, const AxisScale& horizontal,
                                                     const AxisScale& vertical, double factor);

}  // namespace movie
