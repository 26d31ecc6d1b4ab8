#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include <tl/expected.hpp>

#include "movie/atoms/ImageDescription.h"

namespace movie {

/// What a movie of ProRes 4444 is to be, and what it is to say of itself.
struct EncodedMovie {
  int width = 0, height = 0;  ///< pixels, above 0
  /// A pixel's width to its height, both above 0.
  std::int32_t pixelWidth = 1, pixelHeight = 1;
  std::int32_t timeScale = 0;        ///< units a second, above 0
  NclcParameters color;              ///< ITU-T H.273; 2 is unspecified
  std::optional<std::int32_t> gama;  ///< 16.16
};

/// Y'CbCr of 10 bits in video range, every plane of the movie's size, rows from the top.
struct EncodedPicture {
  std::array<std::span<const std::uint16_t>, 3> planes;  ///< Y', Cb, Cr
  std::int64_t time = 0, duration = 0;                   ///< in the movie's scale; times ascend
};

/// Bytes of the movie at a place of its file, which is written front to back but for a few places; false ends the work.
using EncodedOutput = std::function<bool(std::uint64_t offset, std::span<const std::uint8_t> bytes)>;

/// Why not: part of a sentence, in English.
template <typename T>
using Encoded = tl::expected<T, std::string>;

/// A movie that is being made. After an error it is of no use. Used by one thread.
class MovieEncoder {
 public:
  virtual ~MovieEncoder() = default;
  virtual Encoded<void> add(const EncodedPicture& picture) = 0;
  /// The rest of the file: it is a movie only then.
  virtual Encoded<void> finish() = 0;
};

/// What makes them. Exported by a module: see exportedBy() in movie/decode/DecoderModule.h.
class MovieEncoderBackend {
 public:
  virtual ~MovieEncoderBackend() = default;
  virtual Encoded<std::unique_ptr<MovieEncoder>> makeEncoder(const EncodedMovie& movie, EncodedOutput output) = 0;
};

constexpr const char* encoderModuleName = "movie-ffmpeg-encoder.so";
constexpr const char* encoderModuleEntry = "lumacheckEncoderBackend";

/// Loads the module at the first call. Error: a sentence.
Encoded<MovieEncoderBackend*> encoderBackend();

}  // namespace movie
