#pragma once

#include <vector>

#include "diagnosis/Blocks.h"
#include "diagnosis/Signal.h"

namespace diagnosis {

/// Samples of nearly one source colour, and what they became. Y'PbPr of the common matrix.
struct Stratum {
  Vector3 source{}, dest{};
  double weight = 0;   ///< 0 to 1: how much it counts beside others
  double samples = 0;  ///< how many there are in the pictures
  double spread = 0;   ///< how far the source's luma lies from the mean within a block, on average
};

/// Gathers pairs of samples by the source's colour: means of small blocks, of calm ones if there are enough, since a
/// mean says less of what became of samples that lie far from it.
class StrataBuilder {
 public:
  void add(const Blocks& blocks);
  void add(const StrataBuilder& other);

  /// Means of each colour with enough samples; the destination's without outliers, such as a subtitle's.
  std::vector<Stratum> strata() const;

  /// Luma of the calm samples, of both sides.
  const std::vector<float>& calmSource() const { return calm_[0][0]; }
  const std::vector<float>& calmDest() const { return calm_[1][0]; }

 private:
  /// Samples of nearly one colour: how many there are, and some of them where they are many.
  struct Cell {
    std::size_t count = 0;
    std::vector<std::size_t> members;
  };
  using Cells = std::vector<Cell>;
  Cells cells() const;
  Stratum stratumOf(const Cell& cell) const;

  std::array<std::vector<float>, 3> calm_[2];  ///< of the source, of the destination
  std::vector<float> activity_;
};

/// Those whose source colours are within the R'G'B' of the matrix, if enough are: what lies beyond is clipped by any
/// conversion, the right ones too.
std::vector<Stratum> withinRgb(std::vector<Stratum> strata, std::uint16_t matrix);

/// What a set of strata lets one tell: how many there are, and how far their colours lie from grey.
struct StrataExtent {
  double count = 0;
  double chroma = 0;  ///< root of the mean square of the distance from grey; 0.5 is the most
};
StrataExtent extentOf(const std::vector<Stratum>& strata);

}  // namespace diagnosis
