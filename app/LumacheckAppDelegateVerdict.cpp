// The verdict strip: what is found, what of it still holds, and what its buttons do.

#include <algorithm>
#include <utility>

#include "app/LumacheckAppDelegate.h"
#include "app/MainInterface.h"
#include "app/messages/ScanMessages.h"
#include "app/messages/WindowMessages.h"
#include "app/verdict/MovieFacts.h"
#include "app/verdict/VerdictStrip.h"
#include "app/verdict/VerdictWords.h"
#include "diagnosis/MovieFrames.h"

namespace {

movie::MovieTime timeIn(const std::shared_ptr<PlayableMovie>& movie) {
  return movie ? movie->currentTime() : movie::MovieTime{};
}

diagnosis::Finding findingOn(const movie::Movie& source, const movie::Movie& dest, check::CheckOutcome& outcome) {
  if (!outcome.sourcePicture || !outcome.destPicture) return diagnosis::unreadable({});
  diagnosis::PicturePairs pictures;
  pictures.source.push_back(std::move(*outcome.sourcePicture));
  pictures.dest.push_back(std::move(*outcome.destPicture));
  return diagnosis::findingOn(source, dest, pictures, {.knownDark = outcome.tooDark});
}

}  // namespace

PairMoment LumacheckAppDelegate::momentNow() const {
  const auto moment = [this](const Side& side) {
    const MovieSlot master = slot(side.master);
    return SideMoment{.movie = master,
                      .time = timeIn(slot(side.display)),
                      .description = master ? describedIn(master->content()) : movie::Bytes()};
  };
  return {moment(source_), moment(dest_)};
}

/// A check may run on a thread that is not the window's.
void LumacheckAppDelegate::showChecking(bool isChecking) {
  QMetaObject::invokeMethod(this, [this, isChecking] {
    isChecking_ = isChecking;
    if (isChecking) placeSearch_.reset();  // it would go elsewhere, and check there
    showVerdict();
    if (isChecking) interface_.verdictStrip->repaint();  // no event is handled until the check has ended
  });
}

void LumacheckAppDelegate::setVerdict(const movie::Movie& source, const movie::Movie& dest, const PairMoment& moment,
                                      check::CheckOutcome& outcome) {
  const diagnosis::Finding finding = findingOn(source, dest, outcome);
  Verdict verdict =
      VerdictWords::verdictOf(finding, MovieFacts::of({source, moment.source.time}, {dest, moment.dest.time}, finding));
  QMetaObject::invokeMethod(this, [this, held = HeldVerdict{std::move(verdict), moment}] { verdict_ = held; });
}

void LumacheckAppDelegate::showVerdict() {
  const PairMoment now = momentNow();
  const MovieSlot source = sourceQTMov(), dest = destQTMov();
  VerdictSituation situation{
      .window = state(), .isChecking = isChecking_, .isLookingForPlace = placeSearch_ != nullptr};
  if (source && dest) {
    situation.isSameMoment = areAtSameMoment(now);
  }
  if (verdict_) {
    situation.source = changeBetween(verdict_->moment.source, now.source);
    situation.dest = changeBetween(verdict_->moment.dest, now.dest);
  }
  interface_.verdictStrip->setView(
      VerdictWords::viewOf(verdict_ ? std::optional(verdict_->verdict) : std::nullopt, situation));
}

void LumacheckAppDelegate::carryOut(VerdictAction action) {
  switch (action) {
    case VerdictAction::Check:
      return checkAction();
    case VerdictAction::Sync:
      return syncMetadata();
    case VerdictAction::FindPlace:
      return lookForPlace();
    case VerdictAction::SameMoment:
      return takeDestToSource();
    case VerdictAction::AnotherFrame:
      takeBothElsewhere();
      return checkAction();
    case VerdictAction::Manual:
      return helpUserManual();
    case VerdictAction::Save:
      return saveDest();
  }
}

void LumacheckAppDelegate::takeDestToSource() {
  const MovieSlot source = sourceQTDisplayMov(), dest = destQTDisplayMov();
  if (!source || !dest) return;
  for (const MovieSlot& each : {source, dest}) each->stop();
  const auto time = destTimeLikeSource(*source, *dest);
  if (!time) return tell(ScanMessages::notInDest(source_.controls.timecodeText->text()));
  dest->setCurrentTime(*time);
  const bool isReached = movie::compareTimes(dest->timeWithin(*time), *time) == 0;
  tell(isReached ? Message() : WindowMessages::timeOutside(source_.controls.timecodeText->text()));
}

/// To the next of some moments that are spread over what both last, and round again.
void LumacheckAppDelegate::takeBothElsewhere() {
  const MovieSlot source = sourceQTDisplayMov(), dest = destQTDisplayMov();
  if (!source || !dest) return;
  constexpr int moments = 7;
  const auto times = diagnosis::spreadTimes(source->content(), dest->content(), moments);
  if (times.empty()) return;
  for (const MovieSlot& each : {source, dest}) each->stop();
  const movie::MovieTime here = source->currentTime();
  const auto later = std::find_if(times.begin(), times.end(), [&](const diagnosis::FrameTimes& each) {
    return movie::compareTimes(each.source, here) > 0;
  });
  const diagnosis::FrameTimes& next = later == times.end() ? times.front() : *later;
  source->setCurrentTime(next.source);
  dest->setCurrentTime(next.dest);
}

/// On copies of the movies, while the window goes on.
void LumacheckAppDelegate::lookForPlace() {
  const MovieSlot source = sourceQTMov(), dest = destQTMov();
  if (!source || !dest) return;
  for (const MovieSlot& each : {sourceQTDisplayMov(), destQTDisplayMov()}) each->stop();
  tell({});
  placeMoment_ = momentNow();
  placeSearch_ = std::make_unique<PlaceSearch>(ScannedMovies{source->content().copy(), dest->content().copy()},
                                               placeMoment_.dest.time);
  connect(placeSearch_.get(), &PlaceSearch::ended, this, &LumacheckAppDelegate::goToPlace);
  showVerdict();
}

/// The source goes there alone, and the check is made. Nothing happens where somebody has gone elsewhere meanwhile.
void LumacheckAppDelegate::goToPlace(const PlaceSearch::Outcome& outcome) {
  placeSearch_.release()->deleteLater();  // it is telling
  showVerdict();
  const PairMoment now = momentNow();
  const bool isAsItWas = changeBetween(placeMoment_.source, now.source) == Change::None &&
                         changeBetween(placeMoment_.dest, now.dest) == Change::None;
  if (!isAsItWas) return;
  if (const auto& problem = outcome.problem) {
    return tell(problem->error ? ScanMessages::unreadable(*problem->error) : ScanMessages::failed(problem->system));
  }
  using Result = scan::Counterpart::Result;
  if (outcome.found->result == Result::NotFound) return tell(ScanMessages::noPlace());
  if (outcome.found->result == Result::Still) return tell(ScanMessages::anyPlace());
  disableSync_ = true;
  sourceQTDisplayMov()->setCurrentTime(outcome.found->time);
  disableSync_ = false;
  updateTimecode();
  checkAction();
}
