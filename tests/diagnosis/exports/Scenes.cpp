#include <algorithm>
#include <cmath>

#include "tests/diagnosis/exports/Paintings.h"

namespace diagnosis::test {
namespace {

/// A ball's surface at a place from -1 to 1 both ways, lit from above on the left: 0 in the shadow.
double ballLight(double x, double y) {
  const double depth = std::sqrt(std::max(0.0, 1 - x * x - y * y));
  return std::max(0.0, -0.45 * x - 0.55 * y + 0.7 * depth);
}

bool inBox(double u, double v, double left, double top, double right, double bottom) {
  return u > left && u < right && v > top && v < bottom;
}

Paint faceAt(double x, double y) {
  const Paint skin = mix({0.32, 0.15, 0.1}, {0.95, 0.74, 0.62}, ballLight(x * 0.9, y * 0.9));
  const Paint cheek{0.86, 0.45, 0.4};
  Paint paint = mix(skin, cheek, 0.25 * rise(0.35, 0.1, std::hypot(std::abs(x) - 0.5, y - 0.25)));
  const double eye = std::hypot((std::abs(x) - 0.38) / 0.17, (y + 0.08) / 0.07);
  if (eye < 1) paint = eye < 0.55 ? Paint{0.1, 0.12, 0.12} : Paint{0.85, 0.84, 0.82};
  if (inBox(std::abs(x), y, 0.2, -0.32, 0.58, -0.25)) paint = {0.2, 0.12, 0.07};
  if (std::hypot(x / 0.28, (y - 0.55) / 0.09) < 1) paint = {0.66, 0.24, 0.24};
  if (std::hypot(x / 0.13, (y - 0.22) / 0.1) < 1) paint = paint * 0.86;
  return paint;
}

}  // namespace

Paint portrait(double u, double v) {
  Paint paint = mix({0.1, 0.2, 0.12}, {0.5, 0.6, 0.32}, cloud(u * 2.2, v * 2.2, 3, 200));
  const Strewn light = nearestStrewn(u * 4, v * 4, 201);
  paint = mix(paint, {0.9, 0.88, 0.6}, 0.35 * rise(0.32, 0.28, light.distance));
  const double x = (u - 0.86) / 0.21, y = (v - 0.44) / 0.29;
  if (std::hypot(x / 1.28, (y + 0.12) / 1.22) < 1) {
    paint = mix({0.08, 0.05, 0.03}, {0.45, 0.28, 0.14}, cloud(u * 60 + 20 * v, v * 7, 4, 202));
  }
  if (std::hypot((u - 0.86) / 0.62, (v - 1.15) / 0.4) < 1) {
    paint = mix({0.3, 0.03, 0.06}, {0.78, 0.13, 0.16}, cloud(u * 5 + 2 * v, v * 4, 6, 203));
  }
  if (inBox(u, v, 0.77, 0.6, 0.95, 0.82)) paint = mix({0.4, 0.2, 0.14}, {0.72, 0.5, 0.4}, rise(0.77, 0.9, u));
  if (std::hypot(x, y) < 1) paint = faceAt(x, y) * (0.97 + 0.06 * cloud(u * 50, v * 50, 3, 204));
  return paint;
}

Paint fruit(double u, double v) {
  static const Paint colors[] = {{0.85, 0.1, 0.1},  {0.95, 0.5, 0.08}, {0.97, 0.85, 0.2},  {0.35, 0.65, 0.12},
                                 {0.62, 0.8, 0.25}, {0.4, 0.1, 0.4},   {0.93, 0.88, 0.75}, {0.2, 0.25, 0.55}};
  const Strewn ball = nearestStrewn(u * 5.5, v * 5.5, 220);
  const double radius = 0.52;
  if (ball.distance > radius) return Paint{0.16, 0.1, 0.06} * (0.4 + cloud(u * 20, v * 20, 4, 221));
  const auto which = static_cast<std::size_t>(hash01(ball.column, ball.row, 222) * 7.99);
  const double light = ballLight(ball.dx / radius, ball.dy / radius);
  const double skin = 0.85 + 0.3 * cloud(u * 26, v * 26, 5, 223);
  const Paint paint = colors[which] * ((0.16 + 0.92 * light) * skin);
  const double shine = std::exp(-40 * std::pow(std::hypot(ball.dx + 0.2, ball.dy + 0.24), 2));
  return mix(paint, {1, 1, 1}, 0.8 * shine);
}

Paint street(double u, double v) {
  Paint paint = mix({0.05, 0.07, 0.16}, {0.25, 0.2, 0.26}, rise(0, 0.6, v)) * (0.8 + 0.4 * cloud(u * 2, v * 3, 5, 240));
  const int house = static_cast<int>(std::floor(u * 6));
  if (v > 0.12 + 0.35 * hash01(house, 0, 241) && v < 0.76) {
    paint =
        mix({0.12, 0.1, 0.12}, {0.32, 0.26, 0.24}, hash01(house, 1, 242)) * (0.7 + 0.6 * cloud(u * 8, v * 20, 5, 243));
    const int column = static_cast<int>(std::floor(u * 30)), row = static_cast<int>(std::floor(v * 22));
    const bool pane = u * 30 - column > 0.25 && v * 22 - row > 0.35;
    if (pane && hash01(column, row, 244) > 0.55) {
      paint =
          mix({0.95, 0.6, 0.22}, {0.98, 0.93, 0.72}, hash01(column, row, 245)) * (0.5 + 0.5 * hash01(row, column, 246));
    }
  }
  if (v > 0.76) {
    const double wet = cloud(u * 4, v * 40, 5, 247);
    paint = mix({0.06, 0.06, 0.09}, {0.75, 0.5, 0.25}, wet * wet * rise(1.1, 0.76, v));
  }
  for (int lamp = 0; lamp < 4; ++lamp) {
    const double du = u - 0.25 - 0.45 * lamp, dv = v - 0.45 - 0.04 * lamp;
    const Paint glow = lamp % 2 == 0 ? Paint{1, 0.75, 0.4} : Paint{0.35, 0.9, 0.75};
    paint = paint + glow * (0.8 * std::exp(-90 * (du * du + dv * dv)) + 0.25 * std::exp(-9 * (du * du + dv * dv)));
  }
  return paint;
}

Paint kitchen(double u, double v) {
  const double light = 0.35 + 0.75 * std::exp(-1.3 * std::hypot(u - 0.35, v - 0.3));
  Paint paint = Paint{0.86, 0.74, 0.56} * (light * (0.95 + 0.1 * cloud(u * 6, v * 6, 6, 260)));
  if (v > 0.72) {
    const double plank = u / (0.3 + v), seam = std::abs(plank * 9 - std::floor(plank * 9) - 0.5);
    paint = mix({0.3, 0.17, 0.09}, {0.62, 0.42, 0.24}, cloud(plank * 30, v * 4, 5, 261)) *
            (seam > 0.47 ? 0.4 : light + 0.25);
  }
  if (inBox(u, v, 0.12, 0.08, 0.58, 0.5)) {
    const bool frame = std::abs(u - 0.35) < 0.012 || std::abs(v - 0.29) < 0.012;
    paint = frame ? Paint{0.45, 0.4, 0.35} : mix({0.7, 0.85, 0.98}, {0.98, 0.98, 0.96}, cloud(u * 4, v * 4, 4, 262));
  }
  if (inBox(u, v, 1.15, 0.1, 1.7, 0.42)) {
    paint = Paint{0.2, 0.38, 0.42} * (std::fmod(u, 0.18) < 0.012 ? 0.4 : 0.5 + light);
  }
  if (inBox(u, v, 0.75, 0.6, 1.65, 0.66)) paint = Paint{0.7, 0.66, 0.6} * (light + 0.2);
  const double x = (u - 0.95) / 0.13, y = (v - 0.49) / 0.13;
  if (std::hypot(x, y) < 1) paint = mix({0.25, 0.02, 0.02}, {0.9, 0.22, 0.15}, ballLight(x, y));
  const double plant = std::hypot((u - 1.42) / 0.16, (v - 0.45) / 0.17) + 0.8 * (cloud(u * 18, v * 18, 3, 263) - 0.5);
  if (plant < 0.9) paint = mix({0.05, 0.18, 0.06}, {0.45, 0.68, 0.25}, cloud(u * 30, v * 30, 4, 264));
  return paint;
}

Paint flowers(double u, double v) {
  static const Paint colors[] = {{0.85, 0.1, 0.5}, {0.97, 0.82, 0.1}, {0.9, 0.12, 0.1},
                                 {0.5, 0.2, 0.75}, {0.95, 0.93, 0.9}, {0.2, 0.35, 0.85}};
  const Paint leaves = mix({0.04, 0.12, 0.03}, {0.35, 0.55, 0.15}, cloud(u * 6, v * 6, 6, 280));
  const Strewn flower = nearestStrewn(u * 3.6, v * 3.6, 281);
  const double angle = std::atan2(flower.dy, flower.dx) + 6 * hash01(flower.column, flower.row, 282);
  const double edge = 0.33 + 0.1 * std::cos(7 * angle);
  if (flower.distance > edge) return leaves;
  if (flower.distance < 0.09) return mix({0.35, 0.18, 0.04}, {0.9, 0.65, 0.1}, cloud(u * 60, v * 60, 3, 283));
  const auto which = static_cast<std::size_t>(hash01(flower.column, flower.row, 284) * 5.99);
  const double veins = 0.9 + 0.12 * std::sin(35 * angle), shade = 0.5 + 0.55 * rise(0.05, 0.35, flower.distance);
  return colors[which] * (veins * shade * (0.9 + 0.15 * cloud(u * 9, v * 9, 4, 285)));
}

Paint stage(double u, double v) {
  static const Paint colors[] = {
      {0.9, 0.12, 0.6}, {0.1, 0.6, 0.95}, {0.95, 0.75, 0.3}, {0.3, 0.2, 0.95}, {0.2, 0.85, 0.45}};
  Paint paint = Paint{0.1, 0.08, 0.15} * (0.5 + 1.4 * cloud(u * 4, v * 4, 5, 300));
  const double haze = 0.35 + 0.9 * cloud(u * 2, v * 2.5, 6, 301);
  for (int i = 0; i < 5; ++i) {
    const double slope = 0.7 * (hash01(i, 0, 302) - 0.5), axis = 0.2 + 0.36 * i + slope * v;
    const double across = (u - axis) / (0.06 + 0.22 * v);
    paint = paint + colors[i] * (haze * (0.85 - 0.45 * v) * std::exp(-2.5 * across * across));
  }
  if (v > 0.62 && v < 0.8) paint = paint + Paint{0.25, 0.18, 0.14} * cloud(u * 12, v * 12, 4, 303);
  const double heads =
      0.8 - 0.06 * cloud(u * 9, 0.3, 3, 304) - 0.05 * rise(0.3, 0.1, std::abs(std::fmod(u, 0.16) - 0.08) * 4);
  if (v > heads) paint = Paint{0.04, 0.03, 0.06} + paint * 0.18;
  return paint;
}

}  // namespace diagnosis::test
