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
  /// Why the button can do nothing now, for the tool tip; empty where it can.
  void setWhyNot(const QString& why);

  QSize sizeHint() const override;

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  void showToolTip();

  Glyph glyph_;
  QString keys_, whyNot_;
};
