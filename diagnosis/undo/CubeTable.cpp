#include "diagnosis/undo/CubeTable.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <functional>
#include <utility>

namespace diagnosis {
namespace {

constexpr double codeStep = 1.0 / 255;

Vector3 clipped(Vector3 rgb) {
  for (double& value : rgb) value = std::clamp(value, 0.0, 1.0);
  return rgb;
}

double farthest(const Vector3& one, const Vector3& other) {
  double most = 0;
  for (std::size_t i = 0; i < 3; ++i) most = std::max(most, std::abs(one[i] - other[i]));
  return most;
}

/// The colours of a lattice of so many points a side, moved by a part of its spacing; red varying fastest.
template <typename Visit>
void forLattice(std::size_t size, double shift, Visit visit) {
  const double step = 1.0 / static_cast<double>(size - 1);
  const std::size_t end = shift > 0 ? size - 1 : size;
  const auto at = [&](std::size_t index) { return (static_cast<double>(index) + shift) * step; };
  for (std::size_t blue = 0; blue < end; ++blue) {
    for (std::size_t green = 0; green < end; ++green) {
      for (std::size_t red = 0; red < end; ++red) visit(Vector3{at(red), at(green), at(blue)});
    }
  }
}

CubeTable curveOf(const RgbFunction& function, std::size_t size) {
  CubeTable table{CubeTable::Kind::Curve, size, {}};
  for (std::size_t i = 0; i < size; ++i) {
    const double at = static_cast<double>(i) / static_cast<double>(size - 1);
    table.points.push_back(function({at, at, at}));
  }
  return table;
}

/// Whether each of R', G' and B' goes by the curve of greys, whatever the others are.
bool isCurve(const RgbFunction& function) {
  constexpr std::size_t size = 17;
  constexpr double asGood = codeStep / 2;
  const CubeTable greys = curveOf(function, size);
  bool is = true;
  forLattice(size, 0, [&](const Vector3& rgb) {
    is = is && farthest(clipped(function(rgb)), clipped(lookedUp(greys, rgb))) <= asGood;
  });
  return is;
}

CubeTable smoothCurveOf(const RgbFunction& function) {
  constexpr std::size_t fewest = 1024, most = 65536;
  constexpr double smooth = codeStep / 16;
  for (std::size_t size = fewest; size < most; size *= 2) {
    CubeTable table = curveOf(function, size);
    double off = 0;
    for (std::size_t i = 0; i + 1 < size; ++i) {
      const double at = (static_cast<double>(i) + 0.5) / static_cast<double>(size - 1);
      const Vector3 grey{at, at, at};
      off = std::max(off, farthest(clipped(lookedUp(table, grey)), clipped(function(grey))));
    }
    if (off <= smooth) return table;
  }
  return curveOf(function, most);
}

CubeTable cubeOf(const RgbFunction& function, std::size_t size) {
  CubeTable table{CubeTable::Kind::Cube, size, {}};
  table.points.reserve(size * size * size);
  forLattice(size, 0, [&](const Vector3& rgb) { table.points.push_back(function(rgb)); });
  return table;
}

/// Where an axis is looked up: the point below, and how far it is to the next.
struct LatticePlace {
  std::size_t below = 0;
  double part = 0;
};

LatticePlace placeOn(double value, std::size_t size) {
  const double at = std::clamp(value, 0.0, 1.0) * static_cast<double>(size - 1);
  const auto below = std::min(static_cast<std::size_t>(at), size - 2);
  return {below, at - static_cast<double>(below)};
}

Vector3 onCurve(const CubeTable& table, const Vector3& rgb) {
  Vector3 result{};
  for (std::size_t i = 0; i < 3; ++i) {
    const auto [below, part] = placeOn(rgb[i], table.size);
    result[i] = (1 - part) * table.points[below][i] + part * table.points[below + 1][i];
  }
  return result;
}

/// From the corner below to the one above, along the axis on which it is farthest first.
Vector3 inCube(const CubeTable& table, const Vector3& rgb) {
  const std::array<std::size_t, 3> stride{1, table.size, table.size * table.size};
  std::array<std::pair<double, std::size_t>, 3> farthestFirst;
  std::size_t at = 0;
  for (std::size_t axis = 0; axis < 3; ++axis) {
    const LatticePlace place = placeOn(rgb[axis], table.size);
    at += place.below * stride[axis];
    farthestFirst[axis] = {place.part, axis};
  }
  std::sort(farthestFirst.begin(), farthestFirst.end(), std::greater<>());
  Vector3 result = table.points[at];
  for (const auto& [part, axis] : farthestFirst) {
    const std::size_t next = at + stride[axis];
    for (std::size_t i = 0; i < 3; ++i) result[i] += part * (table.points[next][i] - table.points[at][i]);
    at = next;
  }
  return result;
}

/// By how much colours in the middle between points are off.
double offBetween(const CubeTable& table, const RgbFunction& function) {
  double off = 0;
  forLattice(table.size, 0.5, [&](const Vector3& rgb) {
    off = std::max(off, farthest(clipped(lookedUp(table, rgb)), clipped(function(rgb))));
  });
  return off;
}

void append(std::string& text, double value) {
  char digits[32];
  const auto [end, error] = std::to_chars(digits, digits + sizeof digits, value, std::chars_format::fixed, 7);
  text.append(digits, end);
}

}  // namespace

CubeTable cubeTableOf(const RgbFunction& function) {
  constexpr std::size_t usual = 33, fine = 65;
  if (isCurve(function)) return smoothCurveOf(function);
  CubeTable table = cubeOf(function, usual);
  return offBetween(table, function) <= codeStep ? table : cubeOf(function, fine);
}

Vector3 lookedUp(const CubeTable& table, Vector3 rgb) {
  return table.kind == CubeTable::Kind::Curve ? onCurve(table, rgb) : inCube(table, rgb);
}

std::string cubeText(const CubeTable& table, const std::string& title, const std::vector<std::string>& remarks) {
  std::string text = "TITLE \"" + title + "\"\n";
  for (const std::string& remark : remarks) text += "# " + remark + "\n";
  text += table.kind == CubeTable::Kind::Curve ? "LUT_1D_SIZE " : "LUT_3D_SIZE ";
  text += std::to_string(table.size) + "\nDOMAIN_MIN 0.0 0.0 0.0\nDOMAIN_MAX 1.0 1.0 1.0\n";
  for (const Vector3& point : table.points) {
    for (std::size_t i = 0; i < 3; ++i) {
      append(text, point[i]);
      text += i < 2 ? ' ' : '\n';
    }
  }
  return text;
}

}  // namespace diagnosis
