#include <QImage>
#include <QPixmap>
#include <cstdlib>

#include <gtest/gtest.h>

#include "app/widgets/Glyphs.h"

namespace {

/// As it stands on its button, large.
QImage drawn(Glyph glyph) {
  GlyphButton button(glyph, QStringLiteral("a name"), {});
  QFont large = button.font();
  large.setPixelSize(60);
  button.setFont(large);
  button.resize(button.sizeHint());
  return button.grab().toImage().convertToFormat(QImage::Format_Grayscale8);
}

/// But for how edges are smoothed.
bool areAlike(const QImage& a, const QImage& b) {
  constexpr int smoothed = 40;
  if (a.size() != b.size()) return false;
  for (int y = 0; y < a.height(); ++y) {
    for (int x = 0; x < a.width(); ++x) {
      if (std::abs(qGray(a.pixel(x, y)) - qGray(b.pixel(x, y))) > smoothed) return false;
    }
  }
  return true;
}

QImage leftForRight(const QImage& image) {
  return image.mirrored(true, false);
}

TEST(Glyphs, StandInTheMiddleOfTheirHeight) {
  for (const Glyph glyph :
       {Glyph::StepBack, Glyph::Play, Glyph::Pause, Glyph::StepForward, Glyph::Sound, Glyph::Silence}) {
    const QImage image = drawn(glyph);
    EXPECT_TRUE(areAlike(image, image.mirrored(false, true))) << static_cast<int>(glyph);
  }
}

TEST(Glyphs, OfAPauseAreTwoEqualBarsAroundTheMiddle) {
  const QImage pause = drawn(Glyph::Pause);
  EXPECT_TRUE(areAlike(pause, leftForRight(pause)));
  EXPECT_FALSE(areAlike(drawn(Glyph::Play), leftForRight(drawn(Glyph::Play))));
}

TEST(Glyphs, OfAStepBackAndAStepForwardMirrorEachOther) {
  EXPECT_TRUE(areAlike(drawn(Glyph::StepBack), leftForRight(drawn(Glyph::StepForward))));
  EXPECT_FALSE(areAlike(drawn(Glyph::StepBack), drawn(Glyph::StepForward)));
}

}  // namespace
