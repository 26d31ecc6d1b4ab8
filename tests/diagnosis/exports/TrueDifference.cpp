#include "tests/diagnosis/exports/TrueDifference.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

namespace diagnosis::test {
namespace {

constexpr int across = 16, down = 12;

/// Luma of BT.709 and B' - Y', R' - Y' in its proportions; in codes of 8 bits.
using Meant = std::array<double, 3>;

/// The mean of a plane's samples in a part of the picture, from 0 to 1 both ways.
double meanOf(const movie::Picture& picture, std::size_t plane, const Region& part) {
  const auto sample = [](double edge, int size) {
    return std::clamp(static_cast<int>(std::lround(edge * size)), 0, size);
  };
  const int left = std::min(sample(part.left, picture.width), picture.width - 1);
  const int top = std::min(sample(part.top, picture.height), picture.height - 1);
  const int right = std::max(left + 1, sample(part.right, picture.width));
  const int bottom = std::max(top + 1, sample(part.bottom, picture.height));
  double sum = 0;
  for (int y = top; y < bottom; ++y) {
    for (int x = left; x < right; ++x) sum += picture.planes[plane][static_cast<std::size_t>(y * picture.width + x)];
  }
  return sum / ((right - left) * (bottom - top)) / 256;
}

std::array<double, 2> weightsOf(std::uint16_t matrix) {
  if (matrix == 9) return {0.2627, 0.0593};
  if (matrix == 1) return {0.2126, 0.0722};
  return {0.299, 0.114};
}

/// R', G' and B', 0 to 1, of means of samples in codes of 8 bits.
std::array<double, 3> rgbOf(const std::array<double, 3>& codes, const SideTags& tags) {
  const bool full = tags.range == SampleRange::Full;
  const double black = full ? 0 : 16, span = full ? 255 : 219, chromaSpan = full ? 255 : 224;
  if (tags.model != movie::PictureModel::YCbCr) {
    return {(codes[0] - black) / span, (codes[1] - black) / span, (codes[2] - black) / span};
  }
  const auto [kr, kb] = weightsOf(tags.matrixInForce);
  const double luma = (codes[0] - black) / span;
  const double blue = luma + 2 * (1 - kb) * (codes[1] - 128) / chromaSpan;
  const double red = luma + 2 * (1 - kr) * (codes[2] - 128) / chromaSpan;
  return {red, (luma - kr * red - kb * blue) / (1 - kr - kb), blue};
}

Meant meantBy(const movie::Picture& picture, const SideTags& tags, const Region& part) {
  std::array<double, 3> codes{};
  const bool grey = tags.model == movie::PictureModel::Grey;
  for (std::size_t plane = 0; plane < 3; ++plane) codes[plane] = meanOf(picture, grey ? 0 : plane, part);
  const auto [red, green, blue] = rgbOf(codes, tags);
  const double luma = 0.2126 * red + 0.7152 * green + 0.0722 * blue;
  return {219 * luma, 224 * (blue - luma) / 1.8556, 224 * (red - luma) / 1.5748};
}

/// A part of a region, counted from the other side where it is mirrored.
Region partOf(const Region& region, int column, int row, bool mirroredX, bool mirroredY) {
  const int x = mirroredX ? across - 1 - column : column, y = mirroredY ? down - 1 - row : row;
  return {region.left + region.width() * x / across, region.top + region.height() * y / down,
          region.left + region.width() * (x + 1) / across, region.top + region.height() * (y + 1) / down};
}

}  // namespace

double trueDifference(const Question& question, const Placement& placement, double covered) {
  const FramePair& frames = question.frames.front();
  std::vector<double> squares;
  for (int row = 0; row < down; ++row) {
    for (int column = 0; column < across; ++column) {
      const Region from = partOf(placement.source, column, row, placement.mirroredX, placement.mirroredY);
      const Meant source = meantBy(*frames.source, question.source, from);
      const Meant dest = meantBy(*frames.dest, question.dest, partOf(placement.dest, column, row, false, false));
      const double luma = dest[0] - source[0], blue = dest[1] - source[1], red = dest[2] - source[2];
      squares.push_back(luma * luma + (blue * blue + red * red) / 4);
    }
  }
  std::sort(squares.begin(), squares.end());
  squares.resize(static_cast<std::size_t>(static_cast<double>(squares.size()) * (1 - covered)));
  double sum = 0;
  for (const double square : squares) sum += square;
  return std::sqrt(sum / static_cast<double>(squares.size()));
}

}  // namespace diagnosis::test
