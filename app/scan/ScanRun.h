#pragma once

#include <QObject>
#include <QString>
#include <QTimer>
#include <chrono>
#include <memory>
#include <optional>
#include <thread>

#include "app/scan/PairMap.h"
#include "app/scan/Timeline.h"
#include "scan/Scan.h"

/// Two movies of a scan's own.
struct ScannedMovies {
  std::unique_ptr<movie::Movie> source, dest;
};

/// How far a scan is.
struct ScanReport {
  scan::ScanProgress progress;
  double seconds = 0;  ///< that it has been comparing for
};

/// What came of a scan that was made: to its end, to where it was cancelled, or to where a side could not be read on.
struct ScanEnd {
  scan::ScanResult result;  ///< without its matches: these are the map's
  std::chrono::milliseconds took{0};
};

/// Why a scan was not made at all: of a movie, or what the system says.
struct ScanProblem {
  std::optional<movie::MovieError> error;
  QString system;
};

/// A scan of two movies from its beginning on, on a thread of its own, and then what it found. Main thread only.
class ScanRun : public QObject {
  Q_OBJECT

 public:
  /// Begins. At least one advanced() comes before ended().
  explicit ScanRun(ScannedMovies movies);
  /// Stops it, and waits for the frame in work.
  ~ScanRun() override;

  bool isRunning() const { return isRunning_; }
  bool isCancelled() const;
  /// ended() comes soon, with what was found until then.
  void cancel();

  const ScanReport& report() const { return report_; }
  /// With the words of its segments once it has ended.
  const Timeline& timeline() const { return timeline_; }
  /// Both none while it runs; one of them after that.
  const std::optional<ScanEnd>& end() const { return end_; }
  const std::optional<ScanProblem>& problem() const { return problem_; }
  /// Of a scan that went through all frames and found how the one lies upon the other; null for any other.
  const PairMap* wholeMap() const;
  /// As far as it came, also while it runs. Good until the next call.
  const PairMap& map();

 signals:
  void advanced();
  void ended();

 private:
  struct Shared;

  void look();

  std::shared_ptr<Shared> shared_;
  ScanReport report_;
  Timeline timeline_;
  std::optional<ScanEnd> end_;
  std::optional<ScanProblem> problem_;
  PairMap map_;
  bool isRunning_ = true;
  QTimer timer_;
  std::thread thread_;
};
