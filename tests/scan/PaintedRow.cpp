#include "tests/scan/PaintedRow.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <map>
#include <mutex>

#include "tests/support/Noise.h"

namespace scan::test {
namespace {

using movie::test::hash01;
using movie::test::valueNoise;

constexpr double shotSeconds = 3.7;

/// What a shot pans over, as fine as a thumbnail can show it. Painted once: a movie shows it again and again.
class Texture {
 public:
  explicit Texture(std::uint32_t shot) : samples_(std::size_t{rows} * columns) {
    float* sample = samples_.data();
    for (int row = 0; row < rows; ++row) {
      for (int column = 0; column < columns; ++column) {
        *sample++ = static_cast<float>(painted(shot, least + column * spacing, least + row * spacing));
      }
    }
  }

  /// Between which of its samples a place lies along an axis.
  struct Step {
    std::size_t before = 0;
    double behind = 0;
  };
  static Step across(double u) { return step(u, columns); }
  static Step down(double v) { return step(v, rows); }

  double at(const Step& across, const Step& down) const {
    const float* const here = samples_.data() + down.before * columns + across.before;
    const double above = double{here[0]} + across.behind * (double{here[1]} - double{here[0]});
    const double under = double{here[columns]} + across.behind * (double{here[columns + 1]} - double{here[columns]});
    return above + down.behind * (under - above);
  }

 private:
  static Step step(double place, int samples) {
    const double at = std::clamp((place - least) / spacing, 0.0, samples - 1.001);
    const auto before = static_cast<std::size_t>(at);
    return {before, at - static_cast<double>(before)};
  }

  static double painted(std::uint32_t shot, double u, double v) {
    const double coarse = valueNoise(3 * u + 10, 3 * v + 10, 11 * shot),
                 fine = valueNoise(9 * u + 30, 9 * v + 30, 13 * shot);
    return 0.04 + 0.9 * std::clamp(1.3 * (0.7 * coarse + 0.3 * fine) - 0.15, 0.0, 1.0);
  }

