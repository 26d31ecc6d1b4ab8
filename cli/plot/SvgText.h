#pragma once

#include <string>
#include <string_view>

namespace cli {

/// Text for XML 1.0, in content or between double quotes. What is no UTF-8, and what XML has no place for, becomes
/// U+FFFD.
std::string xmlText(std::string_view bytes);

/// At most so many characters; where there are more, an ellipsis stands for those in the middle. Whole characters of
/// UTF-8.
std::string shortened(std::string_view text, std::size_t most);

/// A length on paper, to a hundredth.
std::string svgLength(double value);

struct SvgPoint {
  double x = 0, y = 0;
};
struct SvgBox {
  double x = 0, y = 0, width = 0, height = 0;
};

enum class SvgAnchor { Start, Middle, End };

// Elements, each a line. `look`: names of classes.
std::string svgText(const SvgPoint& at, std::string_view look, SvgAnchor anchor, std::string_view text);
std::string svgBox(const SvgBox& box, std::string_view look);
std::string svgLine(const SvgPoint& from, const SvgPoint& to, std::string_view look);

}  // namespace cli
