// The scan: its life, what is shown of it, and the playheads that go by its time map.

#include <QCheckBox>
#include <chrono>
#include <cmath>
#include <utility>

#include "SharedFiles/log/QVLog.h"
#include "SharedFiles/timecode/QVQuickTime.h"
#include "app/LumacheckAppDelegate.h"
#include "app/MainInterface.h"
#include "app/messages/ScanMessages.h"
#include "app/scan/ScanStrip.h"
#include "app/scan/ScanWords.h"
#include "app/scan/TimelineView.h"
#include "app/verdict/VerdictWords.h"

namespace {

constexpr std::int32_t microsPerSecond = 1'000'000;

std::int64_t microsOf(const movie::MovieTime& time) {
  return std::llround(movie::secondsOf(time) * microsPerSecond);
}

/// The beginning of a frame as its movie has it; of the movie's end: that.
movie::MovieTime exactTime(const movie::Movie& movie, std::int64_t micros) {
  const movie::MovieTime time{.value = micros, .scale = microsPerSecond};
  const auto span = movie.frameSpanAt(time);
  if (!span) return time;
  return micros >= span->endMicros ? span->end : span->start;
}

/// Timecodes where the movie has a frame rate, else seconds.
QString timeTextIn(const movie::Movie& movie, std::int64_t micros) {
  if (QVQuickTime::fpsForMovie(&movie) > 0) return QVQuickTime::timecodeAtTime(exactTime(movie, micros), &movie);
  return MessageWords::spanOf(std::chrono::milliseconds(micros / 1000));
}

TimeText timesOf(const std::shared_ptr<PlayableMovie>& movie) {
  return [movie](double seconds) {
    return movie ? timeTextIn(movie->content(), std::llround(seconds * microsPerSecond)) : QString();
  };
}

/// A playhead that has moved changes nothing of a scan.
Change beyondPlayhead(Change change) {
  return change == Change::Playhead ? Change::None : change;
}

}  // namespace

void LumacheckAppDelegate::scanAction() {
  if (!scanRun_ || !scanRun_->isRunning()) return finish(beginScan());
  scanRun_->cancel();
  showScan();
}

/// For the main thread: actions may ask for the rest on others.
WindowState LumacheckAppDelegate::stateWithScan() const {
  WindowState now = state();
  now.isScanning = scanRun_ && scanRun_->isRunning();
  now.isMapped = mapInForce() != nullptr;
  return now;
}

/// On copies of the movies, of which a scan has its own.
Message LumacheckAppDelegate::beginScan() {
  const MovieSlot source = sourceQTMov(), dest = destQTMov();
  if (!WhyNot::scan(state()).isEmpty() || !source || !dest) return ScanMessages::impossible(state());
  dropScan();
  QVLog::appendLog("Scanning...");
  scanMoment_ = momentNow();
  scanRun_ = std::make_unique<ScanRun>(ScannedMovies{source->content().copy(), dest->content().copy()});
  connect(scanRun_.get(), &ScanRun::advanced, this, &LumacheckAppDelegate::showTimeline);
  connect(scanRun_.get(), &ScanRun::ended, this, &LumacheckAppDelegate::scanEnded);
  interface_.scanStrip->timeline().setTimeText(timesOf(dest));
  showTimeline();
  return {};
}

/// What is shown of it goes, too, and so does a search for a place. Says so where it was running.
Message LumacheckAppDelegate::dropScan() {
  placeSearch_.reset();
  if (!scanRun_) return {};
  const bool wasRunning = scanRun_->isRunning();
  scanRun_.reset();
  if (std::exchange(isLinkedByMap_, false)) setLinkPossible(false);
  interface_.scanStrip->hide();
  interface_.scanStrip->timeline().setTimeline({});
  return wasRunning ? ScanMessages::givenUp() : Message();
}

void LumacheckAppDelegate::scanEnded() {
  if (const auto& problem = scanRun_->problem()) {
    const Message message =
        problem->error ? ScanMessages::unreadable(*problem->error) : ScanMessages::failed(problem->system);
    scanRun_.release()->deleteLater();  // it is telling
    interface_.scanStrip->hide();
    return finish(message);
  }
  QVLog::appendLog("Scan complete.");
  if (mapInForce() != nullptr && !interface_.linkBtn->isEnabled()) {
    isLinkedByMap_ = true;
    setLinkPossible(true);
  }
  showTimeline();
  const ScanEnd& end = *scanRun_->end();
  if (end.result.failure) {
    const bool isSource = end.result.failure->side == scan::ReadFailure::Side::Source;
    const PairMap& map = scanRun_->map();
    const MovieSlot movie = isSource ? sourceQTMov() : destQTMov();
    const std::int64_t place = (isSource ? map.source() : map.dest()).startOf(end.result.failure->frame);
    return finish(ScanMessages::brokeOff(isSource ? MovieSide::Source : MovieSide::Destination,
                                         movie ? timeTextIn(movie->content(), place) : QString(),
                                         end.result.failure->error));
  }
  finish(end.result.stopped ? ScanMessages::cancelled(end.result.isTold())
                            : ScanMessages::scanned(pathOf(sourceQTMov()), pathOf(destQTMov()), end.took));
}

