#include "tests/support/GradientMovies.h"

#include "tests/support/MovieFixture.h"
#include "tests/support/TaggedProRes.h"

namespace movie::test {

const std::string softTones = "gradients=size=320x240:rate=25:nb_colors=3:c0=0x303030:c1=0xc0c0c0:c2=0x707070:seed=4";

std::string encodedMovie(const std::string& name, const std::string& source, const std::string& filter,
                         const std::string& gamma) {
  std::vector<std::string> arguments{"-f", "lavfi", "-i", source, "-frames:v", "25", "-vf", filter};
  const auto encoder = taggedProRes(gamma);
  arguments.insert(arguments.end(), encoder.begin(), encoder.end());
  return fixtureMovie(name, arguments);
}

std::string plainMovie() {
  return encodedMovie("plain.mov", softTones, "format=yuv422p10", "2.2");
}
std::string retaggedMovie() {
  return encodedMovie("retagged.mov", softTones, "format=yuv422p10", "1.8");
}
std::string darkerMovie() {
  const std::string curve =
      "format=yuv422p10,lutyuv=y='minval+(maxval-minval)*pow(clip((val-minval)/(maxval-minval)\\,0\\,1)\\,1.25)'";
  return encodedMovie("darker.mov", softTones, curve, "2.2");
}
std::string fadingMovie() {
  return encodedMovie("fading.mov", softTones, "fade=in:0:20,format=yuv422p10", "2.2");
}
std::string blackMovie() {
  return encodedMovie("black.mov", "color=black:size=320x240:rate=25", "format=yuv422p10", "2.2");
}
std::string brightMovie() {
  return encodedMovie("unrelated.mov", "color=0xf8f8f8:size=320x240:rate=25", "format=yuv422p10", "2.2");
}
std::string soundMovie() {
  return fixtureMovie("sound.mov", {"-f", "lavfi", "-i", "sine=duration=1", "-c:a", "pcm_s16le"});
}

}  // namespace movie::test
