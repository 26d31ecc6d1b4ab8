#include "diagnosis/undo/CorrectedPicture.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <future>
#include <thread>

namespace diagnosis {
namespace {

/// ITU-R BT.709, 10 bits: 0 to 3 and 1020 to 1023 are reserved.
std::uint16_t videoCode(double value) {
  constexpr double lowest = 4, highest = 1019;
  return static_cast<std::uint16_t>(std::lround(std::clamp(value, lowest, highest)));
}

/// A part of the samples of a picture.
struct Part {
  std::size_t first = 0, end = 0;
};

/// Where codes of 10 bits count from, and how many of them the signal 1 has.
constexpr double codesPerCode = 4;  // of 8 bits
constexpr std::array<double, 3> zeroCodes{16 * codesPerCode, 128 * codesPerCode, 128 * codesPerCode},
    spanCodes{lumaCodes * codesPerCode, chromaCodes*codesPerCode, chromaCodes*codesPerCode};

void correct(const Signal& signal, const Part& part, const UndoColors& undo, const LaneMatrix& toResult,
             CorrectedPicture& result) {
  for (std::size_t first = part.first; first < part.end; first += laneCount) {
    const std::size_t count = std::min(laneCount, part.end - first);
    ColorLanes dest{};
    for (std::size_t plane = 0; plane < 3; ++plane)
      std::copy_n(&signal.planes[plane][first], count, dest[plane].begin());
    const ColorLanes colors = product(toResult, undo.sourcesOf(dest));
    for (std::size_t plane = 0; plane < 3; ++plane) {
      for (std::size_t i = 0; i < count; ++i) {
        result.planes[plane][first + i] = videoCode(zeroCodes[plane] + spanCodes[plane] * double{colors[plane][i]});
      }
    }
  }
}

}  // namespace

CorrectedPicture corrected(const movie::Picture& dest, const SideTags& tags, const UndoColors& undo,
                           const ComparedIn& space, std::uint16_t matrix) {
  const Signal signal = signalOf(dest, tags, space.matrix);
  const LaneMatrix toResult = laneMatrix(product(fromRgbMatrix(matrix), toRgbMatrix(space.matrix)));
  CorrectedPicture result;
  for (auto& plane : result.planes) plane.resize(signal.size());
  const std::size_t parts = std::max(1U, std::thread::hardware_concurrency());
  std::vector<std::future<void>> others;
  const auto part = [&](std::size_t i) { return Part{signal.size() * i / parts, signal.size() * (i + 1) / parts}; };
  for (std::size_t i = 1; i < parts; ++i) {
    others.push_back(std::async(std::launch::async | std::launch::deferred,
                                [&, i] { correct(signal, part(i), undo, toResult, result); }));
  }
  correct(signal, part(0), undo, toResult, result);
  for (const std::future<void>& other : others) other.wait();
  return result;
}

}  // namespace diagnosis
