#pragma once

#include <QFont>
#include <QPalette>
#include <QWidget>
#include <initializer_list>

inline void setBold(QWidget& text) {
  QFont font = text.font();
  font.setBold(true);
  text.setFont(font);
}

inline void setSlanted(QWidget& text) {
  QFont font = text.font();
  font.setItalic(true);
  text.setFont(font);
}

/// For what holds no longer: these colours, faint, but to be read still.
inline QPalette faintColors(const QPalette& colors, std::initializer_list<QPalette::ColorRole> roles) {
  constexpr int faint = 140;
  QPalette faintOnes;
  for (const QPalette::ColorRole role : roles) {
    QColor color = colors.color(role);
    color.setAlpha(faint);
    faintOnes.setColor(role, color);
  }
  return faintOnes;
}
