#include "app/scan/ScanRun.h"

#include <QPointer>
#include <atomic>
#include <exception>
#include <mutex>
#include <utility>
#include <vector>

#include "SharedFiles/crash/handler/ThreadCrashStack.h"
#include "SharedFiles/log/QVLog.h"
#include "app/scan/ScanWords.h"

namespace {

using SteadyClock = std::chrono::steady_clock;

constexpr int pollEvery = 60;  // ms

double secondsSince(SteadyClock::time_point then) {
  return std::chrono::duration<double>(SteadyClock::now() - then).count();
}

}  // namespace

/// What both threads have. The scan's writes, the window's looks now and then.
struct ScanRun::Shared {
  ScannedMovies movies;  ///< the scan's alone
  std::atomic<bool> stop = false;

  std::mutex mutex;  // guards what follows
  ScanReport report;
  FrameStarts source, dest;
  double seconds = 0, done = 0;  ///< of the destination
  std::vector<TimelineBin> bins;
  PairMap::Shown shown;
  std::optional<ScanEnd> end;
  std::optional<ScanProblem> problem;
  bool isOver = false;

  void run();
  void scanRows(const scan::MoviePair& rows);
  void note(const scan::ScanProgress& progress, std::optional<SteadyClock::time_point>& compares);
};

void ScanRun::Shared::run() {
  const crash::ThreadCrashStack crashStack;
  const auto fail = [this](const ScanProblem& why) {
    const std::lock_guard guard(mutex);
    problem = why;
  };
  try {
    const movie::Result<scan::MoviePair> rows = scan::pairOf(*movies.source, *movies.dest);
    rows ? scanRows(*rows) : fail({rows.error(), {}});
  } catch (const std::exception& exception) {  // no memory, no thread
    fail({std::nullopt, QString::fromLocal8Bit(exception.what())});
  }
  movies = {};
  const std::lock_guard guard(mutex);
  isOver = true;
}

void ScanRun::Shared::scanRows(const scan::MoviePair& rows) {
  const SteadyClock::time_point begin = SteadyClock::now();
  {
    FrameStarts ofSource = FrameStarts::of(*rows.source), ofDest = FrameStarts::of(*rows.dest);
    const std::lock_guard guard(mutex);
    source = std::move(ofSource);
    dest = std::move(ofDest);
    seconds = rows.dest->timeOf(dest.frames());
    bins.assign(timelineBins, {});
  }
  std::optional<SteadyClock::time_point> compares;
  scan::ScanResult result =
      scan::scanned(*rows.source, *rows.dest, rows.tags(), {}, [&](const scan::ScanProgress& progress) {
        note(progress, compares);
        return stop.load();
      });
  const std::lock_guard guard(mutex);
  result.matches = {.first = result.matches.first, .frames = {}};
  const auto took = std::chrono::duration_cast<std::chrono::milliseconds>(SteadyClock::now() - begin);
  end = ScanEnd{std::move(result), took};
}

/// Of every frame that has been decided since.
void ScanRun::Shared::note(const scan::ScanProgress& progress, std::optional<SteadyClock::time_point>& compares) {
  if (progress.matches != nullptr && !compares) compares = SteadyClock::now();
  const std::lock_guard guard(mutex);
  report.progress = progress;
  report.progress.matches = nullptr;
  if (progress.matches == nullptr) return;
  report.seconds = secondsSince(*compares);
  const scan::Matches& matches = *progress.matches;
  shown.first = matches.first;
  for (std::size_t i = shown.source.size(); i < matches.frames.size(); ++i) {
    const std::size_t frame = matches.first + i;
    bins[binAt(static_cast<double>(dest.startOf(frame)) / 1e6, seconds)].add(matches.frames[i]);
    shown.source.push_back(matches.frames[i].source);
  }
  done = static_cast<double>(dest.startOf(matches.end())) / 1e6;
}

ScanRun::ScanRun(ScannedMovies movies) : shared_(std::make_shared<Shared>()) {
  shared_->movies = std::move(movies);
  connect(&timer_, &QTimer::timeout, this, &ScanRun::look);
  timer_.start(pollEvery);
  try {
    thread_ = std::thread([shared = shared_] { shared->run(); });
  } catch (const std::exception& exception) {
    QVLog::appendLog("No thread could be started: %@", QString::fromLocal8Bit(exception.what()));
    shared_->problem = ScanProblem{std::nullopt, QString::fromLocal8Bit(exception.what())};
    shared_->isOver = true;
  }
}

ScanRun::~ScanRun() {
  cancel();
  if (thread_.joinable()) thread_.join();
}

bool ScanRun::isCancelled() const {
  return shared_->stop;
}

void ScanRun::cancel() {
  shared_->stop = true;
}

void ScanRun::look() {
  bool isOver = false;
  {
    const std::lock_guard guard(shared_->mutex);
    isOver = shared_->isOver;
    report_ = shared_->report;
    timeline_.seconds = shared_->seconds;
    timeline_.done = shared_->done;
    timeline_.bins = shared_->bins;
  }
  timeline_.unmatched = unmatchedBins(timeline_);
  const QPointer<ScanRun> self(this);
  emit advanced();
  if (!self || !isOver) return;  // whoever was told may have dropped it
  timer_.stop();
  if (thread_.joinable()) thread_.join();
  isRunning_ = false;
  end_ = std::move(shared_->end);
  problem_ = std::move(shared_->problem);
  if (end_) {
    const scan::ScanResult& result = end_->result;
    map_ = PairMap(std::move(shared_->source), std::move(shared_->dest), std::move(shared_->shown), result.map.pieces);
    timeline_ = timelineOf(result, map_.dest(), std::move(timeline_.bins));
    ScanWords::name(timeline_, result);
  }
  emit ended();
}

const PairMap* ScanRun::wholeMap() const {
  const bool isWhole = end_ && !end_->result.stopped && !end_->result.failure &&
                       end_->result.correspondence == scan::Beginning::Result::Found;
  return isWhole ? &map_ : nullptr;
}

const PairMap& ScanRun::map() {
  if (isRunning_) {
    const std::lock_guard guard(shared_->mutex);
    map_ = PairMap(shared_->source, shared_->dest, shared_->shown, {});
  }
  return map_;
}
