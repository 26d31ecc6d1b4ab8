#include <gmock/gmock.h>

#include "app/verdict/VerdictWords.h"
#include "tests/SharedFiles/QtPrinters.h"

namespace {

using diagnosis::Action;
using diagnosis::CauseKind;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

diagnosis::Finding findingOf(CauseKind kind, Action action, double confidence = 0.95) {
  diagnosis::Finding finding;
  finding.causes = {{.kind = kind, .confidence = confidence}};
  finding.frames = 1;
  finding.action = action;
  finding.curve = {{16, 16}, {235, 235}};
  return finding;
}

Verdict verdictOf(CauseKind kind, Action action, double confidence = 0.95) {
  return VerdictWords::verdictOf(findingOf(kind, action, confidence), {});
}

const WindowState bothLoaded{.source = SideContent::Pictures, .dest = SideContent::Pictures};

std::string text(const QString& string) {
  return string.toStdString();
}

struct KindRow {
  CauseKind cause;
  double confidence;
  MessageKind kind;
};

TEST(VerdictWords, AreGreenOnlyWhereAllIsClear) {
  const KindRow rows[] = {
      {CauseKind::Identical, 1, MessageKind::Success},   {CauseKind::Same, 0.9, MessageKind::Success},
      {CauseKind::Same, 0.4, MessageKind::Warning},      {CauseKind::Power, 0.9, MessageKind::Failure},
      {CauseKind::Power, 0.4, MessageKind::Warning},     {CauseKind::Range, 0.9, MessageKind::Failure},
      {CauseKind::Different, 0.9, MessageKind::Warning}, {CauseKind::Dark, 0.9, MessageKind::Warning},
      {CauseKind::Unreadable, 1, MessageKind::Warning},
  };
  for (const auto& [cause, confidence, kind] : rows) {
    EXPECT_EQ(verdictOf(cause, Action::Nothing, confidence).kind, kind) << static_cast<int>(cause) << confidence;
  }
  diagnosis::Finding retagged = findingOf(CauseKind::Identical, Action::Sync, 1);
  retagged.tags.gamma = diagnosis::Comparison::Differs;
  EXPECT_EQ(VerdictWords::verdictOf(retagged, {}).kind, MessageKind::Warning) << "a tag that counts";
}

struct ButtonRow {
  Action action;
  QList<VerdictAction> buttons;
};

TEST(VerdictWords, OfferWhatIsAdvised) {
  const ButtonRow rows[] = {
      {Action::Nothing, {}},
      {Action::Sync, {VerdictAction::Sync}},
      {Action::ExportAgain, {VerdictAction::Manual}},
      {Action::TagDestination, {VerdictAction::Manual}},
      {Action::ChooseAnotherFrame, {VerdictAction::AnotherFrame}},
      {Action::CannotTell, {VerdictAction::AnotherFrame}},
  };
  for (const auto& [action, buttons] : rows) {
    const VerdictView view = VerdictWords::viewOf(verdictOf(CauseKind::Power, action), {.window = bothLoaded});
    EXPECT_EQ(view.actions, buttons) << static_cast<int>(action);
    EXPECT_TRUE(view.holds);
    EXPECT_THAT(view.notes, IsEmpty());
  }
}

TEST(VerdictWords, OfferTheSameTimeInsteadOfAnotherFrame) {
  const VerdictSituation apart{.window = bothLoaded, .isSameMoment = false};
  const VerdictView view = VerdictWords::viewOf(verdictOf(CauseKind::Different, Action::ChooseAnotherFrame), apart);
  EXPECT_THAT(view.actions, ElementsAre(VerdictAction::FindPlace, VerdictAction::SameMoment));
  EXPECT_THAT(view.notes, ElementsAre("The playheads are not at the same time."));
  EXPECT_TRUE(view.holds) << "it is of these two frames";
}

TEST(VerdictWords, OfferToFindThePlaceOfAnotherPicture) {
  const Verdict verdict = VerdictWords::verdictOf(findingOf(CauseKind::Different, Action::ChooseAnotherFrame), {});
  EXPECT_THAT(VerdictWords::viewOf(verdict, {.window = bothLoaded}).actions,
              ElementsAre(VerdictAction::FindPlace, VerdictAction::AnotherFrame));
  EXPECT_THAT(VerdictWords::viewOf(verdict, {.window = bothLoaded, .isSameMoment = false}).actions,
              ElementsAre(VerdictAction::FindPlace, VerdictAction::SameMoment));
  const Verdict dark = VerdictWords::verdictOf(findingOf(CauseKind::Dark, Action::ChooseAnotherFrame), {});
  EXPECT_THAT(VerdictWords::viewOf(dark, {.window = bothLoaded}).actions, ElementsAre(VerdictAction::AnotherFrame));
  const VerdictView looking = VerdictWords::viewOf(verdict, {.window = bothLoaded, .isLookingForPlace = true});
  EXPECT_EQ(looking.headline, "Looking for the destination's picture in the source…");
  EXPECT_THAT(looking.actions, IsEmpty());
  EXPECT_FALSE(looking.holds);
}

TEST(VerdictWords, OfferASaveOfWhatIsUnsaved) {
  WindowState unsaved = bothLoaded;
  unsaved.hasUnsavedChanges = true;
  const VerdictView view = VerdictWords::viewOf(verdictOf(CauseKind::Same, Action::Nothing), {.window = unsaved});
  EXPECT_THAT(view.actions, ElementsAre(VerdictAction::Save));
  EXPECT_THAT(view.notes, ElementsAre("The destination has changes that are not saved."));
}

struct ChangeRow {
  Change source, dest;
  const char* note;
};

TEST(VerdictWords, SayWhatMadeAVerdictStale) {
  const ChangeRow rows[] = {
      {Change::Movie, Change::None, "Out of date: the source is another movie."},
      {Change::None, Change::Movie, "Out of date: the destination is another movie."},
      {Change::Tags, Change::Tags, "Out of date: the source's metadata changed."},
      {Change::None, Change::Tags, "Out of date: the destination's metadata changed."},
      {Change::Playhead, Change::Movie, "Out of date: the source's playhead moved."},
      {Change::None, Change::Playhead, "Out of date: the destination's playhead moved."},
  };
  const Verdict verdict = verdictOf(CauseKind::Power, Action::Sync);
  for (const auto& [source, dest, note] : rows) {
    const VerdictView view = VerdictWords::viewOf(verdict, {.window = bothLoaded, .source = source, .dest = dest});
    EXPECT_FALSE(view.holds);
    EXPECT_EQ(view.kind, std::nullopt) << "nothing is green or red that is not so now";
    EXPECT_EQ(view.headline, verdict.headline);
    EXPECT_THAT(view.notes, ElementsAre(note));
    EXPECT_THAT(view.actions, ElementsAre(VerdictAction::Check)) << "what was advised may be wrong now";
  }
}

TEST(VerdictWords, OfferNoCheckWhereNothingCanBeChecked) {
  const WindowState gone{.source = SideContent::Pictures, .dest = SideContent::Nothing};
  const VerdictView view = VerdictWords::viewOf(verdictOf(CauseKind::Power, Action::Sync),
                                                {.window = gone, .isSameMoment = false, .dest = Change::Movie});
  EXPECT_THAT(view.actions, IsEmpty());
  EXPECT_THAT(view.notes, ElementsAre("Out of date: the destination is another movie."));
}

TEST(VerdictWords, SayThatACheckIsGoingOn) {
  const VerdictSituation checking{.window = bothLoaded, .isChecking = true, .isSameMoment = false};
  EXPECT_EQ(VerdictWords::viewOf(std::nullopt, checking).headline, "Comparing the two frames…");
  const VerdictView view = VerdictWords::viewOf(verdictOf(CauseKind::Power, Action::Sync), checking);
  EXPECT_EQ(view.headline, "Comparing the two frames…");
  EXPECT_EQ(view.kind, std::nullopt);
  EXPECT_FALSE(view.holds);
  EXPECT_THAT(view.actions, IsEmpty());
}

TEST(VerdictWords, SayWhatToDoForAVerdict) {
  EXPECT_EQ(VerdictWords::viewOf(std::nullopt, {}).headline, "No verdict yet. There are no movies.");
  EXPECT_EQ(VerdictWords::viewOf(std::nullopt, {.window = bothLoaded}).headline,
            "No verdict yet. Go to the same picture in both movies, and press Check.");
  EXPECT_THAT(VerdictWords::viewOf(std::nullopt, {.window = bothLoaded, .isSameMoment = false}).actions,
              ElementsAre(VerdictAction::SameMoment));
}

TEST(VerdictWords, TellTheFinding) {
  diagnosis::Finding finding = findingOf(CauseKind::Power, Action::ExportAgain);
  finding.causes[0].exponent = 1.2;
  finding.causes[0].exponentInterval = {1.19, 1.21};
  finding.causes[0].direction = diagnosis::Direction::Darker;
  const Verdict verdict = VerdictWords::verdictOf(finding, {{.name = "Gamma", .source = "2.2", .dest = "1.8"}});
  EXPECT_EQ(verdict.headline, "Gamma shift: the destination is darker, by an exponent of 1.20 (1.19 to 1.21).");
  EXPECT_THAT(text(verdict.advice), HasSubstr("Export again, without a gamma conversion."));
  EXPECT_THAT(text(verdict.why), HasSubstr("codes of 8 bits"));
  const VerdictView view = VerdictWords::viewOf(verdict, {.window = bothLoaded});
  EXPECT_EQ(view.advice, verdict.advice);
  EXPECT_EQ(view.why, verdict.why);
  EXPECT_EQ(view.facts, verdict.facts);
  EXPECT_EQ(view.curve.size(), 2U);
}

TEST(VerdictWords, NameEveryButton) {
  for (const VerdictAction action : verdictActions) {
    EXPECT_FALSE(VerdictWords::button(action).text.isEmpty());
    EXPECT_FALSE(VerdictWords::button(action).tip.isEmpty());
  }
}

}  // namespace
