#include "check/FrameBitmap.h"

#include "SharedFiles/foundation/QVPlatformException.h"

namespace check {

void RgbFrameBitmap::getPixel(Samples& samples, int x, int y) const {
  const bool inside = x >= 0 && y >= 0 && x < frame_.width && y < frame_.height;
  const auto offset =
      inside ? 3 * (static_cast<std::size_t>(y) * static_cast<std::size_t>(frame_.width) + static_cast<std::size_t>(x))
             : 0;
  if (!inside || frame_.samples.size() < offset + 3)
    throw QVPlatformException(QStringLiteral("no pixel at %1, %2").arg(x).arg(y), QStringLiteral("NSRangeException"));
  for (std::size_t i = 0; i < 3; ++i) samples[i] = frame_.samples[offset + i];
}

}  // namespace check
