#include "tools/manual/Typography.h"

#include <QPageLayout>
#include <QPageSize>
#include <algorithm>
#include <array>

namespace manual {

namespace {

QFont font(const QString& family, double points, Weight weight) {
  QFont made(family);
  made.setPointSizeF(points);
  made.setBold(weight == Weight::Bold);
  made.setHintingPreference(QFont::PreferNoHinting);
  // Letters that are spaced, if by next to nothing, do not melt: "fi" is found by searching.
  constexpr double nextToNothing = 0.05;
  made.setLetterSpacing(QFont::AbsoluteSpacing, nextToNothing);
  return made;
}

}  // namespace

QFont textFont(double points, Weight weight) {
  return font(QStringLiteral("DejaVu Sans"), points, weight);
}

QFont codeFont(double points) {
  QFont made = font(QStringLiteral("DejaVu Sans Mono"), points, Weight::Normal);
  made.setStyleHint(QFont::Monospace);
  return made;
}

QTextCharFormat charFormat(const QFont& font, const QColor& color) {
  QTextCharFormat format;
  format.setFont(font);
  format.setForeground(color);
  return format;
}

double headingSize(int level) {
  constexpr std::array sizes{20.0, 13.0, 10.5};
  return sizes.at(static_cast<std::size_t>(std::clamp(level, 1, highestHeading) - 1));
}

void setUpPage(QPdfWriter& writer) {
  writer.setResolution(dotsPerInch);
  writer.setPageLayout(QPageLayout(QPageSize(QPageSize::A4), QPageLayout::Portrait, QMarginsF()));
}

}  // namespace manual
