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

  /// performKeyEquivalent: Qt's question (ShortcutOverride) about a key that was pressed in this window. True when the
  /// control in focus has a use for it, and then it gets the press too; an arrow has moved the cursor of a text
  /// already. Otherwise Qt goes on to the window's shortcuts.
  bool performKeyEquivalent(QKeyEvent& event);
  /// selectNextKeyView: gives the focus to the control after the one that has it, whoever asks.
  void selectNextKeyView(const QWidget* sender);

  void setDefaultButton(QPushButton* button);

 signals:
  void fullScreenDidChange(bool isFullScreen);

 protected:
  void changeEvent(QEvent* event) override;
  bool eventFilter(QObject* watched, QEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;

 private:
  QPushButton* defaultButton_ = nullptr;
  bool wasFullScreen_ = false;
  int handledKey_ = 0;          ///< whose press is not to be handled a second time
  bool pressedInText_ = false;  ///< where the last key press was made
};
