#pragma once

#include "app/scan/ScanWords.h"
#include "app/widgets/AlertingWidget.h"

class MessageSign;
class QLabel;
class TimelineView;

/// A scan in the window: what it says, its timeline, and what is to be said of the playhead's place. Screen readers are
/// told of what was found.
class ScanStrip : public AlertingWidget {
 public:
  explicit ScanStrip(QWidget* parent = nullptr);

  void setView(const ScanView& view);
  const ScanView& view() const { return view_; }
  /// Of the playhead.
  void setPlace(const QString& place);
  TimelineView& timeline() { return *timeline_; }

 protected:
  void changeEvent(QEvent* event) override;  ///< another theme

 private:
  void showHolding();

  MessageSign* sign_;
  QLabel *headline_, *advice_, *note_, *place_;
  TimelineView* timeline_;
  ScanView view_;
};
