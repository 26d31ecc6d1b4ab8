#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <tl/expected.hpp>

namespace cli {

/// What draws SVG as pixels. Exported by a module: see exportedBy() in movie/decode/DecoderModule.h.
class PictureModule {
 public:
  virtual ~PictureModule() = default;
  /// A whole PNG file, its sides that many times as long as the SVG says. Error: why not, part of a sentence.
  virtual tl::expected<std::vector<std::uint8_t>, std::string> png(std::string_view svg, double scale) = 0;
};

constexpr const char* pictureModuleName = "picture-rsvg.so";
constexpr const char* pictureModuleEntry = "lumacheckPictureModule";

}  // namespace cli
