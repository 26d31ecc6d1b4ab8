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

using SamplePlanes = std::array<const std::vector<std::uint16_t>*, 3>;

/// Where the matrix is the common one already, each plane goes by itself.
std::vector<float> scaled(const std::vector<std::uint16_t>& samples, float factor, float shift) {
  std::vector<float> result(samples.begin(), samples.end());
  for (float& value : result) value = factor * value - shift;
  return result;
}

std::vector<float> mixed(const SamplePlanes& samples, const Vector3& factors, float shift) {
  const auto a = static_cast<float>(factors[0]), b = static_cast<float>(factors[1]), c = static_cast<float>(factors[2]);
  std::vector<float> result(samples[0]->begin(), samples[0]->end());
  const std::uint16_t *const second = samples[1]->data(), *const third = samples[2]->data();
  for (std::size_t i = 0; i < result.size(); ++i) {
    result[i] = a * result[i] + b * static_cast<float>(second[i]) + c * static_cast<float>(third[i]) - shift;
  }
  return result;
}

/// The lines of a block, added up.
void addLines(std::vector<float>& sums, const float* lines, std::size_t count) {
  const std::size_t width = sums.size();
  std::size_t line = 0;
  // As many at once as most blocks have.
  for (; line + 4 <= count; line += 4, lines += 4 * width) {
    const float *const a = lines, *const b = a + width, *const c = b + width, *const d = c + width;
    for (std::size_t x = 0; x < width; ++x) sums[x] += a[x] + b[x] + c[x] + d[x];
  }
  for (; line < count; ++line, lines += width) {
    for (std::size_t x = 0; x < width; ++x) sums[x] += lines[x];
  }
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
  const bool grey = picture.model == movie::PictureModel::Grey;
  const SamplePlanes samples{&picture.planes[0], &picture.planes[grey ? 0 : 1], &picture.planes[grey ? 0 : 2]};
  Signal signal{picture.width, picture.height, {}};
  for (std::size_t plane = 0; plane < 3; ++plane) {
    const Vector3& factors = map.matrix[plane];
    const auto shift = static_cast<float>(product(map.matrix, map.zero)[plane]);
    signal.planes[plane] = factors[(plane + 1) % 3] == 0 && factors[(plane + 2) % 3] == 0
                               ? scaled(*samples[plane], static_cast<float>(factors[plane]), shift)
                               : mixed(samples, factors, shift);
  }
  return signal;
}

std::vector<std::size_t> blockEnds(int samples, int blocks) {
  std::vector<std::size_t> ends(static_cast<std::size_t>(blocks));
  const auto all = static_cast<std::size_t>(samples), count = ends.size();
  for (std::size_t block = 0; block < count; ++block) ends[block] = ((block + 1) * all + count - 1) / count;
  return ends;
}

void meansOf(const std::vector<float>& line, const std::vector<std::size_t>& columns, std::size_t lines, float* means) {
  constexpr std::size_t usual = 4;
  const std::size_t count = columns.size();
  if (line.size() == usual * count) {
    const float* const in = line.data();
    const auto samples = static_cast<float>(usual * lines);
    for (std::size_t i = 0; i < count; ++i) {
      means[i] = (in[4 * i] + in[4 * i + 1] + in[4 * i + 2] + in[4 * i + 3]) / samples;
    }
    return;
  }
  for (std::size_t column = 0, x = 0; column < count; ++column) {
    const std::size_t first = x;
    float sum = 0;
    for (; x < columns[column]; ++x) sum += line[x];
    means[column] = sum / std::max(1.0F, static_cast<float>(lines * (x - first)));
  }
}

std::vector<float> reduced(const std::vector<float>& plane, int planeWidth, int planeHeight, int width, int height) {
  const std::vector<std::size_t> columns = blockEnds(planeWidth, width), rows = blockEnds(planeHeight, height);
  std::vector<float> result(columns.size() * rows.size()), sums(static_cast<std::size_t>(planeWidth));
  for (std::size_t row = 0, top = 0; row < rows.size(); top = rows[row++]) {
    std::fill(sums.begin(), sums.end(), 0.0F);
    addLines(sums, &plane[top * sums.size()], rows[row] - top);
    meansOf(sums, columns, rows[row] - top, &result[row * columns.size()]);
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
