#include "tests/support/Scene.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <vector>

#include <unistd.h>

#include "tests/support/Noise.h"

namespace movie::test {
namespace {

/// One sample of a scene: luma in 0..1 of the nominal range, chroma in -0.5..0.5.
struct Sample {
  double luma = 0, cb = 0, cr = 0;
};

/// Octaves of noise whose amplitude falls with their frequency, 0..1; `u` and `v` span the picture.
double octaves(double u, double v, int count, std::uint32_t seed) {
  double sum = 0, weight = 0, amplitude = 1, frequency = 3;
  for (int i = 0; i < count; ++i) {
    sum += amplitude * valueNoise(u * frequency * 1.6, v * frequency, seed + static_cast<std::uint32_t>(i));
    weight += amplitude;
    amplitude *= 0.6;
    frequency *= 2;
  }
  return sum / weight;
}

Sample naturalSample(double u, double v, int x, int y) {
  double luma = (octaves(u, v, 6, 11) - 0.5) * 1.5 + 0.45;
  if (std::hypot((u - 0.7) * 1.6, v - 0.35) < 0.18) luma = 0.35 + 0.4 * v + 0.2 * u;  // an object with an edge
  if (u < 0.3 && v > 0.65) luma *= 0.55;                                              // a shadow
  luma += 0.01 * (hash01(x, y, 77) - 0.5);
  return {std::clamp(luma, 0.03, 0.93), 0.22 * (octaves(u, v, 3, 41) - 0.5), 0.22 * (octaves(u, v, 3, 59) - 0.5)};
}

Sample sampleAt(SceneKind kind, int x, int y, int width, int height) {
  const double u = (x + 0.5) / width, v = (y + 0.5) / height;
  return kind == SceneKind::GreyRamp ? Sample{0.02 + 0.95 * u, 0, 0} : naturalSample(u, v, x, y);
}

std::uint16_t code16(double value) {
  return static_cast<std::uint16_t>(std::lround(std::clamp(value, 0.0, 65535.0)));
}

/// One picture: three planes of little-endian 16-bit samples.
std::string picture(SceneKind kind, SceneRange range, int width, int height) {
  const bool full = range == SceneRange::Full;
  const double black = full ? 0 : 16 * 256, lumaSpan = full ? 65535 : 219 * 256, chromaSpan = full ? 65535 : 224 * 256;
  const std::size_t area = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
  std::vector<std::uint16_t> samples(area * 3);
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      const Sample s = sampleAt(kind, x, y, width, height);
      const std::size_t at =
          static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x);
      samples[at] = code16(black + lumaSpan * s.luma);
      samples[area + at] = code16(32768 + chromaSpan * s.cb);
      samples[2 * area + at] = code16(32768 + chromaSpan * s.cr);
    }
  }
  return {reinterpret_cast<const char*>(samples.data()), samples.size() * sizeof(std::uint16_t)};
}

}  // namespace

std::string sceneFile(SceneKind kind, SceneRange range, int width, int height) {
  const std::string size = std::to_string(width) + "x" + std::to_string(height);
  const std::string name = std::string("scene-") + (kind == SceneKind::GreyRamp ? "ramp-" : "natural-") +
                           (range == SceneRange::Full ? "full-" : "video-") + size + ".y4m";
  const std::filesystem::path path = std::filesystem::path(LUMACHECK_FIXTURE_DIR) / name;
  if (std::filesystem::exists(path)) return path.string();

  std::filesystem::create_directories(path.parent_path());
  const std::filesystem::path part = path.string() + "." + std::to_string(getpid());
  std::ofstream out(part, std::ios::binary);
  out << "YUV4MPEG2 W" << width << " H" << height
      << " F25:1 Ip A1:1 C444p16 XYSCSS=444P16 XCOLORRANGE=" << (range == SceneRange::Full ? "FULL" : "LIMITED")
      << "\n";
  out << "FRAME\n" << picture(kind, range, width, height);
  out.close();
  std::filesystem::rename(part, path);
  return path.string();
}

}  // namespace movie::test
