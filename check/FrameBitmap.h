#pragma once

#include <array>
#include <utility>

#include "movie/render/RgbFrame.h"

namespace check {

/// The frame bitmap that the analysis reads: unsigned 8-bit samples by column and row. An out-of-range coordinate or a
/// bad bitmap may throw QVPlatformException.
class FrameBitmap {
 public:
  using Samples = std::array<unsigned int, 4>;  ///< R, G, B, and room for alpha, each 0 to 255

  virtual ~FrameBitmap() = default;
  virtual int pixelsWide() const = 0;  ///< below 1: an empty bitmap
  virtual int pixelsHigh() const = 0;
  /// getPixel:atX:y:
  virtual void getPixel(Samples& samples, int x, int y) const = 0;

  /// The plain frame behind this bitmap, if it is nothing else: the analysis then reads it without a call a pixel.
  virtual const movie::RgbFrame* plainFrame() const { return nullptr; }
};

/// A rendered frame as a bitmap. Throws outside its size.
class RgbFrameBitmap final : public FrameBitmap {
 public:
  RgbFrameBitmap() = default;  ///< empty: 0 x 0
  explicit RgbFrameBitmap(movie::RgbFrame frame) : frame_(std::move(frame)) {}

  int pixelsWide() const override { return frame_.width; }
  int pixelsHigh() const override { return frame_.height; }
  void getPixel(Samples& samples, int x, int y) const override;
  const movie::RgbFrame* plainFrame() const override { return &frame_; }

 private:
  movie::RgbFrame frame_;
};

}  // namespace check
