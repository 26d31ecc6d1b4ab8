#include "movie/decode/ffmpeg/PlaneScaler.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <utility>

#include "movie/decode/ffmpeg/BlockMeans.h"

namespace movie {
namespace {

/// How one result sample is made of source samples. The weights are not normalised: a whole sample weighs exactly 1, so
/// that sums of codes stay exact in single precision.
struct Mix {
  int first = 0;
  std::vector<float> weights;
  double total = 0;
};

/// Bounds that only rounding keeps off a sample's edge lie on it.
double snapped(double bound) {
  const double edge = std::round(bound);
  return std::abs(bound - edge) < 1e-7 ? edge : bound;
}

Mix areaMix(double from, double to, int source) {
  from = snapped(std::clamp(from, 0.0, static_cast<double>(source)));
  to = snapped(std::clamp(to, 0.0, static_cast<double>(source)));
  Mix mix;
  mix.first = std::min(static_cast<int>(from), source - 1);
  if (to <= from) {
    mix.weights = {1.0F};
    return mix;
  }
  for (int i = mix.first; i < to; ++i) {
    mix.weights.push_back(static_cast<float>(std::min(to, i + 1.0) - std::max(from, static_cast<double>(i))));
  }
  return mix;
}

Mix linearMix(double centre, const AxisScale& axis) {
  const double low = std::clamp(axis.begin, 0.0, axis.source - 1.0);
  const double high = std::clamp(axis.begin + axis.length - 1.0, low, std::max(low, axis.source - 1.0));
  centre = std::clamp(centre, low, high);
  Mix mix;
  mix.first = static_cast<int>(centre);
  const double rest = centre - mix.first;
  if (rest < 1e-6 || mix.first + 1 >= axis.source) {
    mix.weights = {1.0F};
  } else {
    mix.weights = {static_cast<float>(1.0 - rest), static_cast<float>(rest)};
  }
  return mix;
}

std::vector<Mix> mixesOf(const AxisScale& axis) {
  std::vector<Mix> mixes;
  mixes.reserve(static_cast<std::size_t>(axis.result));
  const double step = axis.length / axis.result;
  for (int i = 0; i < axis.result; ++i) {
    Mix mix = step > 1.0 ? areaMix(axis.begin + i * step, axis.begin + (i + 1) * step, axis.source)
                         : linearMix(axis.begin + (i + 0.5) * step - 0.5, axis);
    for (const float weight : mix.weights) mix.total += static_cast<double>(weight);
    mixes.push_back(std::move(mix));
  }
  return mixes;
}

/// The last two rows read: an area's edge row belongs to two results, an interpolated pair to many.
class RowCache {
 public:
  RowCache(const RowReader& readRow, int first, int count) : readRow_(readRow), first_(first), count_(count) {}

  const std::uint16_t* row(int y) {
    Slot& slot = slots_[static_cast<std::size_t>(y) & 1U];
    if (slot.y != y) {
      slot.scratch.resize(static_cast<std::size_t>(count_));
      slot.row = readRow_(y, first_, count_, slot.scratch.data());
      slot.y = y;
    }
    return slot.row;
  }

 private:
  struct Slot {
    int y = -1;
    const std::uint16_t* row = nullptr;
    std::vector<std::uint16_t> scratch;
  };
  const RowReader& readRow_;
  int first_, count_;
  std::array<Slot, 2> slots_;
};

void addRow(std::vector<float>& sum, const std::uint16_t* row, float weight) {
  const std::size_t count = sum.size();
  float* const out = sum.data();
  if (weight == 1.0F) {
    for (std::size_t x = 0; x < count; ++x) out[x] += static_cast<float>(row[x]);
  } else {
    for (std::size_t x = 0; x < count; ++x) out[x] += weight * static_cast<float>(row[x]);
  }
}

/// Adds up whole rows, whose sums of codes fit into 16 bits: as exact, and a good deal quicker.
void addWholeRow(std::vector<std::uint16_t>& sum, const std::uint16_t* row) {
  const std::size_t count = sum.size();
  std::uint16_t* const out = sum.data();
  for (std::size_t x = 0; x < count; ++x) out[x] = static_cast<std::uint16_t>(out[x] + row[x]);
}

/// Columns made of the same number of neighbours each, their weights side by side; some weigh 0.
struct EvenColumns {
  explicit EvenColumns(const std::vector<Mix>& columns) {
    for (const Mix& column : columns) taps = std::max(taps, column.weights.size());
    for (const Mix& column : columns) {
      firsts.push_back(column.first - columns.front().first);
      for (std::size_t i = 0; i < taps; ++i) {
        const double weight = i < column.weights.size() ? static_cast<double>(column.weights[i]) : 0;
        weights.push_back(static_cast<float>(weight / column.total));
      }
    }
  }

