#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace diagnosis {

/// Two neighbours along an axis, and the share of the second.
struct Tap {
  std::uint32_t first = 0, second = 0;
  float share = 0;
};

/// Along one axis of a plane: for each sample of the result where it is taken, at one place, or at two where several
/// samples become one.
struct AxisTaps {
  std::vector<Tap> taps;
  std::size_t each = 1;
  bool isCopy = true;  ///< each sample of the result is one of the plane's, in their order
  std::size_t results() const { return taps.size() / each; }
};

/// So many results from a part of an axis, which goes from 0 to 1 and has so many samples.
AxisTaps axisTaps(double begin, double end, int samples, int results, bool mirrored);

/// Rows become columns.
std::vector<float> transposed(const std::vector<float>& plane, std::size_t width);

/// A plane taken at other places, of which it has so many across and down: down first, which is the same for all
/// columns.
std::vector<float> resampled(const std::vector<float>& plane, std::size_t planeWidth, const AxisTaps& across,
                             const AxisTaps& down);

/// The same samples column by column, in two steps, neither of which has to pick them one by one: the rows of the
/// result with all columns of the plane, one column after the other; and of these, which are as long, the result's.
std::vector<float> linesTakenOf(const std::vector<float>& plane, std::size_t planeWidth, const AxisTaps& down);
std::vector<float> columnsTakenOf(const std::vector<float>& columns, std::size_t length, const AxisTaps& across);

}  // namespace diagnosis
