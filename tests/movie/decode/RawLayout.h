#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "movie/decode/Picture.h"

namespace movie::test {

/// Where the samples of one component lie in a raw frame, written down independently of any decoder library.
struct RawComponent {
  int plane = 0;   ///< planes lie one after another, rows without padding
  int step = 1;    ///< bytes from one sample to the next in a row
  int offset = 0;  ///< bytes of the first one
  int shift = 0, bits = 8;
  bool bigEndian = false;  ///< of words; the sample lies in one byte when shift + bits <= 8 and not `word`
  bool word = false;
  int across = 0, down = 0;  ///< halvings against the picture's size
};

/// A raw pixel format.
struct RawLayout {
  PictureModel model = PictureModel::YCbCr;
  int depth = 8;  ///< of the picture that is to come out
  std::vector<RawComponent> components;
  std::vector<int> planeSteps;  ///< bytes a pixel of each plane

  std::size_t frameSize(int width, int height) const;
  /// The sample of component c at (x, y) of its own grid, in the picture's codes: spread to 8 bits where it is
  /// narrower.
  double code(const std::uint8_t* frame, int width, int height, std::size_t c, int x, int y) const;
  int widthOf(std::size_t c, int width) const;
  int heightOf(std::size_t c, int height) const;

 private:
  int planeShift(std::size_t plane, bool vertical) const;
};

RawLayout planarYCbCr(int bits, int across, int down, int alphaPlanes = 0);
RawLayout planarRgb(int bits, int alphaPlanes = 0);  ///< in the order G, B, R
RawLayout grey(int bits, bool bigEndian, PictureModel model, int bytesPerPixel);
/// Packed 8-bit or big- or little-endian 16-bit samples: R, G and B at these positions of a pixel of `channels`
/// samples.
RawLayout packedRgb(int red, int green, int blue, int channels, int bits, bool bigEndian);
RawLayout packed422(int luma, int cb, int cr);
RawLayout packedBits(int redBits, int greenBits, int blueBits, bool bigEndian);

}  // namespace movie::test
