#include "movie/render/MeasurementRenderer.h"

#include "movie/render/PictureRgb.h"

namespace movie {

RgbFrame renderMeasurementFrame(const Picture& picture, const std::optional<NclcParameters>& nclc) {
  constexpr RgbScale videoRange{.black = 16, .white = 235};
  return {.width = picture.width,
          .height = picture.height,
          .samples = rgbSamplesOf<std::uint8_t>(picture, matrixInForce(nclc, picture), videoRange)};
}

}  // namespace movie
