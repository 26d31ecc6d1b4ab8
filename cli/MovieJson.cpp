#include "cli/MovieJson.h"

#include <QByteArrayView>
#include <QCryptographicHash>
#include <cmath>

#include <nlohmann/json.hpp>

#include "SharedFiles/timecode/QVQuickTime.h"
#include "movie/render/IccProfile.h"

namespace cli {
namespace {

void addDescription(JsonValue& side, const movie::Movie& movie) {
  for (const char* key : {"size", "codec", "gamma", "gammaFixed", "color", "profile"}) side[key] = nullptr;
  side["imageDescriptions"] = 0;
  const std::vector<const movie::Track*> tracks = movie.tracksOfMediaType(movie::videoMedia);
  if (tracks.empty()) return;
  const movie::Media& media = tracks.front()->media();
  side["imageDescriptions"] = media.sampleDescriptionCount();
  const std::optional<movie::ImageDescription> description = media.imageDescription(1);
  if (!description) return;
  side["size"] = {description->width(), description->height()};
  side["codec"] = movie::fourCCText(description->codec());
  const std::optional<std::int32_t> gamma = description->gamma();
  side["gamma"] = gammaJson(gamma);
  if (gamma) side["gammaFixed"] = *gamma;
  side["color"] = colorJson(description->nclc());
  side["profile"] = profileJson(description->iccProfile());
}

}  // namespace

double gammaNumber(std::int32_t fixed) {
  return std::round(fixed / 65536.0 * 10000.0) / 10000.0;
}

JsonValue gammaJson(const std::optional<std::int32_t>& fixed) {
  return fixed ? JsonValue(gammaNumber(*fixed)) : JsonValue();
}

JsonValue colorJson(const std::optional<movie::NclcParameters>& color) {
  if (!color) return nullptr;
  return {{"type", movie::fourCCText(color->colorParamType)},
          {"primaries", color->primaries},
          {"transferFunction", color->transferFunction},
          {"matrix", color->matrix}};
}

JsonValue profileJson(const std::optional<movie::Bytes>& profile) {
  if (!profile) return nullptr;
  const QByteArrayView bytes(profile->data(), static_cast<qsizetype>(profile->size()));
  const QByteArray hash = QCryptographicHash::hash(bytes.toByteArray(), QCryptographicHash::Sha256);
  return {{"bytes", profile->size()},
          {"sha256", hash.toHex().toStdString()},
          {"description", movie::profileDescription(*profile)}};
}

JsonValue jsonOf(const movie::Movie& movie) {
  JsonValue side;
  side["path"] = movie.path();
  addDescription(side, movie);
  return side;
}

JsonValue jsonOf(const movie::Movie& movie, const movie::MovieTime& time) {
  JsonValue side;
  side["path"] = movie.path();
  side["time"] = {{"value", time.value}, {"scale", time.scale}};
  side["timecode"] = nullptr;
  if (QVQuickTime::fpsForMovie(&movie) > 0) {
    side["timecode"] = QVQuickTime::timecodeAtTime(time, &movie).toStdString();
  }
  addDescription(side, movie);
  return side;
}

JsonValue jsonOf(const movie::MovieError& error) {
  return {{"message", error.message()}, {"path", error.file}};
}

std::string textOf(const JsonValue& document) {
  return document.dump(2, ' ', false, JsonValue::error_handler_t::replace) + "\n";
}

}  // namespace cli
