#include "cli/ColorText.h"

#include <algorithm>
#include <cstdio>
#include <iterator>

#include "movie/render/IccProfile.h"

namespace cli {
namespace {

struct CodePoint {
  std::uint16_t index;
  std::string_view name;
};

constexpr CodePoint primaries[] = {
    {1, "BT.709"},       {2, "unspecified"}, {4, "BT.470 M"}, {5, "BT.470 B/G"}, {6, "SMPTE 170M"}, {7, "SMPTE 240M"},
    {8, "generic film"}, {9, "BT.2020"},     {10, "XYZ"},     {11, "DCI-P3"},    {12, "P3-D65"},    {22, "EBU 3213"},
};

constexpr CodePoint transferFunctions[] = {
    {1, "BT.709"},   {2, "unspecified"},     {4, "gamma 2.2"},  {5, "gamma 2.8"},  {6, "SMPTE 170M"}, {7, "SMPTE 240M"},
    {8, "linear"},   {9, "log 100:1"},       {10, "log 316:1"}, {11, "xvYCC"},     {12, "BT.1361"},   {13, "sRGB"},
    {14, "BT.2020"}, {15, "BT.2020 12-bit"}, {16, "PQ"},        {17, "SMPTE 428"}, {18, "HLG"},
};

constexpr CodePoint matrices[] = {
    {0, "identity"},
    {1, "BT.709"},
    {2, "unspecified"},
    {4, "FCC"},
    {5, "BT.470 B/G"},
    {6, "SMPTE 170M"},
    {7, "SMPTE 240M"},
    {8, "YCgCo"},
    {9, "BT.2020"},
    {10, "BT.2020 constant luminance"},
    {11, "SMPTE 2085"},
    {12, "derived from the primaries"},
    {13, "derived, constant luminance"},
    {14, "ICtCp"},
};

template <std::size_t Count>
std::string_view nameOf(const CodePoint (&table)[Count], std::uint16_t index) {
  const auto found = std::find_if(std::begin(table), std::end(table),
                                  [index](const CodePoint& point) { return point.index == index; });
  return found == std::end(table) ? std::string_view("reserved") : found->name;
}

constexpr const char* absent = "none";

/// One line for a terminal: control characters of a profile's own text do not reach it.
std::string oneLine(std::string text) {
  for (char& c : text) {
    if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) c = ' ';
  }
  return text;
}

}  // namespace

std::string_view primariesName(std::uint16_t index) {
  return nameOf(primaries, index);
}
std::string_view transferFunctionName(std::uint16_t index) {
  return nameOf(transferFunctions, index);
}
std::string_view matrixName(std::uint16_t index) {
  return nameOf(matrices, index);
}

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
         std::to_string(color->matrix) + item(" (primaries ", primariesName(color->primaries)) +
         item(", transfer function ", transferFunctionName(color->transferFunction)) +
         item(", matrix ", matrixName(color->matrix)) + ")";
}

std::string profileText(const std::optional<movie::Bytes>& profile) {
  if (!profile) return absent;
  const std::string description = movie::profileDescription(*profile);
  return (description.empty() ? "no description" : oneLine(description)) + " (" + std::to_string(profile->size()) +
         " bytes)";
}

}  // namespace cli
