#include "tests/check/accuracy/EncodedPair.h"

#include <cstdio>
#include <stdexcept>

#include "SharedFiles/log/QVLog.h"
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

/// The planar twin of a packed format: ffmpeg's look-up filters work on planes.
std::string planarFormat(const std::string& pixelFormat) {
  if (pixelFormat == "uyvy422") return "yuv422p";
  if (pixelFormat == "rgb48be") return "gbrp16le";
  return pixelFormat;
}

/// Keeps ffmpeg from converting between ranges: what the file says is what its samples are.
std::string formatFilter(const Encoding& encoding) {
  const bool full = encoding.range == SceneRange::Full && !encoding.rgb;
  return std::string(full ? "scale=in_range=full:out_range=full," : "") + "format=" + encoding.pixelFormat;
}

/// Bits of a sample, from the format's name: yuv422p10le has 10, rgb48be 16, the rest 8.
int depthOf(const std::string& pixelFormat) {
  for (const char* depth : {"10", "12"}) {
    if (pixelFormat.find(std::string("p") + depth) != std::string::npos) return std::atoi(depth);
  }
  return planarFormat(pixelFormat) == "gbrp16le" ? 16 : 8;
}

/// The filter that raises to an exponent, in the samples' own numbers, rounded: v' = black + span * ((v - black) /
/// span) ^ g.
std::string raiseFilter(const Encoding& encoding, double exponent) {
  const bool full = encoding.rgb || encoding.range == SceneRange::Full;
  const int shift = depthOf(encoding.pixelFormat) - 8;
  const int black = full ? 0 : 16 << shift;
  const int span = full ? (256 << shift) - 1 : 219 << shift;
  char curve[160];
  std::snprintf(curve, sizeof curve, "'%d.5+%d*pow(clip((val-%d)/%d\\,0\\,1.1)\\,%.4f)'", black, span, black, span,
                exponent);
  if (encoding.rgb) return std::string("lutrgb=r=") + curve + ":g=" + curve + ":b=" + curve;
  return std::string("lutyuv=y=") + curve;
}

}  // namespace

void PrintTo(const Encoding& encoding, std::ostream* out) {
  *out << encoding.name;
}

std::string encodedMaster(const Encoding& encoding, movie::test::SceneKind scene) {
  const SceneRange sceneRange = encoding.rgb ? SceneRange::Video : encoding.range;
  std::vector<std::string> arguments = {
      "-i", movie::test::sceneFile(scene, sceneRange, encoding.width, encoding.height), "-vf", formatFilter(encoding)};
  addEncoding(arguments, encoding);
  return movie::test::fixtureMovie(encoding.name + "-master" + encoding.extension, arguments);
}

std::vector<std::string> encodedExports(const Encoding& from, const Encoding& to, movie::test::SceneKind scene,
                                        const std::vector<Exponent>& exponents) {
  std::vector<movie::test::FixtureOutput> outputs;
  for (const Exponent& exponent : exponents) {
    std::string filters = formatFilter(from);
    if (exponent) filters += ",format=" + planarFormat(from.pixelFormat) + "," + raiseFilter(from, *exponent);
    std::vector<std::string> arguments{"-vf", filters + "," + formatFilter(to)};
    addEncoding(arguments, to);
    outputs.push_back({from.name + "-to-" + to.name + to.extension, arguments});
  }
  return movie::test::fixtureMovies(encodedMaster(from, scene), outputs);
}

double measuredExponent(const std::string& source, const std::string& dest) {
  auto sourceMovie = movie::Movie::movieWithFile(source), destMovie = movie::Movie::movieWithFile(dest);
  if (!sourceMovie) throw std::runtime_error(sourceMovie.error().message());
  if (!destMovie) throw std::runtime_error(destMovie.error().message());
  QVLog::sharedController().setLoggingDisabled(true);
  SilentConsole console;
  const CheckOutcome outcome = runGammaCheck({**sourceMovie, **destMovie, {}, {}}, console);
  if (outcome.sourceFrameError) throw std::runtime_error(outcome.sourceFrameError->message());
  if (outcome.destFrameError) throw std::runtime_error(outcome.destFrameError->message());
  if (!outcome.pixels) throw std::runtime_error("the source frame is too dark");
  return outcome.pixels->commonDiff;
}

}  // namespace check::test
