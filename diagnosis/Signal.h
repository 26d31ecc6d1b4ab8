#pragma once

#include <array>
#include <vector>

#include "diagnosis/Tags.h"
#include "movie/decode/Picture.h"

namespace diagnosis {

using Vector3 = std::array<double, 3>;
using Matrix3 = std::array<Vector3, 3>;  ///< rows

/// Codes of 8 bits from black to white, and across the chroma signals, in video range.
constexpr double lumaCodes = 219, chromaCodes = 224;

/// A picture as it is meant: luma (black 0, white 1) and the chroma signals (-0.5 to 0.5) of a matrix that both sides
/// of a comparison share. Values beyond are kept.
struct Signal {
  int width = 0, height = 0;
  std::array<std::vector<float>, 3> planes;  ///< Y', Pb, Pr
  const std::vector<float>& luma() const { return planes[0]; }
  std::size_t size() const { return planes[0].size(); }
};

/// What colours are compared in.
struct ComparedIn {
  std::uint16_t matrix = 1;  ///< of the Y'PbPr: an ITU-T H.273 index
  /// The highest full range code, in codes of 8 bits: 255, and a little more where both sides are deeper.
  double fullCodes = 255;
};

/// The matrix that turns R'G'B' into Y'PbPr of an ITU-T H.273 index: 1, 4, 5, 6, 7, 8 or 9; others count as 1.
Matrix3 fromRgbMatrix(std::uint16_t matrix);
Matrix3 toRgbMatrix(std::uint16_t matrix);

Matrix3 product(const Matrix3& left, const Matrix3& right);
inline Vector3 product(const Matrix3& matrix, const Vector3& vector) {
  const auto row = [&](const Vector3& of) { return of[0] * vector[0] + of[1] * vector[1] + of[2] * vector[2]; };
  return {row(matrix[0]), row(matrix[1]), row(matrix[2])};
}

/// A picture under its tags, in the Y'PbPr of the matrix `common`.
Signal signalOf(const movie::Picture& picture, const SideTags& tags, std::uint16_t common);

/// A picture in fewer samples, each the mean of a block: what an encoder does to texture, and half a sample by which
/// one picture lies beside another, is mostly gone from it.
Signal reduced(const Signal& signal, int width, int height);
/// The same of one plane.
std::vector<float> reduced(const std::vector<float>& plane, int planeWidth, int planeHeight, int width, int height);
/// Where each of so many blocks of an axis ends.
std::vector<std::size_t> blockEnds(int samples, int blocks);
/// The means of the blocks of a row whose lines were added up, by where they end.
void meansOf(const std::vector<float>& line, const std::vector<std::size_t>& columns, std::size_t lines, float* means);

}  // namespace diagnosis
