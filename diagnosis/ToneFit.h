#pragma once

#include <array>
#include <cstdint>
#include <utility>
#include <vector>

#include "diagnosis/Signal.h"
#include "diagnosis/ToneCurve.h"

namespace diagnosis {

/// How the samples of a picture lie: line by line, and a line is a row, or a column.
enum class Lines { Rows, Columns };

/// A picture in 16 x 12 parts, each of which counts or does not as a whole.
constexpr int partsAcross = 16, partsDown = 12;
constexpr std::size_t partCount = std::size_t{partsAcross} * partsDown;

/// Where the samples of each part lie: bands of lines, each cut into as many parts.
class PartGrid {
 public:
  PartGrid(int width, int height, Lines lines);
  std::size_t bands() const { return lineEnds_.size(); }
  std::size_t firstLine(std::size_t band) const { return band == 0 ? 0 : lineEnds_[band - 1]; }
  std::size_t endLine(std::size_t band) const { return lineEnds_[band]; }
  std::size_t length() const { return length_; }  ///< of a line
  /// Where the parts of a line end.
  const std::vector<std::size_t>& ends() const { return ends_; }
  /// By rows of parts, whatever lines are.
  std::size_t partAt(std::size_t band, std::size_t along) const {
    return byRows_ ? band * partsAcross + along : along * partsAcross + band;
  }
  /// Calls `take` with where each line of a part begins and ends among the samples.
  template <typename Take>
  void forEachLine(std::size_t part, Take take) const {
    const std::size_t row = part / partsAcross, column = part % partsAcross;
    const std::size_t band = byRows_ ? row : column, along = byRows_ ? column : row;
    for (std::size_t line = firstLine(band); line < endLine(band); ++line) {
      take(line * length_ + (along == 0 ? 0 : ends_[along - 1]), line * length_ + ends_[along]);
    }
  }

 private:
  bool byRows_;
  std::size_t length_;
  std::vector<std::size_t> lineEnds_, ends_;
};

/// Of some samples.
struct LumaSums {
  double count = 0, sum = 0, squares = 0;
  void add(double luma) { ++count, sum += luma, squares += luma * luma; }
  void add(const LumaSums& other) { count += other.count, sum += other.sum, squares += other.squares; }
  void remove(const LumaSums& other) { count -= other.count, sum -= other.sum, squares -= other.squares; }
};

/// The luma of a destination, ready to be held against many sources.
struct ToneTarget {
  explicit ToneTarget(const Signal& dest, Lines lines = Lines::Rows);
  PartGrid grid;
  std::vector<float> samples;
  std::vector<double> luma;  ///< the same
  std::array<LumaSums, partCount> parts{};
  LumaSums all;
};

/// The destinations of the samples of each level of a source.
struct LevelSums {
  double count = 0, dest = 0;
  void join(const LevelSums& other) { count += other.count, dest += other.dest; }
};
using AllLevelSums = std::array<LevelSums, toneLevels>;

/// A tone curve of a source, through the means of the destination at its levels, held against a destination: how much
/// of the destination's luma it explains, with what another matrix mixes of the source's chroma into it. A share of its
/// variance, 0 to 1; 0 where it has none. The seventh part of the picture that it explains worst does not count: a
/// subtitle or a logo covers no more. Of pictures of one size.
class ToneFit {
 public:
  /// The source's samples lie as the destination's, which is referred to.
  ToneFit(const std::vector<float>& sourceLuma, const ToneTarget& dest);
  double byLuma() const { return byLuma_; }
  /// Whether chroma may add to that.
  bool asksForChroma() const;
  double withChroma(const std::vector<float>& blue, const std::vector<float>& red) const;

 private:
  const ToneTarget& dest_;
  std::vector<std::uint8_t> levels_;
  AllLevelSums sums_;
  double byLuma_ = 0;
  bool isFlat_ = false;
};

/// Where something lies over the destination that is not in the source: parts that the tone curve misses by far.
/// One for each sample.
std::vector<bool> coveredSamples(const Signal& source, const Signal& dest);

}  // namespace diagnosis
