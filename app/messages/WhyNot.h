#pragma once

#include <QCoreApplication>
#include <QString>

enum class SideContent { Nothing, NoPictures, Pictures };

/// What the window holds, as far as its actions depend on it.
struct WindowState {
  SideContent source = SideContent::Nothing, dest = SideContent::Nothing;
  bool hasUnsavedChanges = false;  ///< of the destination's metadata
  bool lastEquallyLong = false;
  bool isScanning = false;
  bool isMapped = false;  ///< a scan has found which frames show the same
};

/// Why an action can do nothing now, in a sentence; empty where it can do something.
class WhyNot final {
  Q_DECLARE_TR_FUNCTIONS(WhyNot)

 public:
  WhyNot() = delete;
  /// What a control does, and under it why not.
  static QString inToolTip(const QString& does, const QString& whyNot);

  static QString check(const WindowState& state);
  static QString scan(const WindowState& state) { return check(state); }
  static QString sync(const WindowState& state) { return check(state); }
  static QString save(const WindowState& state);
  static QString saveAs(const WindowState& state);
  static QString swap(const WindowState& state);
  static QString link(const WindowState& state);
  /// What moves and plays the movie of one side.
  static QString play(bool isPlayable);
};
