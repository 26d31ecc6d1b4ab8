#include "tests/check/NaturalFrames.h"

#include <algorithm>
#include <cmath>
#include <random>

namespace {

std::uint8_t code(double value) {
  return static_cast<std::uint8_t>(std::clamp(std::lround(value), 0L, 255L));
}

/// Sum of four uniform numbers: near enough to a bell curve, without a library's own distribution.
double noise(std::mt19937& random) {
  double sum = 0;
  for (int i = 0; i < 4; ++i) sum += static_cast<double>(random() >> 8) / static_cast<double>(1U << 24);
  return sum - 2.0;
}

}  // namespace

movie::RgbFrame naturalFrame(int width, int height, std::uint32_t seed) {
  std::mt19937 random(seed);
  const double phase = static_cast<double>(random() % 628) / 100.0;
  movie::RgbFrame frame{width, height, {}};
  frame.samples.reserve(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 3);
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      const double u = static_cast<double>(x) / width, v = static_cast<double>(y) / height;
      double light = 60 + 110 * u * (1 - v) + 30 * std::sin(9 * v + phase) * std::cos(7 * u);
      if (std::hypot(u - 0.6, v - 0.4) < 0.2) light = 210 - 300 * std::hypot(u - 0.55, v - 0.35);
      if (v > 0.8) light = 34 + 20 * std::sin(90 * u + phase);
      const double tint = 18 * std::sin(5 * u + phase), warm = 14 * std::cos(4 * v);
      const double grain = 5 * noise(random);
      frame.samples.push_back(code(light + tint + grain));
      frame.samples.push_back(code(light + grain + noise(random)));
      frame.samples.push_back(code(light - warm + grain + noise(random)));
    }
  }
  return frame;
}

movie::RgbFrame raisedFrame(const movie::RgbFrame& frame, double exponent, std::uint32_t seed) {
  std::mt19937 random(seed);
  movie::RgbFrame raised = frame;
  for (auto& sample : raised.samples) {
    const double normalised = std::max(0.0, (sample - 16.0) / 219.0);
    const double disturbance = static_cast<double>(random() % 3) - 1.0;
    sample = code(16.0 + 219.0 * std::pow(normalised, exponent) + disturbance);
  }
  return raised;
}
