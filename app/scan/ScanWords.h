#pragma once

#include <QCoreApplication>
#include <QString>
#include <functional>
#include <optional>

#include "app/messages/Message.h"
#include "app/scan/ScanRun.h"

/// Seconds of the destination as a timecode.
using TimeText = std::function<QString(double)>;

/// What stands above the timeline.
struct ScanView {
  std::optional<MessageKind> kind = std::nullopt;
  QString headline, advice = {};
  QString note = {};  ///< why it holds no longer; empty while it holds
  bool holds() const { return note.isEmpty(); }
  friend bool operator==(const ScanView&, const ScanView&) = default;
};

/// A scan in the user's language.
class ScanWords final {
  Q_DECLARE_TR_FUNCTIONS(ScanWords)

 public:
  ScanWords() = delete;
  /// How far it is, how fast, how long it takes still, what was found so far.
  static ScanView running(const ScanReport& report, bool isCancelled);
  static ScanView ended(const ScanEnd& end);

  /// Words for the segments of a scan that ended.
  static void name(Timeline& timeline, const scan::ScanResult& result);
  /// What is to be said of a time, and a stretch around it.
  static QString place(const Timeline& timeline, double time, const TimeText& text);
  /// The whole, for who cannot see it.
  static QString summary(const Timeline& timeline, const TimeText& text);

 private:
  static QString stretch(const TimelineStretch& stretch, const QString& what, const TimeText& text);
  static QString timeLeft(double seconds);
};
