#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <utility>
#include <vector>

#include "check/FrameBitmap.h"

namespace check::test {

/// A frame that shows itself pixel by pixel only, and throws where told to.
class AskedBitmap final : public FrameBitmap {
 public:
  explicit AskedBitmap(movie::RgbFrame frame) : frame_(std::move(frame)) {}

  template <typename Exception>
  void throwAt(int x, int y, Exception exception) {
    throwing_[{x, y}] = [exception = std::move(exception)] { throw exception; };
  }
  void setAlpha(unsigned int alpha) { alpha_ = alpha; }

  int pixelsWide() const override { return frame_.pixelsWide(); }
  int pixelsHigh() const override { return frame_.pixelsHigh(); }
  void getPixel(Samples& samples, int x, int y) const override {
    const auto found = throwing_.find({x, y});
    if (found != throwing_.end()) found->second();
    frame_.getPixel(samples, x, y);
    samples[3] = alpha_;
  }

 private:
  RgbFrameBitmap frame_;
  std::map<std::pair<int, int>, std::function<void()>> throwing_;
  unsigned int alpha_ = 255;
};

/// Row by row.
inline movie::RgbFrame greyFrame(int width, int height, const std::vector<std::uint8_t>& values) {
  movie::RgbFrame frame{width, height, {}};
  for (const std::uint8_t value : values) frame.samples.insert(frame.samples.end(), 3, value);
  return frame;
}

}  // namespace check::test
