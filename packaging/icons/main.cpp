#include <QImage>
#include <QString>
#include <cstdio>
#include <cstdlib>

#include "app/ApplicationIcon.h"

/// Draws the application's icon into a PNG file, for the desktop to show.
int main(int argc, char** argv) {
  const int side = argc == 3 ? std::atoi(argv[1]) : 0;
  if (side <= 0) {
    std::fputs("usage: lumacheck_icons SIDE OUT.png\n", stderr);
    return 2;
  }
  return applicationIconImage(side).save(QString::fromLocal8Bit(argv[2]), "PNG") ? 0 : 1;
}
