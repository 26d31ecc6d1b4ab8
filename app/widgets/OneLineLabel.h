#pragma once

#include <QLabel>

/// A plain text in one line, of which an end without room is left out and shows in the tool tip. Asks for no width.
class OneLineLabel : public QLabel {
  Q_OBJECT

 public:
  explicit OneLineLabel(QWidget* parent = nullptr);

  QSize sizeHint() const override { return minimumSizeHint(); }
  QSize minimumSizeHint() const override { return {1, fontMetrics().height()}; }

 protected:
  bool event(QEvent* event) override;
  void paintEvent(QPaintEvent* event) override;
};
