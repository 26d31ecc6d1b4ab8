#pragma once

#include <string>

#include <tl/expected.hpp>

#include "cli/picture/PictureModule.h"

namespace cli {

/// What a drawing is written as.
class PictureFile {
 public:
  /// By the end of a file's name, ".svg" or ".png" in any case; for a PNG the module that makes it is loaded. Error: a
  /// sentence without the name.
  static tl::expected<PictureFile, std::string> named(const std::string& path);

  /// Whether it becomes pixels, on white, whatever it is looked at on.
  bool isPixels() const { return module_ != nullptr; }
  /// The whole file. Error: a sentence.
  tl::expected<std::string, std::string> bytesOf(const std::string& svg) const;

 private:
  explicit PictureFile(PictureModule* module) : module_(module) {}
  PictureModule* module_;  ///< none for SVG
};

}  // namespace cli
