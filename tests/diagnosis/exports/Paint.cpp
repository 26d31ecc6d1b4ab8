#include "tests/diagnosis/exports/Paint.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <mutex>

#include <unistd.h>

namespace diagnosis::test {
namespace {

/// What the lens and the film make of it.
Paint photographed(const Paint& paint, int x, int y) {
  const double u = (x + 0.5) / paintedWidth - 0.5, v = (y + 0.5) / paintedHeight - 0.5;
  const double light = 1.0 - 0.35 * (u * u + v * v);
  const auto grain = [&](std::uint32_t channel) {
    return 0.02 * (hash01(x, y, channel) + hash01(y, x, channel + 3) - 1.0);
  };
  return {paint.r * light + grain(900), paint.g * light + grain(901), paint.b * light + grain(902)};
}

void appendSample(std::string& samples, double value) {
  const auto code = static_cast<unsigned>(std::lround(std::clamp(value, 0.0, 1.0) * 65535.0));
  samples += static_cast<char>(code >> 8);
  samples += static_cast<char>(code & 0xFFU);
}

std::string samplesOf(const Painting& painting) {
  std::string samples;
  for (int y = 0; y < paintedHeight; ++y) {
    for (int x = 0; x < paintedWidth; ++x) {
      const double u = (x + 0.5) / paintedWidth * paintedAspect, v = (y + 0.5) / paintedHeight;
      const Paint paint = photographed(painting.painter(u + painting.shift, v), x, y);
      for (const double value : {paint.r, paint.g, paint.b}) appendSample(samples, value);
    }
  }
  return samples;
}

}  // namespace

Paint operator+(const Paint& one, const Paint& other) {
  return {one.r + other.r, one.g + other.g, one.b + other.b};
}

Paint operator*(const Paint& paint, double factor) {
  return {paint.r * factor, paint.g * factor, paint.b * factor};
}

Paint mix(const Paint& one, const Paint& other, double share) {
  return one * (1.0 - share) + other * share;
}

double rise(double low, double high, double value) {
  const double t = std::clamp((value - low) / (high - low), 0.0, 1.0);
  return t * t * (3 - 2 * t);
}

double cloud(double x, double y, int octaves, std::uint32_t seed) {
  double sum = 0, weights = 0, weight = 1, scale = 1;
  for (int i = 0; i < octaves; ++i) {
    sum += weight * movie::test::valueNoise(x * scale, y * scale, seed + static_cast<std::uint32_t>(i));
    weights += weight;
    weight *= 0.55;
    scale *= 2.03;
  }
  return std::clamp(0.5 + 1.5 * (sum / weights - 0.5), 0.0, 1.0);
}

Strewn nearestStrewn(double x, double y, std::uint32_t seed) {
  const int column = static_cast<int>(std::floor(x)), row = static_cast<int>(std::floor(y));
  Strewn nearest{.distance = 9};
  for (int j = row - 1; j <= row + 1; ++j) {
    for (int i = column - 1; i <= column + 1; ++i) {
      const double dx = x - i - 0.15 - 0.7 * hash01(i, j, seed), dy = y - j - 0.15 - 0.7 * hash01(i, j, seed + 1);
      const double distance = std::hypot(dx, dy);
      if (distance < nearest.distance) nearest = {dx, dy, distance, i, j};
    }
  }
  return nearest;
}

std::string paintedFile(const Painting& painting) {
  static std::mutex brush;
  const std::lock_guard<std::mutex> lock(brush);
  const std::filesystem::path path =
      std::filesystem::path(LUMACHECK_FIXTURE_DIR) / ("painting-" + painting.name + ".ppm");
  if (std::filesystem::exists(path)) return path.string();
  std::filesystem::create_directories(path.parent_path());
  const std::filesystem::path part = path.string() + "." + std::to_string(getpid());
  std::ofstream out(part, std::ios::binary);
  out << "P6\n" << paintedWidth << " " << paintedHeight << "\n65535\n" << samplesOf(painting);
  out.close();
  std::filesystem::rename(part, path);
  return path.string();
}

}  // namespace diagnosis::test
