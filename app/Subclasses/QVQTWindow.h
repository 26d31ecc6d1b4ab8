#pragma once

#include <QMainWindow>

class QKeyEvent;
class QPushButton;

/// The main window. Keeps arrow keys inside a text that is being edited, whatever shortcuts the window has, and gives
/// Return to its default button.
class QVQTWindow : public QMainWindow {
  Q_OBJECT

 public:
  explicit QVQTWindow(QWidget* parent = nullptr);

  /// performKeyEquivalent: whether the key was handled, by the text that has the focus or as a key of the window.
  bool performKeyEquivalent(QKeyEvent& event);
  /// selectNextKeyView: gives the focus to the control after the sender's.
  void selectNextKeyView(QWidget* sender);

  void setDefaultButton(QPushButton* button);

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;

 private:
  bool moveInTextBeingEdited(const QKeyEvent& event);
  bool performActionOf(const QKeyEvent& event);

  QPushButton* defaultButton_ = nullptr;
  int handledKey_ = 0;          ///< whose press is not to be handled a second time
  bool pressedInText_ = false;  ///< where the last key press was made
};
