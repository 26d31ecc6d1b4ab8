#include "app/scan/ScanWords.h"

#include <QLocale>
#include <QStringList>
#include <algorithm>
#include <cmath>

#include "app/scan/TimelineGeometry.h"
#include "app/verdict/VerdictWords.h"
#include "diagnosis/words/CauseWords.h"

namespace {

QString decimals(double value, int places) {
  return QLocale().toString(value, 'f', places);
}

QString counted(std::size_t value) {
  return QLocale().toString(static_cast<qulonglong>(value));
}

QString unmeasuredSentence(scan::Unmeasured why) {
  return why == scan::Unmeasured::Dark ? ScanWords::tr("not measured: black, or of one colour")
                                       : ScanWords::tr("not measured: no calm tones between black and white");
}

}  // namespace

QString ScanWords::timeLeft(double seconds) {
  const auto whole = static_cast<qint64>(std::ceil(seconds));
  const QChar zero(u'0');
  //: %1: minutes and seconds
  return tr("%1 left").arg(QStringLiteral("%1:%2").arg(whole / 60).arg(whole % 60, 2, 10, zero));
}

ScanView ScanWords::running(const ScanReport& report, bool isCancelled) {
  if (isCancelled) return {.headline = tr("Cancelling the scan…")};
  const scan::ScanProgress& progress = report.progress;
  const bool compares = progress.stage == scan::ScanProgress::Stage::Comparing && progress.frames > 0;
  if (!compares) return {.headline = tr("Scanning: looking for the place of the one movie in the other…")};
  const double share = static_cast<double>(progress.done) / static_cast<double>(progress.frames);
  //: %1: a percentage
  QStringList parts{tr("Scanning: %1 %").arg(static_cast<int>(std::floor(100 * share)))};
  if (report.seconds > 0 && share > 0) {
    //: %1: how many times faster than it plays
    parts << tr("%1 × real time").arg(decimals(progress.seconds / report.seconds, 1));
    parts << timeLeft(report.seconds * (1 - share) / share);
  }
  if (progress.exponent) parts << tr("exponent %1").arg(decimals(*progress.exponent, 2));
  //: %1: a number of frames
  if (progress.identical > 0) parts << tr("identical frames: %1").arg(counted(progress.identical));
  //: %1: a number of frames
  if (progress.unmatched > 0) parts << tr("frames without a counterpart: %1").arg(counted(progress.unmatched));
  return {.headline = parts.join(QStringLiteral(" · "))};
}

ScanView ScanWords::ended(const ScanEnd& end) {
  if (!end.result.isTold()) {
    return {.kind = MessageKind::Information,
            .headline = tr("The scan was cancelled before it was found how the one movie lies upon the other.")};
  }
  const Verdict verdict = VerdictWords::verdictOf(end.result.finding, {});
  // What has not been seen is not cleared.
  const bool isWhole = !end.result.stopped && !end.result.failure;
  const bool clearsTooMuch = !isWhole && verdict.kind == MessageKind::Success;
  QStringList advice;
  if (end.result.correspondence == scan::Beginning::Result::Still) {
    advice << tr("The pictures do not move: the offset in time cannot be told; the shift can.");
  }
  if (isWhole || verdict.action != diagnosis::Action::Nothing) advice << verdict.advice;
  advice << verdict.why;
  advice.removeAll(QString());
  //: %1: what was found, a sentence
  const QString told = isWhole ? tr("Scan: %1") : tr("Scan, as far as it came: %1");
  return {.kind = clearsTooMuch ? MessageKind::Information : verdict.kind,
          .headline = told.arg(verdict.headline),
          .advice = advice.join(u' ')};
}

void ScanWords::name(Timeline& timeline, const scan::ScanResult& result) {
  const std::size_t count = std::min(timeline.segments.size(), result.segments.size());
  for (std::size_t i = 0; i < count; ++i) {
    TimelineSegment& segment = timeline.segments[i];
    segment.word =
        QString::fromStdString(diagnosis::causeWords(result.segments[i].causes, VerdictWords::languageOf("ScanWords")));
    //: %1: what was done to it. %2: a percentage
    segment.sentence = tr("%1 (sure by %2 %)")
                           .arg(segment.word)
                           .arg(static_cast<int>(std::floor(100 * result.segments[i].confidence())));
  }
}

QString ScanWords::stretch(const TimelineStretch& stretch, const QString& what, const TimeText& text) {
  //: %1 and %2: timecodes. %3: what is there
  return tr("%1 – %2: %3").arg(text(stretch.from), text(stretch.to), what);
}

QString ScanWords::place(const Timeline& timeline, double time, const TimeText& text) {
  const TimelinePlace place = placeAt(timeline, time);
  if (place.unmatched != nullptr) return stretch(*place.unmatched, tr("no counterpart in the source"), text);
  if (place.unmeasured != nullptr)
    return stretch(place.unmeasured->at, unmeasuredSentence(place.unmeasured->why), text);
  if (place.segment != nullptr) return stretch(place.segment->at, place.segment->sentence, text);
  if (!place.isScanned) return tr("%1: not scanned").arg(text(time));
  if (timeline.bins.empty()) return {};
  const TimelineBin& bin = timeline.bins[binAt(time, timeline.seconds)];
  return bin.measured > 0 ? tr("%1: exponent %2").arg(text(time), decimals(std::exp(bin.mean()), 2)) : text(time);
}

QString ScanWords::summary(const Timeline& timeline, const TimeText& text) {
  constexpr std::size_t most = 12;
  QStringList parts;
  for (std::size_t i = 0; i < std::min(most, timeline.segments.size()); ++i) {
    parts << stretch(timeline.segments[i].at, timeline.segments[i].sentence, text);
  }
  for (std::size_t i = 0; i < std::min(most, timeline.unmatched.size()); ++i) {
    parts << stretch(timeline.unmatched[i], tr("no counterpart in the source"), text);
  }
  for (std::size_t i = 0; i < std::min(most, timeline.unmeasured.size()); ++i) {
    parts << stretch(timeline.unmeasured[i].at, unmeasuredSentence(timeline.unmeasured[i].why), text);
  }
  if (timeline.worst) {
    parts << tr("Worst frame: %1, exponent %2").arg(text(timeline.worst->at), decimals(timeline.worst->exponent, 2));
  }
  return parts.join(QStringLiteral(". "));
}
