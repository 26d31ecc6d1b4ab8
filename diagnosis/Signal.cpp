#include "diagnosis/Signal.h"

#include <algorithm>

#include "movie/render/PictureRgb.h"
#include "movie/render/YCbCrMatrix.h"

namespace diagnosis {
namespace {

constexpr std::uint16_t bt709 = 1;

Matrix3 inverse(const Matrix3& m) {
  const auto minor = [&](std::size_t r0, std::size_t c0, std::size_t r1, std::size_t c1) {
    return m[r0][c0] * m[r1][c1] - m[r0][c1] * m[r1][c0];
  };
  const double determinant = m[0][0] * minor(1, 1, 2, 2) - m[0][1] * minor(1, 0, 2, 2) + m[0][2] * minor(1, 0, 2, 1);
  Matrix3 result{{{minor(1, 1, 2, 2), -minor(0, 1, 2, 2), minor(0, 1, 1, 2)},
                  {-minor(1, 0, 2, 2), minor(0, 0, 2, 2), -minor(0, 0, 1, 2)},
                  {minor(1, 0, 2, 1), -minor(0, 0, 2, 1), minor(0, 0, 1, 1)}}};
  for (Vector3& row : result) {
    for (double& value : row) value /= determinant;
  }
  return result;
}

/// From samples, as they are stored, to Y'PbPr of the common matrix: a matrix and what it counts from.
struct SampleMap {
  Matrix3 matrix{};
  Vector3 zero{};
};

SampleMap sampleMap(const movie::Picture& picture, const SideTags& tags, std::uint16_t common) {
  const movie::SampleScale scale = movie::sampleScaleOf(picture);
  if (picture.model != movie::PictureModel::YCbCr) {
    SampleMap map{fromRgbMatrix(common), {scale.black, scale.black, scale.black}};
    for (Vector3& row : map.matrix) {
      for (double& value : row) value /= scale.span;
    }
    return map;
  }
  constexpr Matrix3 unit{{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
  SampleMap map{tags.matrixInForce == common ? unit : product(fromRgbMatrix(common), toRgbMatrix(tags.matrixInForce)),
                {scale.black, movie::SampleScale::chromaZero, movie::SampleScale::chromaZero}};
  for (Vector3& row : map.matrix) {
    row[0] /= scale.span;
    row[1] /= scale.chromaSpan;
    row[2] /= scale.chromaSpan;
  }
  return map;
}

}  // namespace

Matrix3 toRgbMatrix(std::uint16_t matrix) {
  const auto known = movie::chromaWeights(matrix);
  const movie::ChromaWeights weights = known ? *known : *movie::chromaWeights(bt709);
  Matrix3 result{};
  for (std::size_t channel = 0; channel < 3; ++channel) {
    result[channel] = {1.0, weights.cb[channel], weights.cr[channel]};
  }
  return result;
}

Matrix3 fromRgbMatrix(std::uint16_t matrix) {
  return inverse(toRgbMatrix(matrix));
}

Matrix3 product(const Matrix3& left, const Matrix3& right) {
  Matrix3 result{};
  for (std::size_t row = 0; row < 3; ++row) {
    for (std::size_t column = 0; column < 3; ++column) {
      for (std::size_t i = 0; i < 3; ++i) result[row][column] += left[row][i] * right[i][column];
    }
  }
  return result;
}

Signal signalOf(const movie::Picture& picture, const SideTags& tags, std::uint16_t common) {
  const SampleMap map = sampleMap(picture, tags, common);
  const std::size_t size = static_cast<std::size_t>(picture.width) * static_cast<std::size_t>(picture.height);
  const bool grey = picture.model == movie::PictureModel::Grey;
  const std::vector<std::uint16_t>& first = picture.planes[0];
  const std::vector<std::uint16_t>& second = grey ? first : picture.planes[1];
  const std::vector<std::uint16_t>& third = grey ? first : picture.planes[2];

  Signal signal{picture.width, picture.height, {}};
  for (std::size_t plane = 0; plane < 3; ++plane) {
    const auto a = static_cast<float>(map.matrix[plane][0]);
    const auto b = static_cast<float>(map.matrix[plane][1]);
    const auto c = static_cast<float>(map.matrix[plane][2]);
    const auto shift = static_cast<float>(product(map.matrix, map.zero)[plane]);
    std::vector<float>& out = signal.planes[plane];
    out.resize(size);
    for (std::size_t i = 0; i < size; ++i) {
      out[i] = a * static_cast<float>(first[i]) + b * static_cast<float>(second[i]) + c * static_cast<float>(third[i]) -
               shift;
    }
  }
  return signal;
}

std::vector<std::size_t> blockEnds(int samples, int blocks) {
  std::vector<std::size_t> ends(static_cast<std::size_t>(blocks));
  const auto all = static_cast<std::size_t>(samples), count = ends.size();
  for (std::size_t block = 0; block < count; ++block) ends[block] = ((block + 1) * all + count - 1) / count;
  return ends;
}

std::vector<float> reduced(const std::vector<float>& plane, int planeWidth, int planeHeight, int width, int height) {
  const std::vector<std::size_t> columns = blockEnds(planeWidth, width), rows = blockEnds(planeHeight, height);
  std::vector<float> result(columns.size() * rows.size()), line(static_cast<std::size_t>(planeWidth));
  float* out = result.data();
  for (std::size_t row = 0, y = 0; row < rows.size(); ++row) {
    const std::size_t firstRow = y;
    std::fill(line.begin(), line.end(), 0.0F);
    for (; y < rows[row]; ++y) {
      const float* const in = &plane[y * line.size()];
      for (std::size_t x = 0; x < line.size(); ++x) line[x] += in[x];
    }
    for (std::size_t column = 0, x = 0; column < columns.size(); ++column) {
      const std::size_t firstColumn = x;
      float sum = 0;
      for (; x < columns[column]; ++x) sum += line[x];
      *out++ = sum / std::max(1.0F, static_cast<float>((y - firstRow) * (x - firstColumn)));
    }
  }
  return result;
}

Signal reduced(const Signal& signal, int width, int height) {
  Signal result{width, height, {}};
  for (std::size_t plane = 0; plane < 3; ++plane) {
    const std::vector<float>& from = signal.planes[plane];
    if (!from.empty()) result.planes[plane] = reduced(from, signal.width, signal.height, width, height);
  }
  return result;
}

}  // namespace diagnosis
