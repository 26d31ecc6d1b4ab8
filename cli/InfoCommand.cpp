#include <cstdio>
#include <memory>

#include <nlohmann/json.hpp>

#include "SharedFiles/timecode/QVQuickTime.h"
#include "cli/ColorText.h"
#include "cli/Commands.h"
#include "cli/MovieJson.h"

namespace cli {
namespace {

std::string row(const char* label, const std::string& value) {
  char start[32];
  std::snprintf(start, sizeof start, "  %-20s", label);
  return start + value + "\n";
}

std::string videoText(const movie::Media& media) {
  std::string text;
  if (const std::optional<movie::ImageDescription> description = media.imageDescription(1)) {
    text += row("gamma", gammaText(description->gamma()));
    text += row("color", colorText(description->nclc()));
    text += row("profile", profileText(description->iccProfile()));
    text += row("size", std::to_string(description->width()) + " x " + std::to_string(description->height()));
    text += row("codec", movie::fourCCText(description->codec()));
  }
  return text + row("image descriptions", std::to_string(media.sampleDescriptionCount()));
}

std::string infoText(const movie::Movie& movie) {
  const std::vector<const movie::Track*> tracks = movie.tracksOfMediaType(movie::videoMedia);
  const std::string video = tracks.empty() ? row("video", "no video track") : videoText(tracks.front()->media());
  std::string text =
      movie.path() + "\n" + video + row("duration", shortNumber(movie::secondsOf(movie.duration())) + " s");
  if (tracks.empty()) return text;
  const double frameRate = QVQuickTime::fpsForMovie(&movie);
  text += row("frame rate", frameRate > 0 ? shortNumber(frameRate) + " fps" : "unknown");
  return text;
}

}  // namespace

CommandResult runInfoCommand(const InfoOptions& options) {
  CommandResult result;
  JsonValue array = JsonValue::array();
  for (const std::string& file : options.files) {
    const auto movie = movie::Movie::movieWithFile(file);
    if (!movie) {
      result.err += complaint(movie.error().message());
      result.status = failure;
      array.push_back({{"error", jsonOf(movie.error())}});
    } else if (options.form == OutputForm::Json) {
      array.push_back(jsonOf(**movie));
    } else {
      result.out += (result.out.empty() ? "" : "\n") + infoText(**movie);
    }
  }
  if (options.form == OutputForm::Json) result.out = textOf(array);
  return result;
}

}  // namespace cli
