#pragma once

#include <QLineEdit>

/// A field for a path: while it is not edited, a path that is too long keeps its end in sight. Its whole text is its
/// tool tip.
class PathField : public QLineEdit {
  Q_OBJECT

 public:
  explicit PathField(QWidget* parent = nullptr);

 protected:
  void focusOutEvent(QFocusEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;

 private:
  void showEnd();
};
