#include "tests/check/accuracy/EncodedPair.h"

#include <cstdio>
#include <stdexcept>

#include "check/GammaCheck.h"
#include "tests/support/MovieFixture.h"

namespace check::test {
namespace {

using movie::test::SceneRange;

class SilentConsole : public ReportConsole {
 public:
  void clearTextView() override {}

 protected:
  void append(const ReportParagraph&) override {}
};

void addEncoding(std::vector<std::string>& arguments, const Encoding& encoding) {
  arguments.insert(arguments.end(), encoding.codec.begin(), encoding.codec.end());
  if (encoding.range == SceneRange::Full && !encoding.rgb) {
    arguments.insert(arguments.end(), {"-color_range", "pc"});
  }
}

/// Bits of a sample, from the format's name: yuv422p10le has 10, rgb48be 16, the rest 8.
int depthOf(const std::string& pixelFormat) {
  for (const char* depth : {"10", "12", "16"}) {
    if (pixelFormat.find(std::string("p") + depth) != std::string::npos) return std::atoi(depth);
  }
  return pixelFormat.find("48") != std::string::npos ? 16 : 8;
}

/// The filter that raises to an exponent, in the samples' own numbers: v' = black + span * ((v - black) / span) ^ g.
std::string raiseFilter(const Encoding& encoding, double exponent) {
  const bool full = encoding.rgb || encoding.range == SceneRange::Full;
  const int shift = depthOf(encoding.pixelFormat) - 8;
  const int black = full ? 0 : 16 << shift;
  const int span = full ? (256 << shift) - 1 : 219 << shift;
  char curve[160];
  std::snprintf(curve, sizeof curve, "'%d+%d*pow(clip((val-%d)/%d\\,0\\,1.1)\\,%.4f)'", black, span, black, span,
                exponent);
  if (encoding.rgb) return std::string("lutrgb=r=") + curve + ":g=" + curve + ":b=" + curve;
  return std::string("lutyuv=y=") + curve;
}

}  // namespace

std::string encodedMaster(const Encoding& encoding, movie::test::SceneKind scene) {
  const SceneRange sceneRange = encoding.rgb ? SceneRange::Video : encoding.range;
  std::vector<std::string> arguments = {"-i",
                                        movie::test::sceneFile(scene, sceneRange, encoding.width, encoding.height),
                                        "-pix_fmt", encoding.pixelFormat};
  addEncoding(arguments, encoding);
  return movie::test::fixtureMovie(encoding.name + "-master" + encoding.extension, arguments);
}

std::string encodedExport(const Encoding& from, const Encoding& to, movie::test::SceneKind scene,
                          std::optional<double> exponent) {
  std::vector<std::string> arguments = {"-i", encodedMaster(from, scene)};
  if (exponent) arguments.insert(arguments.end(), {"-vf", raiseFilter(from, *exponent)});
  arguments.insert(arguments.end(), {"-pix_fmt", to.pixelFormat});
  addEncoding(arguments, to);
  return movie::test::fixtureMovie(from.name + "-to-" + to.name + to.extension, arguments);
}

double measuredExponent(const std::string& source, const std::string& dest) {
  auto sourceMovie = movie::Movie::movieWithFile(source), destMovie = movie::Movie::movieWithFile(dest);
  if (!sourceMovie) throw std::runtime_error(sourceMovie.error().message());
  if (!destMovie) throw std::runtime_error(destMovie.error().message());
  SilentConsole console;
  const CheckOutcome outcome = runGammaCheck({**sourceMovie, **destMovie, {}, {}, {}}, console);
  if (outcome.sourceFrameError) throw std::runtime_error(outcome.sourceFrameError->message());
  if (outcome.destFrameError) throw std::runtime_error(outcome.destFrameError->message());
  if (!outcome.pixels) throw std::runtime_error("the source frame is too dark");
  return outcome.pixels->commonDiff;
}

}  // namespace check::test
