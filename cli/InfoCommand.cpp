#include "cli/InfoCommand.h"

#include <cstdio>
#include <memory>

#include <nlohmann/json.hpp>

#include "cli/ColorNames.h"
#include "cli/MovieFacts.h"

namespace cli {
namespace {

constexpr const char* absent = "none";

std::string row(const char* label, const std::string& value) {
  char start[32];
  std::snprintf(start, sizeof start, "  %-20s", label);
  return start + value + "\n";
}

/// At most so many decimals, none that are not needed.
std::string shortNumber(double value, int decimals = 3) {
  char text[64];
  std::snprintf(text, sizeof text, "%.*f", decimals, value);
  std::string number = text;
  number.erase(number.find_last_not_of('0') + 1);
  if (number.back() == '.') number.pop_back();
  return number;
}

std::string gammaText(const std::optional<std::int32_t>& fixed) {
  if (!fixed) return absent;
  return shortNumber(*fixed / 65536.0, 4) + " (" + std::to_string(*fixed) + "/65536)";
}

std::string colorText(const std::optional<movie::NclcParameters>& color) {
  if (!color) return absent;
  const auto item = [](const char* subject, std::string_view name) { return subject + std::string(name); };
  return std::to_string(color->primaries) + "-" + std::to_string(color->transferFunction) + "-" +
         std::to_string(color->matrix) + item(" (primaries ", primariesName(color->primaries)) +
         item(", transfer function ", transferFunctionName(color->transferFunction)) +
         item(", matrix ", matrixName(color->matrix)) + ")";
}

/// One line for a terminal: control characters of a profile's own text do not reach it.
std::string oneLine(std::string text) {
  for (char& c : text) {
    if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) c = ' ';
  }
  return text;
}

std::string profileText(const std::optional<ProfileFacts>& profile) {
  if (!profile) return absent;
  const std::string description = profile->description.empty() ? "no description" : oneLine(profile->description);
  return description + " (" + std::to_string(profile->bytes) + " bytes)";
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
