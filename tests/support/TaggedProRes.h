#pragma once

#include <string>
#include <vector>

namespace movie::test {

/// ffmpeg's arguments for ProRes with all three kinds of colour tags, and a timecode track that starts at one hour.
inline std::vector<std::string> taggedProRes(const std::string& gamma) {
  return {"-c:v",        "prores_ks", "-timecode",        "01:00:00:00", "-movflags",  "+write_colr+write_gama",
          "-mov_gamma",  gamma,       "-color_primaries", "bt709",       "-color_trc", "bt709",
          "-colorspace", "bt709"};
}

}  // namespace movie::test
