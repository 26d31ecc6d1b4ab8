#pragma once

#include <QCoreApplication>
#include <QDialog>
#include <QString>
#include <functional>
#include <optional>
#include <utility>

class QBoxLayout;
class QCheckBox;
class QPushButton;

/// The panel of an alert: icon, message, informative text, one to three buttons and, when asked for, the switch that
/// suppresses the alert in the future. On the main thread only.
///
/// It answers exactly once: 1 for the default button, 0 for the alternate, -1 for the other one.
///  - Return presses the button that has the focus, else the default one; Space presses what has the focus.
///  - Escape presses the button titled "Cancel", else the only button beside the default one, else the only button
///    there is. Of three buttons, none of them Cancel, Escape presses none.
///  - Closed by the window manager, it answers as to Escape; where Escape presses none, with the alternate button.
///  - Taken away in any other way (hidden, closed or destroyed by the program, its parent destroyed, the application
///    quitting), it answers -1.
class AlertPanel final : public QDialog {
  Q_DECLARE_TR_FUNCTIONS(AlertPanel)

 public:
  /// Shown exactly as they stand, never as markup. Without a title (nil or empty) the default button is called "OK" and
  /// the other two do not exist.
  struct Texts {
    QString message, informative, defaultButton, alternateButton, otherButton;
  };
  using Answered = std::function<void(int)>;

  AlertPanel(const Texts& texts, QWidget* parent);
  ~AlertPanel() override;
  AlertPanel(const AlertPanel&) = delete;
  AlertPanel& operator=(const AlertPanel&) = delete;

  /// What is called with the answer, the panel being off the screen by then. Before begin().
  void setAnswered(Answered answered) { answered_ = std::move(answered); }

  /// Shows the switch, set as given; every change by the user is told.
  void showSuppressionButton(bool on, const std::function<void(bool)>& changed);

  /// Comes up as a sheet of its parent; without one, on its own and blocking the other windows.
  void begin();
  /// Takes the panel off the screen without an answer.
  void orderOut();

  QPushButton* defaultButton() const { return defaultButton_; }
  QPushButton* alternateButton() const { return alternateButton_; }    ///< null when there is none
  QPushButton* otherButton() const { return otherButton_; }            ///< null when there is none
  QCheckBox* suppressionButton() const { return suppressionButton_; }  ///< null when there is none

  void accept() override { answer(1); }
  void reject() override;

 protected:
  void closeEvent(QCloseEvent* event) override;
  void hideEvent(QHideEvent* event) override;
  void showEvent(QShowEvent* event) override;

 private:
  QBoxLayout* addTexts(const Texts& texts);
  QBoxLayout* addButtons(const Texts& texts);
  QPushButton* addButton(const QString& title, const char* name, int code);
  std::optional<int> escapeCode() const;
  void answer(int code);

  Answered answered_;  ///< empty once answered or ordered out
  QBoxLayout* textColumn_ = nullptr;
  QPushButton* defaultButton_ = nullptr;
  QPushButton* alternateButton_ = nullptr;
  QPushButton* otherButton_ = nullptr;
  QCheckBox* suppressionButton_ = nullptr;
};
