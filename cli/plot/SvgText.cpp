#include "cli/plot/SvgText.h"

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <utility>

namespace cli {
namespace {

constexpr std::string_view replacement = "\xef\xbf\xbd";  // U+FFFD

struct Character {
  std::uint32_t code = 0;
  std::size_t length = 1;  ///< in bytes
  bool isValid = false;
};

/// The character at the beginning of UTF-8, which is not empty.
Character firstOf(std::string_view text) {
  const auto byteAt = [&](std::size_t i) { return static_cast<std::uint8_t>(text[i]); };
  const std::uint32_t lead = byteAt(0);
  if (lead < 0x80) return {lead, 1, true};
  const std::size_t length = lead >= 0xf0 ? 4 : lead >= 0xe0 ? 3 : 2;
  if (lead < 0xc2 || lead > 0xf4 || text.size() < length) return {};
  std::uint32_t code = lead & (0xffU >> (length + 1));
  for (std::size_t i = 1; i < length; ++i) {
    if ((byteAt(i) & 0xc0U) != 0x80U) return {};
    code = code << 6U | (byteAt(i) & 0x3fU);
  }
  constexpr std::uint32_t least[] = {0, 0, 0x80, 0x800, 0x10000};
  return {code, length, code >= least[length]};
}

/// The production Char of XML 1.0.
bool isXml(std::uint32_t code) {
  return code == 0x9 || code == 0xa || code == 0xd || (code >= 0x20 && code <= 0xd7ff) ||
         (code >= 0xe000 && code <= 0xfffd) || (code >= 0x10000 && code <= 0x10ffff);
}

std::string_view escaped(std::string_view character) {
  switch (character.front()) {
    case '&':
      return "&amp;";
    case '<':
      return "&lt;";
    case '>':
      return "&gt;";
    case '"':
      return "&quot;";
    default:
      return character;
  }
}

constexpr const char* anchorNames[] = {"start", "middle", "end"};

std::string attribute(const char* name, std::string_view value) {
  return std::string(" ") + name + "=\"" + std::string(value) + "\"";
}

}  // namespace

std::string xmlText(std::string_view bytes) {
  std::string text;
  while (!bytes.empty()) {
    const Character character = firstOf(bytes);
    const bool isTaken = character.isValid && isXml(character.code);
    text += isTaken ? escaped(bytes.substr(0, character.length)) : replacement;
    bytes.remove_prefix(character.length);
  }
  return text;
}

std::string shortened(std::string_view text, std::size_t most) {
  std::size_t count = 0;
  for (std::string_view rest = text; !rest.empty(); rest.remove_prefix(firstOf(rest).length)) ++count;
  if (count <= most) return std::string(text);
  const std::size_t back = (most - 1) / 2, front = most - 1 - back;
  std::string result;
  std::size_t at = 0;
  for (std::string_view rest = text; !rest.empty(); ++at) {
    const std::size_t length = firstOf(rest).length;
    if (at < front || at >= count - back) result += rest.substr(0, length);
    if (at == front) result += "\xe2\x80\xa6";
    rest.remove_prefix(length);
  }
  return result;
}

std::string svgLength(double value) {
  char text[40];
  std::snprintf(text, sizeof text, "%.2f", std::round(value * 100) / 100 + 0.0);
  std::string result = text;
  while (result.back() == '0') result.pop_back();
  if (result.back() == '.') result.pop_back();
  return result == "-0" ? "0" : result;
}

std::string svgText(const SvgPoint& at, std::string_view look, SvgAnchor anchor, std::string_view text) {
  return "<text" + attribute("x", svgLength(at.x)) + attribute("y", svgLength(at.y)) + attribute("class", look) +
         attribute("text-anchor", anchorNames[static_cast<std::size_t>(anchor)]) + ">" + xmlText(text) + "</text>\n";
}

std::string svgBox(const SvgBox& box, std::string_view look) {
  return "<rect" + attribute("x", svgLength(box.x)) + attribute("y", svgLength(box.y)) +
         attribute("width", svgLength(box.width)) + attribute("height", svgLength(box.height)) +
         attribute("class", look) + "/>\n";
}

std::string svgLine(const SvgPoint& from, const SvgPoint& to, std::string_view look) {
  return "<line" + attribute("x1", svgLength(from.x)) + attribute("y1", svgLength(from.y)) +
         attribute("x2", svgLength(to.x)) + attribute("y2", svgLength(to.y)) + attribute("class", look) + "/>\n";
}

}  // namespace cli
