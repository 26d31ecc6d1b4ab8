#pragma once

#include <QColor>
#include <QFont>
#include <QPdfWriter>
#include <QTextCharFormat>

/// The look of the manual's pages: A4, measured in the device pixels of a PDF of 1200 dots an inch.
namespace manual {

constexpr int dotsPerInch = 1200;
constexpr double dots(double millimetres) {
  return millimetres * dotsPerInch / 25.4;
}

constexpr double pageWidth = dots(210), pageHeight = dots(297);
constexpr double textLeft = dots(25), textTop = dots(28), textWidth = dots(160), textHeight = dots(241);
constexpr double textBottom = textTop + textHeight;

constexpr double bodySize = 9.5, codeSize = 8.3, captionSize = 8.2, cellSize = 8.6, runningSize = 7.6;  // points
constexpr int highestHeading = 3;

const QColor ink(0x22, 0x22, 0x22), faintInk(0x70, 0x70, 0x70), linkInk(0x1b, 0x4f, 0x8a), accent(0x2f, 0x5d, 0x8c);
const QColor ruleColor(0xc8, 0xcd, 0xd2), groundOfCode(0xf3, 0xf4, 0xf5), groundOfNotes(0xee, 0xf3, 0xf8);

enum class Weight { Normal, Bold };

/// The text face, which looks the same whatever device measures it.
QFont textFont(double points, Weight weight = Weight::Normal);
QFont codeFont(double points);

QTextCharFormat charFormat(const QFont& font, const QColor& color = ink);

/// In points, by the level of a heading from 1 to 3.
double headingSize(int level);

/// A page of the size and resolution that all measures are in.
void setUpPage(QPdfWriter& writer);

}  // namespace manual
