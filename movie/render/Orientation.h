#pragma once

#include "movie/atoms/TrackInfo.h"
#include "movie/decode/Picture.h"
#include "movie/render/RgbFrame.h"

namespace movie {

/// One of the eight right-angle placements of a picture. Applied in this order: transpose, then mirror.
struct Orientation {
  bool transposed = false;  ///< rows become columns
  bool mirroredX = false, mirroredY = false;
  friend bool operator==(const Orientation&, const Orientation&) = default;
};

/// The orientation of a track matrix; scale and translation do not count, and a matrix that is not a right-angle one
/// counts as upright. Source: QTFF "Matrices".
Orientation orientationOf(const TransformMatrix& matrix);

/// The frame or picture as it is to be shown; a transposed one changes width and height.
RgbFrame oriented(RgbFrame frame, const Orientation& orientation);
Picture oriented(Picture picture, const Orientation& orientation);

}  // namespace movie
