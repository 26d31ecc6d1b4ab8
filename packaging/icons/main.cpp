#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QString>
#include <QSvgGenerator>
#include <cstdio>
#include <cstdlib>

#include "app/widgets/ApplicationIcon.h"

namespace {

bool writeDrawing(const QString& path, int side) {
  QSvgGenerator drawing;
  drawing.setFileName(path);
  constexpr int pixelsOfAnInch = 96;
  drawing.setResolution(pixelsOfAnInch);
  drawing.setSize({side, side});
  drawing.setViewBox(QRect(0, 0, side, side));
  drawing.setTitle(QStringLiteral("Lumacheck"));
  QPainter painter;
  if (!painter.begin(&drawing)) return false;
  drawApplicationIcon(painter, side);
  return painter.end();
}

}  // namespace

/// Draws the application's icon into a PNG or SVG file, for the desktop to show.
int main(int argc, char** argv) {
  const QGuiApplication application(argc, argv);
  const int side = argc == 3 ? std::atoi(argv[1]) : 0;
  if (side <= 0) {
    std::fputs("usage: lumacheck_icons SIDE OUT.png|OUT.svg\n", stderr);
    return 2;
  }
  const QString path = QString::fromLocal8Bit(argv[2]);
  const bool written = path.endsWith(u".svg") ? writeDrawing(path, side) : applicationIconImage(side).save(path, "PNG");
  return written ? 0 : 1;
}