/// The words, and whether they hold. A scan of movies that are others now is gone.
void LumacheckAppDelegate::showScan() {
  if (!scanRun_) return;
  const PairMoment now = momentNow();
  const VerdictSituation situation{.window = {},
                                   .source = beyondPlayhead(changeBetween(scanMoment_.source, now.source)),
                                   .dest = beyondPlayhead(changeBetween(scanMoment_.dest, now.dest))};
  if (situation.source == Change::Movie || situation.dest == Change::Movie) {
    dropScan();
    return interface_.showScanning(stateWithScan());
  }
  ScanView view = scanRun_->isRunning() ? ScanWords::running(scanRun_->report(), scanRun_->isCancelled())
                                        : ScanWords::ended(*scanRun_->end());
  view.note = VerdictWords::changeNote(situation);
  interface_.scanStrip->setView(view);
  interface_.scanStrip->show();
}

void LumacheckAppDelegate::showTimeline() {
  interface_.scanStrip->timeline().setTimeline(scanRun_->timeline());
  showScanPlayhead();
  if (!scanRun_->isRunning()) return;
  showScan();
}

void LumacheckAppDelegate::showScanPlayhead() {
  const MovieSlot display = destQTDisplayMov();
  if (!scanRun_ || !display) return;
  const double seconds = movie::secondsOf(display->currentTime());
  interface_.scanStrip->timeline().setPlayhead(seconds);
  interface_.scanStrip->setPlace(ScanWords::place(scanRun_->timeline(), seconds, timesOf(destQTMov())));
}

void LumacheckAppDelegate::goToScanned(double seconds) {
  const MovieSlot source = sourceQTDisplayMov(), dest = destQTDisplayMov();
  if (!scanRun_ || !source || !dest) return;
  for (const MovieSlot& each : {source, dest}) each->stop();
  const PairMap& map = scanRun_->map();
  if (map.dest().frames() == 0) return;
  const std::int64_t place = map.dest().startOf(map.dest().frameAt(std::llround(seconds * microsPerSecond)));
  const auto shown = map.sourceOf(place);
  disableSync_ = true;
  dest->setCurrentTime(exactTime(dest->content(), place));
  if (shown) source->setCurrentTime(exactTime(source->content(), *shown));
  disableSync_ = false;
  updateTimecode();
  if (shown) return tell({});
  const QString there = timeTextIn(dest->content(), place);
  tell(map.reaches(place) ? ScanMessages::noCounterpart(there) : ScanMessages::notReached(there));
}

const PairMap* LumacheckAppDelegate::mapInForce() const {
  return scanRun_ ? scanRun_->wholeMap() : nullptr;
}

/// The same time, or what the map says. None where the follower has nothing to show of it: then it stays.
std::optional<movie::MovieTime> LumacheckAppDelegate::timeToFollow(bool fromSource, const PlayableMovie& leader,
                                                                   const PlayableMovie& follower) const {
  const PairMap* const map = mapInForce();
  if (map == nullptr) return leader.currentTime();
  const std::int64_t place = microsOf(leader.currentTime());
  const auto there = fromSource ? map->destOf(place, microsOf(follower.currentTime())) : map->sourceOf(place);
  return there ? std::optional(exactTime(follower.content(), *there)) : std::nullopt;
}

std::optional<movie::MovieTime> LumacheckAppDelegate::destTimeLikeSource(const PlayableMovie& source,
                                                                         const PlayableMovie& dest) const {
  if (mapInForce() != nullptr) return timeToFollow(true, source, dest);
  return movie::timeScaled(source.currentTime(), dest.duration().scale);
}

/// By the map where there is one.
bool LumacheckAppDelegate::areAtSameMoment(const PairMoment& now) const {
  const MovieSlot source = sourceQTMov(), dest = destQTMov();
  const PairMap* const map = mapInForce();
  if (map == nullptr) return isSameMoment(source->content(), now.source.time, dest->content(), now.dest.time);
  const std::int64_t here = microsOf(now.source.time);
  const auto shown = map->sourceOf(microsOf(now.dest.time));
  return shown && map->source().frameAt(*shown) == map->source().frameAt(here);
}
