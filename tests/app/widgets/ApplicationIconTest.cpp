#include <QImage>

#include <gtest/gtest.h>

#include "app/widgets/ApplicationIcon.h"

namespace {

constexpr int iconSide = 256;

/// At a place in a square of side 1.
int lightness(double x, double y) {
  static const QImage icon = applicationIconImage(iconSide);
  return qGray(icon.pixel(qRound(x * iconSide), qRound(y * iconSide)));
}

TEST(ApplicationIcon, ShowsAGreyRampBesideOneThatAWrongGammaMadeDarker) {
  constexpr double rightHalf = 0.3, wrongHalf = 0.7;
  for (const double y : {0.3, 0.4, 0.5, 0.6, 0.7}) {
    EXPECT_GT(lightness(rightHalf, y), lightness(wrongHalf, y)) << y;
    for (const double x : {rightHalf, wrongHalf})
      EXPECT_GT(lightness(x, y - 0.01), lightness(x, y + 0.01)) << x << " " << y;
  }
}

}  // namespace
