#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

namespace movie {

/// Which part of a plane becomes how many samples, along one axis. `begin` and `length` are in samples of the plane and
/// may be fractions; what lies outside of 0..source is not looked at.
struct AxisScale {
  double begin = 0, length = 0;
  int source = 0;  ///< samples there are, above 0
  int result = 0;  ///< samples wanted, above 0
};

/// Gives row `y` of a plane: the codes from `x` on, `count` of them. Either a pointer to them where they lie, or
/// `scratch` filled with them.
using RowReader = std::function<const std::uint16_t*(int y, int x, int count, std::uint16_t* scratch)>;

/// Where the samples of a plane lie, each beside the next, in the machine's own order of bytes.
struct PlaneSamples {
  const std::uint8_t* first = nullptr;  ///< of the first row; null where they lie otherwise
  std::ptrdiff_t stride = 0;            ///< from one row to the next, in bytes
  int bytes = 1;                        ///< of a sample: 1 or 2
  std::uint16_t mask = 0xFFFF;          ///< the bits of a sample that are its code
};

/// The rows of a plane: how they are read, and where they lie if that is simple.
struct PlaneRows {
  RowReader read;
  PlaneSamples samples = {};
  std::function<void(int end)> beforeRows = nullptr;  ///< told that rows before `end` are read next; may be empty
};

/// Scales a plane, each axis for itself: an axis that shrinks takes the mean over the exact area of each result sample,
/// parts of samples by their part; one that grows interpolates linearly between sample centres, never across the edge
/// of the part taken. Each mean times `factor` is rounded once, to nearest, and held within 0..65535. A plane of one
/// code comes out as that code times `factor`, exactly. Result: rows from the top, without padding.
std::vector<std::uint16_t> scalePlane(const RowReader& readRow, const AxisScale& horizontal, const AxisScale& vertical,
                                      double factor);

/// The same in single precision, for pictures that are looked at: a good deal quicker, and off by at most one.
std::vector<std::uint16_t> scalePlaneQuickly(const PlaneRows& rows, const AxisScale& horizontal,
                                             const AxisScale& vertical, double factor);

}  // namespace movie
