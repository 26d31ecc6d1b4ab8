#include "cli/InfoCommand.h"

#include <cstdio>
#include <memory>

#include <nlohmann/json.hpp>

#include "cli/ColorText.h"
#include "cli/MovieFacts.h"

namespace cli {
namespace {

std::string row(const char* label, const std::string& value) {
  char start[32];
  std::snprintf(start, sizeof start, "  %-20s", label);
  return start + value + "\n";
}

std::string videoText(const MovieFacts& facts) {
  std::string text;
  if (const std::optional<DescriptionFacts>& description = facts.description) {
    text += row("gamma", gammaText(description->gammaFixed));
    text += row("color", colorText(description->color));
    text += row("profile", profileText(description->profile));
    text += row("size", std::to_string(description->width) + " x " + std::to_string(description->height));
    text += row("codec", description->codec);
  }
  text += row("image descriptions", std::to_string(facts.imageDescriptions));
  return text;
}

std::string textOf(const MovieFacts& facts) {
  std::string text = facts.path + "\n";
  text += facts.hasVideo ? videoText(facts) : row("video", "no video track");
  text += row("duration", shortNumber(facts.duration) + " s");
  if (facts.hasVideo) {
    text += row("frame rate", facts.framesPerSecond > 0 ? shortNumber(facts.framesPerSecond) + " fps" : "unknown");
  }
  return text;
}

}  // namespace

CommandResult runInfoCommand(const InfoOptions& options) {
  CommandResult result;
  Json array = Json::array();
  for (const std::string& file : options.files) {
    const auto movie = movie::Movie::movieWithFile(file);
    if (!movie) {
      result.err += complaint(movie.error().message());
      result.status = failure;
      array.push_back({{"error", jsonOf(movie.error())}});
      continue;
    }
    const MovieFacts facts = factsOf(**movie);
    if (options.form == OutputForm::Json) {
      array.push_back(jsonOf(facts));
    } else {
      result.out += (result.out.empty() ? "" : "\n") + textOf(facts);
    }
  }
  if (options.form == OutputForm::Json) result.out = textOf(array);
  return result;
}

}  // namespace cli
