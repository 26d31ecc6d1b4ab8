#pragma once

#include "app/scan/ScanStrip.h"
#include "app/scan/TimelineView.h"
#include "tests/app/WindowFixture.h"

/// Movies that scans are tried on. Paths.
QString reelMovie();        ///< 12 s of something that moves, 24 frames a second, a cut in the middle
QString darkerFromMovie();  ///< the same, from 7 s on darker by an exponent of 1.2
QString leaderMovie();      ///< the same after 2 s of something else
QString indexFirstMovie();  ///< the first, which can be read in part
QString longReelMovie();    ///< the first, forty times
QString stillMovie();       ///< 6 s of one picture
QString twoStillsMovie();   ///< 3 s of another, then this one for 3 s

/// The window with two movies that can be scanned.
class ScanFixture : public WindowFixture {
 protected:
  ScanFixture() { launch(); }

  ScanStrip& strip() { return *interface().scanStrip; }
  TimelineView& timeline() { return strip().timeline(); }
  QString headline() { return strip().view().headline; }
  bool isScanning() { return controller().scanRun() != nullptr && controller().scanRun()->isRunning(); }
  void begin(const QString& source, const QString& dest);
  /// Begins one and waits for its end.
  void scan(const QString& source, const QString& dest);
  void waitForFrames();
  void clickAt(double seconds);
  double sourceSeconds() { return movie::secondsOf(sourceView().movie()->currentTime()); }
  double destSeconds() { return movie::secondsOf(destView().movie()->currentTime()); }
};
