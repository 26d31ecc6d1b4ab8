#pragma once

#include <QList>
#include <QString>
#include <QStringList>
#include <array>
#include <optional>
#include <vector>

#include "app/messages/Message.h"
#include "diagnosis/Finding.h"

/// A property of both movies in the user's language.
struct Fact {
  QString name, source, dest;
  bool differs = false;
  QString sourceTip = {}, destTip = {};  ///< the same at length, where there is more to say

  friend bool operator==(const Fact&, const Fact&) = default;
};

/// What a check found, in the user's language.
struct Verdict {
  MessageKind kind = MessageKind::Information;
  QString headline, advice, why;  ///< `why` may be empty
  QList<Fact> facts;
  std::vector<diagnosis::CurvePoint> curve;
  diagnosis::Action action = diagnosis::Action::CannotTell;
  bool mayBeElsewhere = false;  ///< the two frames do not show the same: another one may
};

/// What can be done about it by a button.
enum class VerdictAction { Check, Sync, FindPlace, SameMoment, AnotherFrame, Manual, Save };

/// In the order of their buttons.
inline constexpr std::array verdictActions{
    VerdictAction::Check,        VerdictAction::Sync,   VerdictAction::FindPlace, VerdictAction::SameMoment,
    VerdictAction::AnotherFrame, VerdictAction::Manual, VerdictAction::Save};

/// What the strip shows.
struct VerdictView {
  std::optional<MessageKind> kind = std::nullopt;
  QString headline, advice = {}, why = {};
  bool holds = true;       ///< faint where not: it is of another moment
  QStringList notes = {};  ///< what else is to be known
  QList<Fact> facts = {};
  std::vector<diagnosis::CurvePoint> curve = {};
  QList<VerdictAction> actions = {};

  friend bool operator==(const VerdictView&, const VerdictView&) = default;
};
