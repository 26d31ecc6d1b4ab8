#include "cli/ColorText.h"

#include <cstdio>

#include "diagnosis/words/CodePoints.h"
#include "movie/render/IccProfile.h"

namespace cli {
namespace {

constexpr const char* absent = "none";

/// One line for a terminal: control characters of a profile's own text do not reach it.
std::string oneLine(std::string text) {
  for (char& c : text) {
    if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) c = ' ';
  }
  return text;
}

}  // namespace

std::string shortNumber(double value, int decimals) {
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
         std::to_string(color->matrix) + item(" (primaries ", diagnosis::primariesName(color->primaries)) +
         item(", transfer function ", diagnosis::transferFunctionName(color->transferFunction)) +
         item(", matrix ", diagnosis::matrixName(color->matrix)) + ")";
}

std::string profileText(const std::optional<movie::Bytes>& profile) {
  if (!profile) return absent;
  const std::string description = movie::profileDescription(*profile);
  return (description.empty() ? "no description" : oneLine(description)) + " (" + std::to_string(profile->size()) +
         " bytes)";
}

}  // namespace cli
