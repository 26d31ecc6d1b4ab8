#include "diagnosis/LocalChange.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

namespace diagnosis {
namespace {

/// Places of the picture; each is looked at in fields, of which something may lie over some.
constexpr int placesAcross = 8, placesDown = 6, fieldsOfSide = 2;
constexpr int fieldsAcross = placesAcross * fieldsOfSide, fieldsDown = placesDown * fieldsOfSide;

/// What the calm blocks of a field, or of a place, have become.
struct Change {
  double blocks = 0;
  Vector3 sums{};
  void add(const Vector3& change) {
    ++blocks;
    for (std::size_t plane = 0; plane < 3; ++plane) sums[plane] += change[plane];
  }
  void add(const Change& other) {
    blocks += other.blocks;
    for (std::size_t plane = 0; plane < 3; ++plane) sums[plane] += other.sums[plane];
  }
  double square() const {
    const double luma = lumaCodes * sums[0] / blocks;
    const double blue = chromaCodes * sums[1] / blocks, red = chromaCodes * sums[2] / blocks;
    return luma * luma + (blue * blue + red * red) / 4;
  }
};

/// Sums of what varies within a field.
struct Scatter {
  double count = 0, sum = 0, squares = 0;
  void add(double value) {
    ++count;
    sum += value;
    squares += value * value;
  }
  double all() const { return squares - sum * sum / std::max(1.0, count); }
};

struct Field {
  Change change;
  Scatter luma, lumaChange;
  bool covered = false;
  /// Whether the source's own texture is still there: what lies over it hides it.
  bool keepsTexture() const {
    constexpr double mostLost = 0.25;
    return lumaChange.all() < mostLost * luma.all();
  }
};
using Fields = std::array<Field, std::size_t{fieldsAcross} * fieldsDown>;

Fields fieldsOf(const Blocks& blocks) {
  const Signal &source = blocks.source, &dest = blocks.dest;
  Fields fields;
  std::size_t at = 0;
  for (int y = 0; y < source.height; ++y) {
    for (int x = 0; x < source.width; ++x, ++at) {
      const auto row = static_cast<std::size_t>(y * fieldsDown / source.height);
      const auto column = static_cast<std::size_t>(x * fieldsAcross / source.width);
      Field& field = fields[row * fieldsAcross + column];
      Vector3 change{};
      for (std::size_t plane = 0; plane < 3; ++plane) {
        change[plane] = double{dest.planes[plane][at]} - double{source.planes[plane][at]};
      }
      field.luma.add(double{source.luma()[at]});
      field.lumaChange.add(change[0]);
      field.covered = field.covered || blocks.covered[at];
      if (blocks.calm[at]) field.change.add(change);
    }
  }
  return fields;
}

}  // namespace

double changeByPlace(const Blocks& blocks) {
  const Fields fields = fieldsOf(blocks);
  std::array<Change, std::size_t{placesAcross} * placesDown> places;
  for (std::size_t i = 0; i < fields.size(); ++i) {
    if (fields[i].covered && !fields[i].keepsTexture()) continue;
    const std::size_t row = i / fieldsAcross / fieldsOfSide, column = i % fieldsAcross / fieldsOfSide;
    places[row * placesAcross + column].add(fields[i].change);
  }
  double squares = 0, weights = 0;
  for (const Change& place : places) {
    if (place.blocks < 1) continue;
    squares += place.blocks * place.square();
    weights += place.blocks;
  }
  return weights > 0 ? std::sqrt(squares / weights) : 0;
}

}  // namespace diagnosis
