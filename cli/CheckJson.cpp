#include "cli/CheckJson.h"

#include <cmath>

#include <nlohmann/json.hpp>

namespace cli {
namespace {

constexpr const char* schema = "lumacheck.check/1";

Json numberOrNull(double number) {
  return std::isfinite(number) ? Json(number) : Json(nullptr);
}

const char* nameOf(check::PixelShift shift) {
  switch (shift) {
    case check::PixelShift::Darker:
      return "darker";
    case check::PixelShift::Lighter:
      return "lighter";
    case check::PixelShift::Unmatched:
      return "unmatched";
    case check::PixelShift::None:
      break;
  }
  return "none";
}

const char* nameOf(check::ReportStyle style) {
  switch (style) {
    case check::ReportStyle::Bold:
      return "bold";
    case check::ReportStyle::Error:
      return "error";
    case check::ReportStyle::BoldError:
      return "boldError";
    case check::ReportStyle::Normal:
      break;
  }
  return "normal";
}

Json metadataJson(const std::optional<check::MetadataFindings>& findings) {
  Json json;
  json["compared"] = findings.has_value();
  json["gammaMatch"] = findings ? Json(findings->gammaMatch) : Json(nullptr);
  json["colorMatch"] = findings ? Json(findings->colorMatch) : Json(nullptr);
  json["colorSpaceMatch"] = findings ? Json(findings->colorSpaceMatch) : Json(nullptr);
  json["mismatch"] = findings && findings->mismatch();
  return json;
}

Json pixelsJson(const check::CheckOutcome& outcome) {
  if (!outcome.pixels || outcome.sourceFrameError || outcome.destFrameError) return nullptr;
  return {{"commonDiff", numberOrNull(outcome.pixels->commonDiff)},
          {"average", numberOrNull(outcome.pixels->average)},
          {"shift", nameOf(check::pixelShiftOf(outcome.pixels->commonDiff))}};
}

Json reportJson(const std::vector<check::ReportParagraph>& report) {
  Json json = Json::array();
  for (const check::ReportParagraph& paragraph : report) {
    json.push_back({{"text", paragraph.text.toStdString()}, {"style", nameOf(paragraph.style)}});
  }
  return json;
}

}  // namespace

Json checkJson(Json source, Json dest, const check::CheckOutcome& outcome,
               const std::vector<check::ReportParagraph>& report, int exitStatus) {
  Json json;
  json["schema"] = schema;
  json["source"] = std::move(source);
  json["dest"] = std::move(dest);
  json["metadata"] = metadataJson(outcome.metadata);
  json["pixels"] = pixelsJson(outcome);
  json["tooDark"] = outcome.tooDark;
  json["report"] = reportJson(report);
  json["exitStatus"] = exitStatus;
  return json;
}

Json checkErrorJson(const std::string& message, const std::string& path, int exitStatus) {
  Json json;
  json["schema"] = schema;
  json["error"] = {{"message", message}, {"path", path}};
  json["exitStatus"] = exitStatus;
  return json;
}

}  // namespace cli
