#include "movie/render/PictureRgb.h"

namespace movie {

SampleScale sampleScaleOf(const Picture& picture) {
  PictureRange range = picture.range;
  if (range == PictureRange::Unspecified)
    range = picture.model == PictureModel::YCbCr ? PictureRange::Video : PictureRange::Full;
  if (range == PictureRange::Video) return {.black = 16.0 * 256, .span = 219.0 * 256, .chromaSpan = 224.0 * 256};

  const int depth = std::clamp(picture.depth, 1, 16);
  const double white = ((1 << depth) - 1) << (16 - depth);
  return {.black = 0, .span = white, .chromaSpan = white};
}

}  // namespace movie
