#include <algorithm>
#include <cmath>

#include "tests/diagnosis/exports/Paintings.h"

namespace diagnosis::test {
namespace {

/// A skyline: how far down it lies at a place across.
double skyline(double u, double base, double height, double steepness, std::uint32_t seed) {
  return base - height * cloud(u * steepness, 0.5, 6, seed);
}

}  // namespace

Paint coast(double u, double v) {
  const double horizon = 0.42, shore = 0.7 + 0.1 * cloud(u * 1.3, 0, 4, 1) - 0.05 * u;
  if (v < horizon) {
    const Paint sky = mix({0.22, 0.47, 0.82}, {0.76, 0.87, 0.95}, v / horizon);
    return mix(sky, {0.97, 0.96, 0.95}, rise(0.5, 0.8, cloud(u * 1.7, v * 5, 7, 2)));
  }
  if (v < shore) {
    const double depth = (v - horizon) / (shore - horizon);
    const double waves = cloud(u * (14 - 8 * depth), v * (90 - 50 * depth), 4, 3);
    const Paint water = mix({0.06, 0.25, 0.42}, {0.2, 0.6, 0.62}, depth) * (0.65 + 0.7 * waves);
    return mix(water, {0.95, 0.97, 0.97}, rise(0.9, 1.0, depth) * rise(0.35, 0.6, waves));
  }
  const Paint sand = mix({0.62, 0.5, 0.33}, {0.88, 0.78, 0.58}, rise(shore, 1, v));
  const double stones =
      rise(0.28, 0.12, nearestStrewn(u * 16, v * 22, 4).distance) * rise(0.5, 0.7, cloud(u * 3, v * 3, 3, 5));
  return mix(sand * (0.78 + 0.44 * cloud(u * 9, v * 16, 7, 6)), {0.25, 0.22, 0.2}, stones);
}

Paint forest(double u, double v) {
  const double leaves = cloud(u * 7, v * 7, 7, 20), sun = rise(0.6, 0.8, cloud(u * 2.5, v * 2.5, 6, 21));
  Paint paint = mix({0.03, 0.06, 0.03}, {0.3, 0.45, 0.12}, leaves * leaves);
  paint = mix(paint, {0.85, 0.9, 0.45}, sun * (0.4 + 0.6 * leaves));
  if (v > 0.78)
    paint = mix({0.2, 0.12, 0.06}, {0.62, 0.42, 0.2}, cloud(u * 16, v * 30, 5, 22)) * (0.5 + 0.6 * sun + 0.3 * v);
  for (int i = 0; i < 9; ++i) {
    const double width = 0.015 + 0.05 * hash01(i, 0, 23),
                 middle = 1.85 * hash01(i, 1, 24) + 0.05 * cloud(v * 2, i, 3, 25);
    const double across = (u - middle) / width;
    if (std::abs(across) > 1 || v > 0.8 + 2 * width) continue;
    const double light = 0.25 + 0.75 * rise(1, -0.8, across);
    paint = mix({0.1, 0.08, 0.06}, {0.5, 0.4, 0.3}, cloud(u * 90, v * 12, 5, 26)) * light;
  }
  return paint;
}

Paint snow(double u, double v) {
  const double ground = skyline(u, 0.6, 0.12, 1.2, 40), far = skyline(u, 0.52, 0.2, 3, 41);
  if (v < far) return mix({0.66, 0.77, 0.9}, {0.9, 0.92, 0.95}, v / far) * (0.96 + 0.06 * cloud(u * 2, v * 4, 5, 42));
  if (v < ground) return mix({0.45, 0.52, 0.58}, {0.8, 0.84, 0.88}, cloud(u * 22, v * 30, 5, 43));
  Paint paint = mix({0.74, 0.8, 0.9}, {0.97, 0.97, 0.96}, cloud(u * 2.5, v * 9, 7, 44));
  for (int i = 0; i < 4; ++i) {
    const double foot = 0.72 + 0.07 * i, across = std::abs(u - 0.2 - 0.45 * i + 0.1 * hash01(i, 2, 45));
    const double height = 0.42, reach = 0.11 * (1 - (foot - v) / height);
    if (v > foot || v < foot - height || across > reach * (0.6 + 0.8 * cloud(u * 30, v * 30, 3, 46))) continue;
    paint = mix({0.06, 0.13, 0.1}, {0.85, 0.9, 0.93}, rise(0.5, 0.75, cloud(u * 18, v * 26, 5, 47)));
  }
  return paint;
}

Paint mountains(double u, double v) {
  Paint paint = mix({0.25, 0.33, 0.6}, {0.98, 0.66, 0.36}, rise(0, 0.55, v));
  paint = mix(paint, {0.95, 0.55, 0.45}, 0.7 * rise(0.55, 0.8, cloud(u * 2, v * 9, 6, 60)));
  paint = paint + Paint{0.9, 0.75, 0.4} * std::exp(-60 * ((u - 1.2) * (u - 1.2) + (v - 0.36) * (v - 0.36)));
  for (int layer = 0; layer < 5; ++layer) {
    const double near = layer / 4.0;
    const double line = skyline(u + layer, 0.5 + 0.13 * layer, 0.34 - 0.05 * layer, 1.6 + 0.5 * layer,
                                61 + 10 * static_cast<std::uint32_t>(layer));
    if (v < line) continue;
    const double rock = cloud(u * (6 + 6 * near), v * (8 + 8 * near) - u * 3, 6, 62);
    const Paint bare = mix({0.1, 0.13, 0.1}, {0.42, 0.36, 0.26}, rock) * (1.1 - 0.5 * near);
    paint = mix({0.72, 0.52, 0.5}, bare, 0.25 + 0.75 * near);
    paint = mix(paint, {0.9, 0.85, 0.86}, (1 - near) * rise(0.62, 0.7, rock) * rise(0.12, 0.0, v - line));
  }
  return paint;
}

Paint desert(double u, double v) {
  Paint paint = mix({0.2, 0.42, 0.75}, {0.72, 0.8, 0.86}, rise(0, 0.4, v));
  for (int i = 0; i < 5; ++i) {
    const double line = skyline(u + 3 * i, 0.42 + 0.14 * i, 0.18, 0.8, 80 + static_cast<std::uint32_t>(i));
    if (v < line) continue;
    const double here = cloud((u + 3 * i) * 0.8, 0.5, 2, 90), there = cloud((u + 3 * i + 0.02) * 0.8, 0.5, 2, 90);
    const double lit = rise(-0.02, 0.02, (there - here) + 0.06 * (v - line - 0.05));
    const double ripples = 0.5 + 0.5 * std::sin(220 * v + 30 * cloud(u * 3, v * 6, 4, 91));
    const Paint sand =
        mix({0.42, 0.2, 0.12}, {0.93, 0.62, 0.32}, lit) * (0.86 + 0.1 * ripples + 0.1 * cloud(u * 20, v * 40, 4, 92));
    paint = mix(sand, {0.8, 0.72, 0.66}, 0.45 * (1 - i / 4.0));
  }
  return paint;
}

Paint rain(double u, double v) {
  double grey = 0.72 - 0.18 * v + 0.14 * (cloud(u * 1.4, v * 2, 5, 110) - 0.5);
  for (int layer = 0; layer < 3; ++layer) {
    const int block = static_cast<int>(std::floor(u * (5 + 2 * layer) + layer * 0.3));
    const double top = 0.2 + 0.14 * layer + 0.3 * hash01(block, layer, 111);
    if (v < top) continue;
    const double storeys = std::sin(v * 260) * std::sin(u * 230) > 0.25 ? 0.05 : 0.0;
    grey = 0.52 - 0.16 * layer + storeys + 0.08 * (cloud(u * 10, v * 14, 5, 112) - 0.5);
  }
  if (v > 0.8) grey = 0.16 + 0.5 * rise(0.35, 0.8, cloud(u * 5, v * 24, 6, 113));
  const bool umbrella = std::hypot(u - 0.62, (v - 0.74) * 1.5) < 0.07 && v < 0.75;
  const Paint paint{grey * 0.98, grey, grey * 1.03};
  return umbrella ? Paint{0.55, 0.16, 0.17} * (0.8 + 6 * (u - 0.6)) : paint;
}

}  // namespace diagnosis::test
