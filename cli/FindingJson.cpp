#include "cli/FindingJson.h"

#include <cmath>

#include <nlohmann/json.hpp>

#include "diagnosis/KnownSettings.h"
#include "diagnosis/words/FindingText.h"

namespace cli {
namespace {

// In the order of the enumerations.
constexpr const char* causeNames[] = {"identical", "same",   "power",     "range", "gain",
                                      "tone",      "matrix", "different", "dark",  "unreadable"};
constexpr const char* whereNames[] = {"codes", "flags", "tags"};
constexpr const char* directionNames[] = {"darker", "lighter", "compressed", "expanded"};
constexpr const char* settingNames[] = {"gammas",      "system-gamma",  "dim-surround", "set-up",
                                        "black-at-16", "full-as-video", "video-as-full"};
constexpr const char* actionNames[] = {"nothing", "sync", "export", "tag", "frame", "unknown"};

template <typename Enumeration, std::size_t count>
const char* nameOf(Enumeration value, const char* const (&names)[count]) {
  return names[static_cast<std::size_t>(value)];
}

template <typename Enumeration, std::size_t count>
JsonValue nameOrNull(const std::optional<Enumeration>& value, const char* const (&names)[count]) {
  return value ? JsonValue(nameOf(*value, names)) : JsonValue();
}

/// To four places: more would pretend to a precision that is not there.
JsonValue number(double value) {
  return std::isfinite(value) ? JsonValue(std::round(value * 1e4) / 1e4) : JsonValue();
}

JsonValue number(const std::optional<double>& value) {
  return value ? number(*value) : JsonValue();
}

JsonValue interval(const std::optional<diagnosis::Interval>& value) {
  return value ? JsonValue::array({number(value->low), number(value->high)}) : JsonValue();
}

JsonValue regionJson(const diagnosis::Region& region) {
  return JsonValue::array({number(region.left), number(region.top), number(region.right), number(region.bottom)});
}

JsonValue placementJson(const diagnosis::Placement& placement) {
  return {{"transposed", placement.transposed},
          {"mirroredX", placement.mirroredX},
          {"mirroredY", placement.mirroredY},
          {"source", regionJson(placement.source)},
          {"dest", regionJson(placement.dest)}};
}

/// What is in force is known of pictures only.
JsonValue rangesJson(const diagnosis::Finding& finding) {
  const auto name = [&](const diagnosis::SideTags& tags) {
    if (finding.frames == 0) return JsonValue();
    return JsonValue(tags.range == diagnosis::SampleRange::Full ? "full" : "video");
  };
  return {{"source", name(finding.tags.source)}, {"dest", name(finding.tags.dest)}};
}

JsonValue matricesJson(const diagnosis::Finding& finding) {
  const auto index = [&](const diagnosis::SideTags& tags) {
    return finding.frames == 0 ? JsonValue() : JsonValue(tags.matrixInForce);
  };
  return {{"source", index(finding.tags.source)}, {"dest", index(finding.tags.dest)}};
}

/// What is likely to have made it; only where exporting again is what is to be done.
JsonValue settingsJson(const diagnosis::Finding& finding) {
  JsonValue settings = JsonValue::array();
  if (finding.action != diagnosis::Action::ExportAgain || finding.inPlaces) return settings;
  for (const auto& [setting, lower, higher] : diagnosis::settingsBehind(finding.main())) {
    const bool hasGammas = setting == diagnosis::Setting::Gammas;
    settings.push_back({{"setting", nameOf(setting, settingNames)},
                        {"lower", hasGammas ? JsonValue(lower) : JsonValue()},
                        {"higher", hasGammas ? JsonValue(higher) : JsonValue()}});
  }
  return settings;
}

}  // namespace

JsonValue causeJson(const diagnosis::Cause& cause) {
  return {{"cause", nameOf(cause.kind, causeNames)},
          {"confidence", number(cause.confidence)},
          {"exponent", number(cause.exponent)},
          {"exponentInterval", interval(cause.exponentInterval)},
          {"gain", number(cause.gain)},
          {"offset", number(cause.offset)},
          {"direction", nameOrNull(cause.direction, directionNames)},
          {"where", nameOrNull(cause.where, whereNames)},
          {"residual", number(cause.residual)}};
}

JsonValue findingJson(const diagnosis::Finding& finding) {
  JsonValue causes = JsonValue::array(), curve = JsonValue::array();
  for (const diagnosis::Cause& cause : finding.causes) causes.push_back(causeJson(cause));
  for (const auto& [source, dest] : finding.curve) curve.push_back(JsonValue::array({number(source), number(dest)}));
  const diagnosis::FindingText text = diagnosis::textOf(finding);
  return {
      {"causes", causes},
      {"correspondence",
       {{"score", number(finding.correspondence.score)},
        {"placement", placementJson(finding.correspondence.placement)},
        {"same", finding.correspondence.same}}},
      {"ranges", rangesJson(finding)},
      {"matrices", matricesJson(finding)},
      {"identicalSamples", finding.identicalSamples},
      {"difference", number(finding.difference)},
      {"frames", finding.frames},
      {"darkFrames", finding.darkFrames},
      {"unmatchedFrames", finding.unmatchedFrames},
      {"differingFrames", finding.differingFrames},
      {"curve", curve},
      {"advice",
       {{"action", nameOf(finding.action, actionNames)}, {"text", text.advice}, {"settings", settingsJson(finding)}}},
      {"text", text.verdict}};
}

}  // namespace cli
