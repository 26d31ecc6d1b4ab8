#pragma once

#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "tests/support/Scene.h"

namespace check::test {

/// How a codec is asked for, and what its samples look like.
struct Encoding {
  std::string name;         ///< of the test
  std::string extension;    ///< of the movie
  std::string pixelFormat;  ///< as ffmpeg calls it
  std::vector<std::string> codec;
  movie::test::SceneRange range = movie::test::SceneRange::Video;
  int width = 640, height = 360;
  bool rgb = false;  ///< the exponent is applied to R, G and B alike
};

/// A master encoded once.
std::string encodedMaster(const Encoding& encoding, movie::test::SceneKind scene);

/// An export of a master: without change, or with the luma raised to an exponent.
using Exponent = std::optional<double>;

/// Exports of a master, one for each exponent, in the same encoding or another one.
std::vector<std::string> encodedExports(const Encoding& from, const Encoding& to, movie::test::SceneKind scene,
                                        const std::vector<Exponent>& exponents);

/// What the check measures between two movies at their beginning: commonDiff.
double measuredExponent(const std::string& source, const std::string& dest);

}  // namespace check::test
