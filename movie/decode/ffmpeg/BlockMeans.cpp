#include "movie/decode/ffmpeg/BlockMeans.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstring>

namespace movie {
namespace {

/// Blocks along an axis.
struct BlockAxis {
  int first = 0, size = 0;
};

std::optional<BlockAxis> blockAxisOf(const AxisScale& axis) {
  const double size = axis.length / axis.result;
  const bool isWhole = size >= 1 && size == std::floor(size) && axis.begin == std::floor(axis.begin);
  if (!isWhole || axis.begin < 0 || axis.begin + axis.length > axis.source) return std::nullopt;
  return BlockAxis{static_cast<int>(axis.begin), static_cast<int>(size)};
}

/// Adds up rows, a piece of some registers at a time.
template <typename Sample>
void sumRows(const std::vector<const std::uint8_t*>& rows, Sample mask, std::vector<std::uint16_t>& sum) {
  constexpr std::size_t piece = 32;
  std::size_t x = 0;
  for (; x + piece <= sum.size(); x += piece) {
    std::array<std::uint16_t, piece> sums{};
    for (const std::uint8_t* const row : rows) {
      std::array<Sample, piece> codes;  // of its own, which nothing else can point to
      std::memcpy(codes.data(), row + x * sizeof(Sample), sizeof codes);
      for (std::size_t i = 0; i < piece; ++i) sums[i] = static_cast<std::uint16_t>(sums[i] + (codes[i] & mask));
    }
    std::copy(sums.begin(), sums.end(), sum.begin() + static_cast<std::ptrdiff_t>(x));
  }
  for (; x < sum.size(); ++x) {
    unsigned rest = 0;
    for (const std::uint8_t* const row : rows) {
      Sample code = 0;
      std::memcpy(&code, row + x * sizeof(Sample), sizeof code);
      rest += static_cast<unsigned>(code & mask);
    }
    sum[x] = static_cast<std::uint16_t>(rest);
  }
}

/// The rows of one line of blocks, wherever they are read from.
class BlockRows {
 public:
  BlockRows(const PlaneRows& rows, const BlockAxis& columns, const BlockAxis& lines, std::size_t count)
      : rows_(rows), columns_(columns), lines_(lines), sum_(count) {}

  const std::vector<std::uint16_t>& sumOf(int line) {
    const int first = lines_.first + line * lines_.size;
    if (rows_.beforeRows) rows_.beforeRows(first + lines_.size);
    const PlaneSamples& samples = rows_.samples;
    starts_.clear();
    if (samples.first != nullptr) {
      const std::ptrdiff_t left = static_cast<std::ptrdiff_t>(columns_.first) * samples.bytes;
      for (int i = 0; i < lines_.size; ++i) starts_.push_back(samples.first + (first + i) * samples.stride + left);
      if (samples.bytes == 1) {
        sumRows<std::uint8_t>(starts_, static_cast<std::uint8_t>(samples.mask), sum_);
      } else {
        sumRows<std::uint16_t>(starts_, samples.mask, sum_);
      }
      return sum_;
    }
    scratch_.resize(sum_.size() * static_cast<std::size_t>(lines_.size));
    std::uint16_t* into = scratch_.data();
    for (int i = 0; i < lines_.size; ++i, into += sum_.size()) {
      const std::uint16_t* const row = rows_.read(first + i, columns_.first, static_cast<int>(sum_.size()), into);
      starts_.push_back(reinterpret_cast<const std::uint8_t*>(row));
    }
    sumRows<std::uint16_t>(starts_, 0xFFFF, sum_);
    return sum_;
  }

 private:
  const PlaneRows& rows_;
  BlockAxis columns_, lines_;
  std::vector<std::uint16_t> sum_, scratch_;
  std::vector<const std::uint8_t*> starts_;  ///< of the rows
};

/// Means of `size` neighbours; `fixed` is that number where it is known when this is compiled, else 0.
template <std::size_t fixed>
void meansOf(const std::uint16_t* sums, std::size_t size, float scale, std::uint16_t* out, std::size_t count) {
  const std::size_t neighbours = fixed > 0 ? fixed : size;
  for (std::size_t column = 0; column < count; ++column, sums += neighbours) {
    std::int32_t sum = 0;
    for (std::size_t i = 0; i < neighbours; ++i) sum += sums[i];
    out[column] = static_cast<std::uint16_t>(std::min(static_cast<float>(sum) * scale + 0.5F, 65535.0F));
  }
}

/// Of the usual sizes of pictures and of their chroma.
auto meansFor(std::size_t size) {
  switch (size) {
    case 4:
      return meansOf<4>;
    case 6:
      return meansOf<6>;
    case 8:
      return meansOf<8>;
    case 12:
      return meansOf<12>;
    case 24:
      return meansOf<24>;
    default:
      return meansOf<0>;
  }
}

}  // namespace

std::optional<std::vector<std::uint16_t>> blockMeans(const PlaneRows& rows, const AxisScale& horizontal,
                                                     const AxisScale& vertical, double factor) {
  const auto columns = blockAxisOf(horizontal), lines = blockAxisOf(vertical);
  constexpr int widest = 32767;  // so that sums fit
  if (!columns || !lines || columns->size > widest) return std::nullopt;
  // No code is higher than what 65536 over the factor leaves.
  if (lines->size * (65536 / factor + 1) > 65536) return std::nullopt;
  const auto across = static_cast<std::size_t>(horizontal.result), size = static_cast<std::size_t>(columns->size);
  const auto scale = static_cast<float>(factor / (static_cast<double>(size) * lines->size));
  BlockRows block(rows, *columns, *lines, across * size);
  const auto means = meansFor(size);
  std::vector<std::uint16_t> result(across * static_cast<std::size_t>(vertical.result));
  for (int line = 0; line < vertical.result; ++line) {
    means(block.sumOf(line).data(), size, scale, &result[across * static_cast<std::size_t>(line)], across);
  }
  return result;
}

}  // namespace movie
