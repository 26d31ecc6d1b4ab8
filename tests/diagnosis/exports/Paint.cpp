#include "tests/diagnosis/exports/Paint.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <mutex>

#include <unistd.h>

namespace diagnosis::test {
namespace {

double lattice(double x, double y, std::uint32_t seed) {
  const double fx = std::floor(x), fy = std::floor(y);
  const int ix = static_cast<int>(fx), iy = static_cast<int>(fy);
  const double tx = rise(0, 1, x - fx), ty = rise(0, 1, y - fy);
  const double top = std::lerp(chance(ix, iy, seed), chance(ix + 1, iy, seed), tx);
  const double bottom = std::lerp(chance(ix, iy + 1, seed), chance(ix + 1, iy + 1, seed), tx);
  return std::lerp(top, bottom, ty);
}

/// What the lens and the film make of it.
Paint photographed(const Paint& paint, int x, int y) {
  const double u = (x + 0.5) / paintedWidth - 0.5, v = (y + 0.5) / paintedHeight - 0.5;
  const double light = 1.0 - 0.35 * (u * u + v * v);
  const auto grain = [&](std::uint32_t channel) {
    return 0.02 * (chance(x, y, channel) + chance(y, x, channel + 3) - 1.0);
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

double chance(int x, int y, std::uint32_t seed) {
  std::uint32_t h =
      static_cast<std::uint32_t>(x) * 0x9E3779B1U ^ static_cast<std::uint32_t>(y) * 0x85EBCA77U ^ seed * 0xC2B2AE3DU;
  h ^= h >> 15;
  h *= 0x2C1B3C6DU;
  h ^= h >> 12;
  h *= 0x297A2D39U;
  h ^= h >> 15;
  return static_cast<double>(h) / 4294967295.0;
}

double cloud(double x, double y, int octaves, std::uint32_t seed) {
  double sum = 0, weights = 0, weight = 1, scale = 1;
  for (int i = 0; i < octaves; ++i) {
    sum += weight * lattice(x * scale, y * scale, seed + static_cast<std::uint32_t>(i));
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
      const double dx = x - i - 0.15 - 0.7 * chance(i, j, seed), dy = y - j - 0.15 - 0.7 * chance(i, j, seed + 1);
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
