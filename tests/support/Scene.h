#pragma once

#include <string>

namespace movie::test {

enum class SceneKind {
  GreyRamp,  ///< luma from just above black to just below white, left to right, no colour
  Natural    ///< structure at every scale, edges, a little grain, colours of moderate saturation; few pixels near the
             ///< ends
};
enum class SceneRange { Video, Full };

/// The path of a YUV4MPEG2 file of one 4:4:4 picture of 16 bits, the master that test movies are encoded from.
/// Made once and kept in LUMACHECK_FIXTURE_DIR, the same bytes on every machine. `width` and `height` in pixels.
std::string sceneFile(SceneKind kind, SceneRange range, int width, int height);

}  // namespace movie::test
