#include "tests/movie/decode/Codings.h"

#include <ostream>

#include "tests/support/MovieFixture.h"

namespace movie::test {

void PrintTo(const Coding& coding, std::ostream* stream) {
  *stream << coding.name;
}

std::string movieOf(const Coding& coding) {
  std::vector<std::string> arguments{"-f", "lavfi", "-i", "testsrc2=size=160x120:rate=25:duration=10,noise=alls=6"};
  arguments.insert(arguments.end(), coding.options.begin(), coding.options.end());
  return fixtureMovie(std::string(coding.name) + coding.extension, arguments);
}

std::vector<Coding> codings() {
  const std::string reorder = "keyint=25:min-keyint=25:bframes=3:b-adapt=0:scenecut=0";
  return {
      {"h264ClosedGop", ".mov", {"-c:v", "libx264", "-pix_fmt", "yuv420p", "-x264-params", reorder}},
      {"h264OpenGop", ".mov", {"-c:v", "libx264", "-pix_fmt", "yuv420p", "-x264-params", reorder + ":open-gop=1"}},
      {"h264OpenGopPyramid",
       ".mp4",
       {"-c:v", "libx264", "-pix_fmt", "yuv420p", "-x264-params",
        reorder + ":open-gop=1:b-pyramid=normal:ref=6:bframes=7"}},
      {"h264OneGop", ".m4v", {"-c:v", "libx264", "-pix_fmt", "yuv420p", "-x264-params", "keyint=infinite:bframes=5"}},
      {"h264IntraRefresh",
       ".mov",
       {"-c:v", "libx264", "-pix_fmt", "yuv420p", "-x264-params", "intra-refresh=1:keyint=25"}},
      {"h264Interlaced",
       ".mov",
       {"-c:v", "libx264", "-pix_fmt", "yuv420p", "-flags", "+ildct+ilme", "-x264-params",
        reorder + ":tff=1:open-gop=1"}},
      {"h264HighTen", ".mov", {"-c:v", "libx264", "-pix_fmt", "yuv422p10le", "-x264-params", reorder}},
      {"h264Fragmented",
       ".mp4",
       {"-c:v", "libx264", "-pix_fmt", "yuv420p", "-x264-params", reorder, "-movflags", "frag_keyframe+empty_moov"}},
      {"h264FragmentedOpenGop",
       ".mov",
       {"-c:v", "libx264", "-pix_fmt", "yuv420p", "-x264-params", reorder + ":open-gop=1", "-movflags",
        "frag_keyframe+empty_moov+default_base_moof", "-frag_duration", "700000"}},
      {"h264NegativeOffsets",
       ".mp4",
       {"-c:v", "libx264", "-pix_fmt", "yuv420p", "-x264-params", reorder, "-movflags", "negative_cts_offsets"}},
      {"hevcClosedGop",
       ".mp4",
       {"-c:v", "libx265", "-pix_fmt", "yuv420p", "-tag:v", "hvc1", "-x265-params",
        "log-level=none:open-gop=0:keyint=25:min-keyint=25:bframes=4"}},
      {"hevcOpenGop",
       ".mov",
       {"-c:v", "libx265", "-pix_fmt", "yuv420p", "-tag:v", "hvc1", "-x265-params",
        "log-level=none:open-gop=1:keyint=25:min-keyint=25:bframes=4"}},
      {"hevcTemporalLayers",
       ".mov",
       {"-c:v", "libx265", "-pix_fmt", "yuv420p10le", "-tag:v", "hvc1", "-x265-params",
        "log-level=none:temporal-layers=3:keyint=25:bframes=7"}},
      {"mpeg4", ".mp4", {"-c:v", "mpeg4", "-bf", "2", "-g", "25", "-q:v", "4"}},
      {"mpeg4Closed",
       ".mov",
       {"-c:v", "mpeg4", "-bf", "2", "-g", "25", "-q:v", "4", "-flags", "+cgop", "-sc_threshold", "1000000000"}},
      {"mpeg2OpenGop", ".mov", {"-c:v", "mpeg2video", "-bf", "2", "-g", "15", "-flags", "-cgop", "-q:v", "4"}},
      {"mpeg2ClosedGop",
       ".mov",
       {"-c:v", "mpeg2video", "-bf", "2", "-g", "15", "-flags", "+cgop", "-sc_threshold", "1000000000", "-q:v", "4"}},
      {"mpeg2Interlaced", ".mov", {"-c:v", "mpeg2video", "-bf", "2", "-g", "12", "-flags", "+ildct+ilme", "-q:v", "4"}},
      {"proRes", ".mov", {"-c:v", "prores_ks", "-profile:v", "0"}},
      {"proRes4444", ".mov", {"-c:v", "prores_ks", "-profile:v", "4", "-pix_fmt", "yuv444p10le"}},
      {"motionJpeg", ".mov", {"-c:v", "mjpeg", "-q:v", "4"}},
      {"jpeg2000", ".mov", {"-c:v", "jpeg2000", "-pix_fmt", "yuv422p", "-t", "2"}},
  };
}

}  // namespace movie::test
