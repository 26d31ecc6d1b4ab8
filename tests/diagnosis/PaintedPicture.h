#pragma once

#include <array>
#include <cstdint>
#include <functional>

#include "diagnosis/Diagnosis.h"
#include "movie/decode/Picture.h"

namespace diagnosis::test {

/// R'G'B' from 0 to 1 at a place from 0 to 1 both ways.
using Paint = std::function<Vector3(double x, double y)>;

/// A picture of many colours, from dark to bright, smooth but for some edges. Another seed is another picture.
Paint colorful(double seed = 0);

/// Each of R', G' and B' of a paint changed alike.
Paint toned(const Paint& paint, const std::function<double(double)>& tone);

/// How a paint is coded.
struct Coding {
  std::uint16_t matrix = 1;  ///< 0 for RGB
  movie::PictureRange range = movie::PictureRange::Video;
  int depth = 10;
  int width = 320, height = 240;
};

movie::Picture painted(const Paint& paint, const Coding& coding = {});

/// What a file says: both at once, since pictures carry their range.
SideTags taggedAs(const movie::Picture& picture, std::uint16_t matrix);

/// Two pictures under the tags that they were coded in.
Finding findingOf(const movie::Picture& source, const movie::Picture& dest, std::uint16_t sourceMatrix = 1,
                  std::uint16_t destMatrix = 1);

}  // namespace diagnosis::test
