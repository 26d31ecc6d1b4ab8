#pragma once

#include <QToolButton>

/// The drawings on the transport's buttons.
enum class Glyph { StepBack, Play, Pause, StepForward, Sound, Silence };

/// A tool button with one of our drawings, in the colour of the theme's button text and sharp at every scale.
class GlyphButton : public QToolButton {
  Q_OBJECT

 public:
  /// `name` is what screen readers say; the tool tip adds the key, where there is one.
  GlyphButton(Glyph glyph, const QString& name, const QString& keys, QWidget* parent = nullptr);
  void setGlyph(Glyph glyph, const QString& name, const QString& keys);
  Glyph glyph() const { return glyph_; }

  QSize sizeHint() const override;

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  Glyph glyph_;
};
