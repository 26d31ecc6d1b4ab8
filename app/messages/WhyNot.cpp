#include "app/messages/WhyNot.h"

QString WhyNot::inToolTip(const QString& does, const QString& whyNot) {
  return whyNot.isEmpty() ? does : does + u'\n' + whyNot;
}

QString WhyNot::check(const WindowState& state) {
  const bool noSource = state.source == SideContent::Nothing, noDest = state.dest == SideContent::Nothing;
  if (noSource && noDest) return tr("There are no movies.");
  if (noSource) return tr("There is no source.");
  if (noDest) return tr("There is no destination.");
  if (state.source == SideContent::NoPictures) return tr("The source has no pictures.");
  if (state.dest == SideContent::NoPictures) return tr("The destination has no pictures.");
  return {};
}

QString WhyNot::save(const WindowState& state) {
  if (QString why = saveAs(state); !why.isEmpty()) return why;
  return state.hasUnsavedChanges ? QString() : tr("The destination has no unsaved changes.");
}

QString WhyNot::saveAs(const WindowState& state) {
  return state.dest == SideContent::Nothing ? tr("There is no destination.") : QString();
}

QString WhyNot::swap(const WindowState& state) {
  const bool isEmpty = state.source == SideContent::Nothing && state.dest == SideContent::Nothing;
  return isEmpty ? tr("There are no movies.") : QString();
}

QString WhyNot::link(const WindowState& state) {
  return state.lastEquallyLong || state.isMapped ? QString() : tr("The movies do not last equally long.");
}

QString WhyNot::play(bool isPlayable) {
  return isPlayable ? QString() : tr("There is no movie.");
}