  std::size_t taps = 0;
  std::vector<int> firsts;
  std::vector<float> weights;
};

/// `taps` above 0 is the number of neighbours, known when this is compiled.
template <std::size_t taps>
void mixRow(const float* row, const EvenColumns& columns, float factor, std::uint16_t* out) {
  const std::size_t neighbours = taps > 0 ? taps : columns.taps;
  const float* weight = columns.weights.data();
  for (const int first : columns.firsts) {
    const float* const at = row + first;
    float mean = 0;
    for (std::size_t i = 0; i < neighbours; ++i) mean += weight[i] * at[i];
    weight += neighbours;
    *out++ = static_cast<std::uint16_t>(std::min(mean * factor + 0.5F, 65535.0F));
  }
}

constexpr std::array rowMixers{mixRow<0>, mixRow<1>, mixRow<2>, mixRow<3>,  mixRow<4>,  mixRow<5>, mixRow<6>,
                               mixRow<7>, mixRow<8>, mixRow<9>, mixRow<10>, mixRow<11>, mixRow<12>};

/// The sum of the rows that make a line, by their weights; codes are below `codes`.
class LineSum {
 public:
  LineSum(RowCache& rows, std::size_t samples, double codes)
      : rows_(rows), codes_(codes), sum_(samples), whole_(samples) {}

  const std::vector<float>& of(const Mix& line) {
    const bool isWhole =
        std::all_of(line.weights.begin(), line.weights.end(), [](float weight) { return weight == 1; });
    constexpr double most = 65536;
    if (isWhole && static_cast<double>(line.weights.size()) * codes_ <= most) {
      std::fill(whole_.begin(), whole_.end(), std::uint16_t{0});
      for (std::size_t i = 0; i < line.weights.size(); ++i)
        addWholeRow(whole_, rows_.row(line.first + static_cast<int>(i)));
      std::copy(whole_.begin(), whole_.end(), sum_.begin());
    } else {
      std::fill(sum_.begin(), sum_.end(), 0.0F);
      for (std::size_t i = 0; i < line.weights.size(); ++i) {
        addRow(sum_, rows_.row(line.first + static_cast<int>(i)), line.weights[i]);
      }
    }
    return sum_;
  }

 private:
  RowCache& rows_;
  double codes_;
  std::vector<float> sum_;
  std::vector<std::uint16_t> whole_;
};

/// Scales each line on its own and gives it, in the plane's columns from the first one that counts, to `mixLine`, with
/// what all its weights make together. Codes are below `codes`.
template <typename MixLine>
void scaleLines(const RowReader& readRow, const std::vector<Mix>& columns, const AxisScale& vertical, double codes,
                MixLine mixLine) {
  const int first = columns.front().first;
  const int end = columns.back().first + static_cast<int>(columns.back().weights.size());
  RowCache rows(readRow, first, end - first);
  LineSum sum(rows, static_cast<std::size_t>(end - first), codes);
  for (const Mix& line : mixesOf(vertical)) mixLine(sum.of(line), line.total);
}

/// What rounding leaves of 65536 over a factor: no code is higher.
double codesBelow(double factor) {
  return 65536 / factor + 1;
}

}  // namespace

std::vector<std::uint16_t> scalePlaneQuickly(const PlaneRows& rows, const AxisScale& horizontal,
                                             const AxisScale& vertical, double factor) {
  if (auto means = blockMeans(rows, horizontal, vertical, factor)) return std::move(*means);
  const std::vector<Mix> mixes = mixesOf(horizontal);
  const EvenColumns columns(mixes);
  std::vector<float> padded;
  std::vector<std::uint16_t> result(mixes.size() * static_cast<std::size_t>(vertical.result));
  std::uint16_t* out = result.data();
  const auto mixRow = rowMixers[columns.taps < rowMixers.size() ? columns.taps : 0];
  scaleLines(rows.read, mixes, vertical, codesBelow(factor), [&](const std::vector<float>& sum, double total) {
    padded.resize(sum.size() + columns.taps);
    std::copy(sum.begin(), sum.end(), padded.begin());
    mixRow(padded.data(), columns, static_cast<float>(factor / total), out);
    out += mixes.size();
  });
  return result;
}

std::vector<std::uint16_t> scalePlane(const RowReader& readRow, const AxisScale& horizontal, const AxisScale& vertical,
                                      double factor) {
  const std::vector<Mix> columns = mixesOf(horizontal);
  std::vector<std::uint16_t> result;
  result.reserve(columns.size() * static_cast<std::size_t>(vertical.result));
  scaleLines(readRow, columns, vertical, codesBelow(factor), [&](const std::vector<float>& sum, double total) {
    for (const Mix& column : columns) {
      const float* const at = sum.data() + (column.first - columns.front().first);
      double mean = 0;
      for (std::size_t i = 0; i < column.weights.size(); ++i) {
        mean += static_cast<double>(column.weights[i]) * static_cast<double>(at[i]);
      }
      mean = mean / (column.total * total) * factor;
      result.push_back(static_cast<std::uint16_t>(std::clamp(std::floor(mean + 0.5), 0.0, 65535.0)));
    }
  });
  return result;
}

}  // namespace movie
