#include "app/verdict/VerdictWords.h"

#include <QLocale>
#include <utility>

#include "diagnosis/words/FindingText.h"

namespace {

/// Green only where nothing is to be done, red for what differs, amber for what is to be looked at.
MessageKind kindOf(const diagnosis::Finding& finding) {
  using diagnosis::CauseKind;
  if (diagnosis::isAllClear(finding)) return MessageKind::Success;
  const CauseKind main = finding.main().kind;
  const bool isSame = main == CauseKind::Identical || main == CauseKind::Same;
  return isSame || !diagnosis::isTold(finding) ? MessageKind::Warning : MessageKind::Failure;
}

QList<VerdictAction> advised(const Verdict& verdict, bool isSameMoment) {
  switch (verdict.action) {
    case diagnosis::Action::Nothing:
      return {};
    case diagnosis::Action::Sync:
      return {VerdictAction::Sync};
    case diagnosis::Action::ExportAgain:
    case diagnosis::Action::TagDestination:
      return {VerdictAction::Manual};
    case diagnosis::Action::ChooseAnotherFrame:
    case diagnosis::Action::CannotTell:
      break;
  }
  QList<VerdictAction> actions;
  if (verdict.mayBeElsewhere) actions << VerdictAction::FindPlace;
  // Frames of two moments are best made those of one.
  if (isSameMoment) actions << VerdictAction::AnotherFrame;
  return actions;
}

}  // namespace

Verdict VerdictWords::verdictOf(const diagnosis::Finding& finding, QList<Fact> facts) {
  const diagnosis::FindingText text = diagnosis::textOf(finding, languageOf("FindingText"));
  return {.kind = kindOf(finding),
          .headline = QString::fromStdString(text.verdict),
          .advice = QString::fromStdString(text.advice),
          .why = QString::fromStdString(text.why),
          .facts = std::move(facts),
          .curve = finding.curve,
          .action = finding.action,
          .mayBeElsewhere = finding.main().kind == diagnosis::CauseKind::Different};
}

VerdictView VerdictWords::viewOf(const std::optional<Verdict>& verdict, const VerdictSituation& situation) {
  if (!verdict) return withoutVerdict(situation);
  const bool isBusy = situation.isChecking || situation.isLookingForPlace;
  const bool holds = situation.source == Change::None && situation.dest == Change::None && !isBusy;
  VerdictView view{.kind = holds ? std::optional(verdict->kind) : std::nullopt,
                   .headline = isBusy ? busyText(situation) : verdict->headline,
                   .advice = verdict->advice,
                   .why = verdict->why,
                   .holds = holds,
                   .facts = verdict->facts,
                   .curve = verdict->curve};
  if (isBusy) return view;
  const bool canCheck = WhyNot::check(situation.window).isEmpty();
  if (holds) {
    view.actions = advised(*verdict, situation.isSameMoment);
  } else {
    view.notes << changeNote(situation);
    if (canCheck) view.actions << VerdictAction::Check;
  }
  view.notes << notesOn(situation);
  if (canCheck && !situation.isSameMoment) view.actions << VerdictAction::SameMoment;
  if (situation.window.hasUnsavedChanges) view.actions << VerdictAction::Save;
  return view;
}

VerdictView VerdictWords::withoutVerdict(const VerdictSituation& situation) {
  if (situation.isChecking || situation.isLookingForPlace) return {.headline = busyText(situation)};
  const QString whyNot = WhyNot::check(situation.window);
  VerdictView view;
  //: %1: why, a sentence
  view.headline = whyNot.isEmpty() ? tr("No verdict yet. Go to the same picture in both movies, and press Check.")
                                   : tr("No verdict yet. %1").arg(whyNot);
  view.notes = notesOn(situation);
  if (whyNot.isEmpty() && !situation.isSameMoment) view.actions << VerdictAction::SameMoment;
  if (situation.window.hasUnsavedChanges) view.actions << VerdictAction::Save;
  return view;
}

QString VerdictWords::busyText(const VerdictSituation& situation) {
  return situation.isChecking ? tr("Comparing the two frames…")
                              : tr("Looking for the destination's picture in the source…");
}

QString VerdictWords::changeNote(const VerdictSituation& situation) {
  const bool isSource = situation.source != Change::None;
  switch (isSource ? situation.source : situation.dest) {
    case Change::None:
      break;
    case Change::Movie:
      return isSource ? tr("Out of date: the source is another movie.")
                      : tr("Out of date: the destination is another movie.");
    case Change::Tags:
      return isSource ? tr("Out of date: the source's metadata changed.")
                      : tr("Out of date: the destination's metadata changed.");
    case Change::Playhead:
      return isSource ? tr("Out of date: the source's playhead moved.")
                      : tr("Out of date: the destination's playhead moved.");
  }
  return {};
}

QStringList VerdictWords::notesOn(const VerdictSituation& situation) {
  QStringList notes;
  const bool bothThere =
      situation.window.source == SideContent::Pictures && situation.window.dest == SideContent::Pictures;
  if (bothThere && !situation.isSameMoment) notes << tr("The playheads are not at the same time.");
  if (situation.window.hasUnsavedChanges) notes << tr("The destination has changes that are not saved.");
  return notes;
}

diagnosis::Language VerdictWords::languageOf(const char* context) {
  const auto sentence = [context](const char* english) {
    return QCoreApplication::translate(context, english).toStdString();
  };
  const auto number = [](double value, int decimals) { return QLocale().toString(value, 'f', decimals).toStdString(); };
  return {sentence, number};
}

ButtonWords VerdictWords::button(VerdictAction action) {
  switch (action) {
    case VerdictAction::Check:
      return {tr("Check Again"), tr("Compares the two frames shown now")};
    case VerdictAction::Sync:
      return {tr("Sync Metadata"), tr("Copies the source's colour metadata onto the destination")};
    case VerdictAction::Save:
      return {tr("Save"), tr("Saves the destination's metadata in place")};
    case VerdictAction::FindPlace:
      return {tr("Find the Place"),
              tr("Looks for the destination's picture in the source, up to 10 seconds away, and compares there")};
    case VerdictAction::SameMoment:
      return {tr("Same Time"), tr("Takes the destination's playhead to the source's time")};
    case VerdictAction::AnotherFrame:
      return {tr("Another Frame"), tr("Takes both playheads to another frame, and compares there")};
    case VerdictAction::Manual:
      return {tr("Remedies…"), tr("Opens the manual, which has a chapter on each finding and its remedy")};
  }
  return {};
}
