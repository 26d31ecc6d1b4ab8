#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace movie {

enum class PictureModel { YCbCr, Rgb, Grey };
enum class PictureRange { Unspecified, Video, Full };

/// A decoded picture, cropped and resized, in its own colours: three planes of the same size (one for Grey), 16 bits a
/// sample, the coded value moved up to the top bits: sample = code << (16 - depth), with the fraction that scaling
/// gives below. So for video range at any depth black is 16 * 256 and white 235 * 256; for full range white is (2^depth
/// - 1) << (16 - depth). Planes are Y, Cb, Cr or R, G, B. No alpha: samples are taken as stored.
struct Picture {
  int width = 0, height = 0;
  int depth = 8;  ///< bits of the coded samples
  PictureModel model = PictureModel::YCbCr;
  PictureRange range = PictureRange::Unspecified;  ///< of the bitstream, else of the container as the decoder read it
  /// ITU-T H.273 of the bitstream; 2 is unspecified.
  std::uint16_t primaries = 2, transferFunction = 2, matrix = 2;
  int codedHeight = 0;  ///< lines before cropping and resizing: below 720 an untagged picture counts as 601
  std::array<std::vector<std::uint16_t>, 3> planes;
  /// Of all samples of the coded picture, before cropping and resizing, where it was asked for: pictures of one format
  /// and size with the same samples have the same, others hardly ever. 0 otherwise.
  std::uint64_t digest = 0;
};

}  // namespace movie