  // Shots pan by at most 0.6 either way.
  static constexpr double least = -0.6, spacing = 1.0 / 90;
  static constexpr int columns = 270, rows = 198;
  std::vector<float> samples_;
};

const Texture& textureOf(std::uint32_t shot) {
  static std::mutex mutex;
  static std::map<std::uint32_t, Texture> painted;
  const std::lock_guard lock(mutex);
  return painted.try_emplace(shot, shot).first->second;
}

/// A moment of a shot: every one pans its own way.
struct Moment {
  explicit Moment(double content) {
    const double number = std::floor(content / shotSeconds), into = content - number * shotSeconds;
    const auto shot = static_cast<std::uint32_t>(static_cast<std::int64_t>(number) + 5000);
    const double direction = 6.283 * hash01(static_cast<int>(shot), 1, 7),
                 speed = 0.05 + 0.1 * hash01(static_cast<int>(shot), 2, 7);
    texture = &textureOf(shot);
    right = speed * into * std::cos(direction);
    down = speed * into * std::sin(direction);
  }
  const Texture* texture = nullptr;
  double right = 0, down = 0;
};

/// A sample of an axis, in each of two moments where these are mixed.
struct Place {
  bool isShown = false;  ///< beside the bars
  double ofMaster = 0;
  Texture::Step main, mixed;
};
using Places = std::vector<Place>;

double between(double begin, double end, double share) {
  return begin + share * (end - begin);
}

/// Where samples lie between the bars and in the part of the master, from 0 to 1.
Places placesAlong(int samples, double boxBegin, double boxEnd, double partBegin, double partEnd) {
  Places places;
  for (int i = 0; i < samples; ++i) {
    const double at = (i + 0.5) / samples;
    places.push_back(
        {at >= boxBegin && at <= boxEnd, between(partBegin, partEnd, (at - boxBegin) / (boxEnd - boxBegin)), {}, {}});
  }
  return places;
}

/// The samples of a picture, all that is needed of them known once for each axis.
struct Canvas {
  Canvas(const Laid& laid, const Moment& main, const Moment& mixed)
      : columns(placesAlong(thumbnailWidth, laid.box.left, laid.box.right, laid.part.left, laid.part.right)),
        rows(placesAlong(thumbnailHeight, laid.box.top, laid.box.bottom, laid.part.top, laid.part.bottom)) {
    for (Place& each : columns) {
      if (laid.mirrored) each.ofMaster = 1 - each.ofMaster;
      each.main = Texture::across(each.ofMaster * 16 / 9 + main.right);
      each.mixed = Texture::across(each.ofMaster * 16 / 9 + mixed.right);
    }
    for (Place& each : rows) {
      each.main = Texture::down(each.ofMaster + main.down);
      each.mixed = Texture::down(each.ofMaster + mixed.down);
    }
  }
  Places columns, rows;
};

/// By pointers: the sanitizers make a call of every step of a vector.
using Lines = std::array<float*, 3>;

void paintLine(const Lines& lines, const Shown& shown, const Canvas& canvas, const Place& row, const Moment& main,
               const Moment& mixed) {
  const auto exponent = static_cast<float>(shown.exponent), share = static_cast<float>(shown.mixed);
  const Place* column = canvas.columns.data();
  for (int i = 0; i < thumbnailWidth; ++i, ++column) {
    if (!column->isShown) continue;
    auto luma = static_cast<float>(main.texture->at(column->main, row.main));
    if (share > 0) luma += share * (static_cast<float>(mixed.texture->at(column->mixed, row.mixed)) - luma);
    lines[0][i] = exponent == 1 ? luma : std::pow(luma, exponent);
    lines[1][i] = static_cast<float>(0.02 * (column->ofMaster - 0.5));
    lines[2][i] = static_cast<float>(0.02 * (row.ofMaster - 0.5));
  }
}

void paint(const Lines& planes, const Shown& shown, const Laid& laid) {
  const Moment main(shown.content), mixed(shown.mixed > 0 ? shown.other : shown.content);
  const Canvas canvas(laid, main, mixed);
  Lines lines = planes;
  for (const Place& row : canvas.rows) {
    if (row.isShown) paintLine(lines, shown, canvas, row, main, mixed);
    for (float*& line : lines) line += thumbnailWidth;
  }
}

void addNoise(float* luma, double most, std::uint32_t frame) {
  for (int row = 0; row < thumbnailHeight; ++row) {
    for (int column = 0; column < thumbnailWidth; ++column) {
      *luma++ += static_cast<float>(most * (hash01(column, row, frame) - 0.5));
    }
  }
}

std::uint64_t digestOf(const Shown& shown) {
  std::uint64_t digest = 0;
  for (const double value :
       {shown.content, shown.exponent, shown.mixed, shown.other, shown.coded ? 1.0 : 0.0, shown.black ? 1.0 : 0.0}) {
    std::uint64_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    digest = (digest ^ bits) * 0x9E3779B97F4A7C15U;
  }
  return digest | 1U;
}

}  // namespace

std::vector<std::size_t> PaintedRow::syncFrames() const {
  std::vector<std::size_t> frames;
  for (std::size_t i = 0; i < frames_.size(); i += sync_) frames.push_back(i);
  return frames;
}

movie::Result<Thumbnail> PaintedRow::thumbnail(std::size_t frame) {
  if (frame >= broken_ || frame >= frames_.size()) return movie::failed("painted.mov", movie::Reason::BecameShorter);
  const Shown& shown = frames_[frame];
  Thumbnail thumbnail;
  thumbnail.digest = digestOf(shown);
  diagnosis::Signal& signal = thumbnail.signal;
  signal.width = thumbnailWidth;
  signal.height = thumbnailHeight;
  Lines planes{};
  for (std::size_t plane = 0; plane < 3; ++plane) {
    signal.planes[plane].resize(std::size_t{thumbnailWidth} * thumbnailHeight);
    planes[plane] = signal.planes[plane].data();
  }
  if (!shown.black) paint(planes, shown, laid_);
  if (shown.coded) addNoise(planes[0], shown.noise, static_cast<std::uint32_t>(frame));
  return thumbnail;
}

std::vector<Shown> master(double begin, double end, double rate) {
  std::vector<Shown> frames;
  const auto first = std::llround(begin * rate), last = std::llround(end * rate);
  for (auto i = first; i < last; ++i) frames.push_back({.content = static_cast<double>(i) / rate});
  return frames;
}

std::vector<Shown> standing(double begin, double end) {
  std::vector<Shown> frames = master(begin, end);
  for (Shown& frame : frames) frame = {.content = 1, .mixed = 0.1, .other = frame.content};
  return frames;
}

std::vector<Shown> joined(std::vector<Shown> first, const std::vector<Shown>& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

std::vector<Shown> exported(std::vector<Shown> frames, double exponent) {
  for (Shown& frame : frames) {
    frame.coded = true;
    frame.exponent = exponent;
  }
  return frames;
}

}  // namespace scan::test
