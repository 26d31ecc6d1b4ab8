// A scan in words.

#include <QLocale>

#include <gmock/gmock.h>

#include "app/scan/ScanWords.h"
#include "tests/SharedFiles/QtPrinters.h"

namespace {

using diagnosis::CauseKind;
using scan::Beginning;
using scan::ScanProgress;
using testing::HasSubstr;

const bool hasCNumbers = [] {
  QLocale::setDefault(QLocale::c());
  return true;
}();

std::string headline(const ScanView& view) {
  return view.headline.toStdString();
}

TEST(ScanWords, TellHowFarItIs) {
  EXPECT_EQ(headline(ScanWords::running({}, false)), "Scanning: looking for the place of the one movie in the other…");
  const ScanReport report{.progress = {.stage = ScanProgress::Stage::Comparing,
                                       .done = 250,
                                       .frames = 1000,
                                       .seconds = 10,
                                       .unmatched = 12,
                                       .identical = 3,
                                       .exponent = 1.2},
                          .seconds = 25};
  EXPECT_EQ(headline(ScanWords::running(report, false)),
            "Scanning: 25 % · 0.4 × real time · 1:15 left · exponent 1.20 · identical frames: 3 · frames without a "
            "counterpart: 12");
  EXPECT_EQ(headline(ScanWords::running(report, true)), "Cancelling the scan…");
}

TEST(ScanWords, HaveNoNumbersBeforeThereAreAny) {
  const ScanReport report{.progress = {.stage = ScanProgress::Stage::Comparing, .frames = 10}};
  EXPECT_EQ(headline(ScanWords::running(report, false)), "Scanning: 0 %");
}

ScanEnd endOf(CauseKind kind, Beginning::Result correspondence = Beginning::Result::Found) {
  ScanEnd end;
  end.result.correspondence = correspondence;
  end.result.finding.causes = {{.kind = kind, .confidence = 0.95}};
  end.result.finding.frames = 100;
  end.result.finding.action = diagnosis::Action::Nothing;
  return end;
}

TEST(ScanWords, TellTheFindingAsTheVerdictDoes) {
  const ScanView view = ScanWords::ended(endOf(CauseKind::Identical));
  EXPECT_EQ(headline(view), "Scan: Identical: the destination's samples are the source's.");
  EXPECT_EQ(view.kind, MessageKind::Success);
  EXPECT_TRUE(view.holds());
}

TEST(ScanWords, TellWhatAScanCouldNot) {
  EXPECT_THAT(ScanWords::ended(endOf(CauseKind::Same, Beginning::Result::Still)).advice.toStdString(),
              HasSubstr("The pictures do not move: the offset in time cannot be told; the shift can."));
  ScanEnd stopped = endOf(CauseKind::Same);
  stopped.result.stopped = true;
  EXPECT_THAT(headline(ScanWords::ended(stopped)), HasSubstr("Scan, as far as it came: "));
  EXPECT_EQ(ScanWords::ended(endOf(CauseKind::Same)).kind, MessageKind::Success);
  EXPECT_EQ(ScanWords::ended(stopped).kind, MessageKind::Information) << "nothing is cleared that was not seen";
  EXPECT_LT(ScanWords::ended(stopped).advice.size(), ScanWords::ended(endOf(CauseKind::Same)).advice.size());
  stopped.result.correspondence = Beginning::Result::NotFound;
  EXPECT_EQ(headline(ScanWords::ended(stopped)),
            "The scan was cancelled before it was found how the one movie lies upon the other.");
}

Timeline named() {
  scan::ScanResult result;
  result.segments = {{{20, 60}, {}, {}, {{.kind = CauseKind::Same, .confidence = 0.9}}},
                     {{60, 100}, {}, {}, {{.kind = CauseKind::Power, .confidence = 0.999, .exponent = 1.2}}}};
  Timeline timeline;
  timeline.seconds = timeline.done = 12;
  timeline.segments = {{{2, 6}, false, {}, {}}, {{6, 10}, true, {}, {}}};
  timeline.unmatched = {{0, 2}};
  timeline.unmeasured = {{{10, 11}, scan::Unmeasured::Dark}};
  timeline.worst = TimelineWorst{8, 1.31};
  ScanWords::name(timeline, result);
  return timeline;
}

const TimeText inSeconds = [](double time) { return QString::number(time) + 's'; };

TEST(ScanWords, NameSegmentsByTheirCauses) {
  const Timeline timeline = named();
  EXPECT_EQ(timeline.segments[0].word, "the same");
  EXPECT_EQ(timeline.segments[1].word, "gamma shift, exponent 1.20");
  EXPECT_EQ(timeline.segments[1].sentence, "gamma shift, exponent 1.20 (sure by 99 %)") << "never by all";
}

TEST(ScanWords, TellWhatAPlaceLiesIn) {
  const Timeline timeline = named();
  const std::pair<double, const char*> rows[] = {
      {1, "0s – 2s: no counterpart in the source"},
      {3, "2s – 6s: the same (sure by 90 %)"},
      {10.5, "10s – 11s: not measured: black, or of one colour"},
      {13, "13s: not scanned"},
      {11.5, ""},
  };
  for (const auto& [time, text] : rows) EXPECT_EQ(ScanWords::place(timeline, time, inSeconds), text);
}

TEST(ScanWords, TellTheExponentWhereThereIsNoSegmentYet) {
  Timeline timeline;
  timeline.seconds = 10;
  timeline.done = 5;
  timeline.bins.assign(timelineBins, {.frames = 1, .measured = 1, .logSum = 0.1});
  EXPECT_EQ(ScanWords::place(timeline, 4, inSeconds), "4s: exponent 1.11");
}

TEST(ScanWords, TellTheWholeToWhoCannotSeeIt) {
  EXPECT_EQ(ScanWords::summary(named(), inSeconds),
            "2s – 6s: the same (sure by 90 %). 6s – 10s: gamma shift, exponent 1.20 (sure by 99 %). "
            "0s – 2s: no counterpart in the source. 10s – 11s: not measured: black, or of one colour. "
            "Worst frame: 8s, exponent 1.31");
}

}  // namespace
