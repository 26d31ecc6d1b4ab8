#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "diagnosis/Signal.h"

namespace diagnosis {

/// Colours for colours, as a .cube file holds them: R'G'B' from 0 to 1, since applications cut off what lies beyond
/// before they look it up. What comes out of it may lie beyond, and is cut off by them then: points that were cut off
/// themselves would draw colours near them along. Source of the format and of its limits: Adobe, Cube LUT
/// Specification, version 1.0.
struct CubeTable {
  enum class Kind {
    Curve,  ///< one for each of R', G' and B', the same for all: LUT_1D_SIZE
    Cube,   ///< LUT_3D_SIZE
  } kind = Kind::Cube;
  std::size_t size = 0;         ///< points on an axis, at least 2
  std::vector<Vector3> points;  ///< `size` of them, or its cube, red varying fastest
};

using RgbFunction = std::function<Vector3(const Vector3&)>;

/// The table of a function of colours: a curve where that is as good, in as many points as make it smooth (1024 to
/// 65536); else a cube of 33 points a side, or of 65 where what lies between the points would be off by more than a
/// code of 8 bits.
CubeTable cubeTableOf(const RgbFunction& function);

/// What an application makes of a colour by a table: between the points of a curve along lines, of a cube within
/// tetrahedra. Colours beyond 0 and 1 count as 0 and 1.
Vector3 lookedUp(const CubeTable& table, Vector3 rgb);

/// The file. `title` and `remarks` without line feeds and quotation marks; remarks stand at the head, a line each.
std::string cubeText(const CubeTable& table, const std::string& title, const std::vector<std::string>& remarks);

}  // namespace diagnosis
