#pragma once

#include <QObject>
#include <atomic>
#include <optional>
#include <thread>

#include "app/scan/ScanRun.h"
#include "scan/CounterpartTime.h"

/// What a frame of the destination shows, looked for in the source on a thread of its own. Main thread only.
class PlaceSearch : public QObject {
  Q_OBJECT

 public:
  /// What came of it: one of them.
  struct Outcome {
    std::optional<scan::CounterpartTime> found = std::nullopt;
    std::optional<ScanProblem> problem = std::nullopt;
  };

  /// Begins.
  PlaceSearch(ScannedMovies movies, const movie::MovieTime& destTime);
  /// Stops it, and waits for the frame in work.
  ~PlaceSearch() override;

 signals:
  void ended(const PlaceSearch::Outcome& outcome);

 private:
  void run(const movie::MovieTime& destTime);
  void tell(const Outcome& outcome);

  ScannedMovies movies_;
  std::atomic<bool> stop_ = false;
  std::thread thread_;
};
