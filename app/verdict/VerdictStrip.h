#pragma once

#include <QHash>

#include "app/verdict/Verdict.h"
#include "app/widgets/AlertingWidget.h"

class CurvePicture;
class FactTable;
class MessageSign;
class QHBoxLayout;
class QLabel;
class QPushButton;

/// What a check found: the verdict with its sign and colour, what to do about it and by which button, both movies
/// property by property, and the tone curve. Faint where it holds no longer. Screen readers are told of a new verdict.
class VerdictStrip : public AlertingWidget {
  Q_OBJECT

 public:
  explicit VerdictStrip(QWidget* parent = nullptr);

  void setView(const VerdictView& view);
  const VerdictView& view() const { return view_; }

  QPushButton& button(VerdictAction action) const { return *buttons_[action]; }
  FactTable& facts() { return *facts_; }

 signals:
  void chosen(VerdictAction action);

 protected:
  void paintEvent(QPaintEvent* event) override;
  void changeEvent(QEvent* event) override;  ///< another theme

 private:
  void layOut();
  void addButtons(QHBoxLayout& row);
  void showHolding();
  void tellScreenReaders(const VerdictView& before);

  MessageSign* sign_;
  QLabel *headline_, *advice_, *notes_;
  FactTable* facts_;
  CurvePicture* curve_;
  QHash<VerdictAction, QPushButton*> buttons_;
  VerdictView view_;
};
