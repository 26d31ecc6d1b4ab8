#pragma once

#include <QWidget>

class QAccessibleEvent;

/// A widget that screen readers tell of by themselves: what they read is its accessible name.
class AlertingWidget : public QWidget {
  Q_OBJECT

 protected:
  explicit AlertingWidget(QWidget* parent);

  /// The name has news.
  void alert();
  /// Hands an event to the screen readers that there are.
  virtual void announce(QAccessibleEvent& event);
};
