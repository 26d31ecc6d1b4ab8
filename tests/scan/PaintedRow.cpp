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
        *sample++ = static_cast<float>(painted(shot, least + column * step, least + row * step));
      }
    }
  }

  double at(double u, double v) const {
    const double x = std::clamp((u - least) / step, 0.0, columns - 1.001);
    const double y = std::clamp((v - least) / step, 0.0, rows - 1.001);
    const auto column = static_cast<std::size_t>(x), row = static_cast<std::size_t>(y);
    const double right = x - static_cast<double>(column), below = y - static_cast<double>(row);
    const float* const here = samples_.data() + row * columns + column;
    const double above = double{here[0]} + right * (double{here[1]} - double{here[0]});
    const double under = double{here[columns]} + right * (double{here[columns + 1]} - double{here[columns]});
    return above + below * (under - above);
  }

 private:
  static double painted(std::uint32_t shot, double u, double v) {
    const double coarse = valueNoise(3 * u + 10, 3 * v + 10, 11 * shot),
                 fine = valueNoise(9 * u + 30, 9 * v + 30, 13 * shot);
    return 0.04 + 0.9 * std::clamp(1.3 * (0.7 * coarse + 0.3 * fine) - 0.15, 0.0, 1.0);
  }

  // Shots pan by at most 0.6 either way.
  static constexpr double least = -0.6, step = 1.0 / 90;
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
  double lumaAt(double x, double y) const { return texture->at(x * 16 / 9 + right, y + down); }

  const Texture* texture = nullptr;
  double right = 0, down = 0;
};

struct Color {
  double luma = 0, pb = 0, pr = 0;
};

/// What a frame shows, at both moments where two are mixed.
struct Moments {
  explicit Moments(const Shown& shown) : main(shown.content), mixed(shown.mixed > 0 ? shown.other : shown.content) {}
  Moment main, mixed;
};

Color colorAt(const Shown& shown, const Moments& moments, const Laid& laid, double x, double y) {
  if (shown.black || x < laid.box.left || x > laid.box.right || y < laid.box.top || y > laid.box.bottom) return {};
  double u = laid.part.left + (x - laid.box.left) / laid.box.width() * laid.part.width();
  const double v = laid.part.top + (y - laid.box.top) / laid.box.height() * laid.part.height();
  if (laid.mirrored) u = 1 - u;
  double luma = moments.main.lumaAt(u, v);
  if (shown.mixed > 0) luma += shown.mixed * (moments.mixed.lumaAt(u, v) - luma);
  return {shown.exponent == 1 ? luma : std::pow(luma, shown.exponent), 0.02 * (u - 0.5), 0.02 * (v - 0.5)};
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
  const Moments moments(shown);
  Thumbnail thumbnail;
  thumbnail.digest = digestOf(shown);
  diagnosis::Signal& signal = thumbnail.signal;
  signal.width = thumbnailWidth;
  signal.height = thumbnailHeight;
  // By pointers: the sanitizers make a call of every step of a vector.
  std::array<float*, 3> samples{};
  for (std::size_t plane = 0; plane < 3; ++plane) {
    signal.planes[plane].resize(std::size_t{thumbnailWidth} * thumbnailHeight);
    samples[plane] = signal.planes[plane].data();
  }
  for (int row = 0; row < thumbnailHeight; ++row) {
    for (int column = 0; column < thumbnailWidth; ++column) {
      Color color = colorAt(shown, moments, laid_, (column + 0.5) / thumbnailWidth, (row + 0.5) / thumbnailHeight);
      if (shown.coded) color.luma += shown.noise * (hash01(column, row, static_cast<std::uint32_t>(frame)) - 0.5);
      *samples[0]++ = static_cast<float>(color.luma);
      *samples[1]++ = static_cast<float>(color.pb);
      *samples[2]++ = static_cast<float>(color.pr);
    }
  }
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
