#include "cli/CheckJson.h"

#include <cmath>

#include <nlohmann/json.hpp>

#include "cli/FindingJson.h"

namespace cli {
namespace {

constexpr const char* schema = "lumacheck.check/2";

JsonValue numberOrNull(double number) {
  return std::isfinite(number) ? JsonValue(number) : JsonValue(nullptr);
}

// In the order of check::PixelShift and check::ReportStyle.
constexpr const char* shiftNames[] = {"none", "darker", "lighter", "unmatched"};
constexpr const char* styleNames[] = {"normal", "bold", "error", "boldError"};

JsonValue metadataJson(const std::optional<check::MetadataFindings>& findings) {
  const auto found = [&](bool check::MetadataFindings::*match) {
    return findings ? JsonValue((*findings).*match) : JsonValue();
  };
  return {{"compared", findings.has_value()},
          {"gammaMatch", found(&check::MetadataFindings::gammaMatch)},
          {"colorMatch", found(&check::MetadataFindings::colorMatch)},
          {"colorSpaceMatch", found(&check::MetadataFindings::colorSpaceMatch)},
          {"mismatch", findings && findings->mismatch()}};
}

JsonValue pixelsJson(const check::CheckOutcome& outcome) {
  if (!outcome.pixels || outcome.sourceFrameError || outcome.destFrameError) return nullptr;
  return {{"commonDiff", numberOrNull(outcome.pixels->commonDiff)},
          {"average", numberOrNull(outcome.pixels->average)},
          {"shift", shiftNames[static_cast<std::size_t>(check::pixelShiftOf(outcome.pixels->commonDiff))]}};
}

JsonValue reportJson(const std::vector<check::ReportParagraph>& report) {
  JsonValue json = JsonValue::array();
  for (const check::ReportParagraph& paragraph : report) {
    json.push_back(
        {{"text", paragraph.text.toStdString()}, {"style", styleNames[static_cast<std::size_t>(paragraph.style)]}});
  }
  return json;
}

JsonValue alignmentJson(const std::optional<CheckAlignment>& alignment) {
  if (!alignment) return nullptr;
  constexpr const char* resultNames[] = {"found", "still", "notFound"};  // in the order of Counterpart::Result
  const bool found = alignment->result == scan::Counterpart::Result::Found;
  return {{"result", resultNames[static_cast<std::size_t>(alignment->result)]},
          {"offset", found ? JsonValue(std::round(alignment->offset * 1e6) / 1e6) : JsonValue()}};
}

}  // namespace

JsonValue checkJson(CheckDocument document) {
  return {{"schema", schema},
          {"source", std::move(document.source)},
          {"dest", std::move(document.dest)},
          {"metadata", metadataJson(document.outcome.metadata)},
          {"pixels", pixelsJson(document.outcome)},
          {"tooDark", document.outcome.tooDark},
          {"report", reportJson(document.report)},
          {"finding", findingJson(document.finding)},
          {"alignment", alignmentJson(document.alignment)},
          {"exitStatus", document.exitStatus}};
}

JsonValue checkErrorJson(const std::string& message, const std::string& path, int exitStatus) {
  return {{"schema", schema}, {"error", {{"message", message}, {"path", path}}}, {"exitStatus", exitStatus}};
}

}  // namespace cli
