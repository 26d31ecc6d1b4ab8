#include "cli/MovieFacts.h"

#include <QByteArrayView>
#include <QCryptographicHash>
#include <cmath>

#include <nlohmann/json.hpp>

#include "SharedFiles/timecode/QVQuickTime.h"
#include "movie/render/IccProfile.h"

namespace cli {
namespace {

ProfileFacts profileFactsOf(const movie::Bytes& profile) {
  const QByteArrayView bytes(profile.data(), static_cast<qsizetype>(profile.size()));
  const QByteArray hash = QCryptographicHash::hash(bytes.toByteArray(), QCryptographicHash::Sha256);
  return {profile.size(), hash.toHex().toStdString(), movie::profileDescription(profile)};
}

void addDescription(Json& side, const MovieFacts& facts) {
  for (const char* key : {"size", "codec", "gamma", "gammaFixed", "color", "profile"}) side[key] = nullptr;
  if (const std::optional<DescriptionFacts>& description = facts.description) {
    side["size"] = {description->width, description->height};
    side["codec"] = description->codec;
    if (description->gammaFixed) {
      side["gamma"] = gammaNumber(*description->gammaFixed);
      side["gammaFixed"] = *description->gammaFixed;
    }
    if (description->color) side["color"] = jsonOf(*description->color);
    if (description->profile) side["profile"] = jsonOf(*description->profile);
  }
  side["imageDescriptions"] = facts.imageDescriptions;
}

}  // namespace

DescriptionFacts factsOf(const movie::ImageDescription& description) {
  DescriptionFacts facts;
  facts.width = description.width();
  facts.height = description.height();
  facts.codec = movie::fourCCText(description.codec());
  facts.gammaFixed = description.gamma();
  facts.color = description.nclc();
  if (const std::optional<movie::Bytes> profile = description.iccProfile()) facts.profile = profileFactsOf(*profile);
  return facts;
}

Json jsonOf(const movie::NclcParameters& color) {
  return {{"type", movie::fourCCText(color.colorParamType)},
          {"primaries", color.primaries},
          {"transferFunction", color.transferFunction},
          {"matrix", color.matrix}};
}

Json jsonOf(const ProfileFacts& profile) {
  return {{"bytes", profile.bytes}, {"sha256", profile.sha256}, {"description", profile.description}};
}

MovieFacts factsOf(const movie::Movie& movie) {
  MovieFacts facts;
  facts.path = movie.path();
  facts.duration = movie::secondsOf(movie.duration());
  const std::vector<const movie::Track*> tracks = movie.tracksOfMediaType(movie::videoMedia);
  if (tracks.empty()) return facts;
  facts.hasVideo = true;
  facts.framesPerSecond = QVQuickTime::fpsForMovie(&movie);
  const movie::Media& media = tracks.front()->media();
  facts.imageDescriptions = media.sampleDescriptionCount();
  if (const std::optional<movie::ImageDescription> description = media.imageDescription(1)) {
    facts.description = factsOf(*description);
  }
  return facts;
}

double gammaNumber(std::int32_t fixed) {
  return std::round(fixed / 65536.0 * 10000.0) / 10000.0;
}

Json jsonOf(const MovieFacts& facts) {
  Json side;
  side["path"] = facts.path;
  addDescription(side, facts);
  return side;
}

Json jsonOf(const MovieFacts& facts, const movie::Movie& movie, const movie::MovieTime& time) {
  Json side;
  side["path"] = facts.path;
  side["time"] = {{"value", time.value}, {"scale", time.scale}};
  side["timecode"] = nullptr;
  if (facts.framesPerSecond > 0) side["timecode"] = QVQuickTime::timecodeAtTime(time, &movie).toStdString();
  addDescription(side, facts);
  return side;
}

Json jsonOf(const movie::MovieError& error) {
  return {{"message", error.message()}, {"path", error.file}};
}

std::string textOf(const Json& document) {
  return document.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace cli
