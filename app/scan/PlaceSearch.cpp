#include "app/scan/PlaceSearch.h"

#include <exception>
#include <utility>

#include "SharedFiles/crash/handler/ThreadCrashStack.h"

PlaceSearch::PlaceSearch(ScannedMovies movies, const movie::MovieTime& destTime) : movies_(std::move(movies)) {
  try {
    thread_ = std::thread([this, destTime] { run(destTime); });
  } catch (const std::exception& exception) {
    tell({.problem = ScanProblem{std::nullopt, QString::fromLocal8Bit(exception.what())}});
  }
}

PlaceSearch::~PlaceSearch() {
  stop_ = true;
  if (thread_.joinable()) thread_.join();
}

void PlaceSearch::run(const movie::MovieTime& destTime) {
  const crash::ThreadCrashStack crashStack;
  Outcome outcome;
  try {
    const auto found = scan::counterpartTime(*movies_.source, *movies_.dest, destTime, [this] { return stop_.load(); });
    if (found) {
      outcome.found = *found;
    } else {
      outcome.problem = ScanProblem{found.error(), {}};
    }
  } catch (const std::exception& exception) {  // no memory, no thread
    outcome.problem = ScanProblem{std::nullopt, QString::fromLocal8Bit(exception.what())};
  }
  movies_ = {};
  tell(outcome);
}

/// Soon, on the main thread; never where this is gone by then.
void PlaceSearch::tell(const Outcome& outcome) {
  QMetaObject::invokeMethod(
      this, [this, outcome] { emit ended(outcome); }, Qt::QueuedConnection);
}
