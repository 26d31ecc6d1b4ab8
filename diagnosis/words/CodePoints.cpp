#include "diagnosis/words/CodePoints.h"

#include <algorithm>
#include <iterator>

namespace diagnosis {
namespace {

struct CodePoint {
  std::uint16_t index;
  std::string_view name;
};

constexpr CodePoint primariesNames[] = {
    {1, "BT.709"},       {2, "unspecified"}, {4, "BT.470 M"}, {5, "BT.470 B/G"}, {6, "SMPTE 170M"}, {7, "SMPTE 240M"},
    {8, "generic film"}, {9, "BT.2020"},     {10, "XYZ"},     {11, "DCI-P3"},    {12, "P3-D65"},    {22, "EBU 3213"},
};

constexpr CodePoint transferFunctionNames[] = {
    {1, "BT.709"},   {2, "unspecified"},     {4, "gamma 2.2"},  {5, "gamma 2.8"},  {6, "SMPTE 170M"}, {7, "SMPTE 240M"},
    {8, "linear"},   {9, "log 100:1"},       {10, "log 316:1"}, {11, "xvYCC"},     {12, "BT.1361"},   {13, "sRGB"},
    {14, "BT.2020"}, {15, "BT.2020 12-bit"}, {16, "PQ"},        {17, "SMPTE 428"}, {18, "HLG"},
};

constexpr CodePoint matrixNames[] = {
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
std::string_view nameIn(const CodePoint (&table)[Count], std::uint16_t index) {
  const auto found = std::find_if(std::begin(table), std::end(table),
                                  [index](const CodePoint& point) { return point.index == index; });
  return found == std::end(table) ? std::string_view("reserved") : found->name;
}

}  // namespace

std::string_view primariesName(std::uint16_t index) {
  return nameIn(primariesNames, index);
}
std::string_view transferFunctionName(std::uint16_t index) {
  return nameIn(transferFunctionNames, index);
}
std::string_view matrixName(std::uint16_t index) {
  return nameIn(matrixNames, index);
}

}  // namespace diagnosis
