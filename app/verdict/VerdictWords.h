#pragma once

#include <QCoreApplication>
#include <QString>

#include "app/messages/WhyNot.h"
#include "app/verdict/Moment.h"
#include "app/verdict/Verdict.h"
#include "diagnosis/words/Words.h"

/// What a verdict stands among.
struct VerdictSituation {
  WindowState window;
  bool isChecking = false;
  bool isLookingForPlace = false;                     ///< of the destination's picture in the source
  bool isSameMoment = true;                           ///< of both playheads
  Change source = Change::None, dest = Change::None;  ///< since the check
};

/// What stands on a button, and what it does.
struct ButtonWords {
  QString text, tip;
};

/// A finding in the user's language, and what the strip shows of it.
class VerdictWords final {
  Q_DECLARE_TR_FUNCTIONS(VerdictWords)

 public:
  VerdictWords() = delete;
  static Verdict verdictOf(const diagnosis::Finding& finding, QList<Fact> facts);
  /// Without a verdict, what to do for one.
  static VerdictView viewOf(const std::optional<Verdict>& verdict, const VerdictSituation& situation);

  /// Why it holds no longer.
  static QString changeNote(const VerdictSituation& situation);

  /// The user's, for what the diagnosis says under that context of the translations.
  static diagnosis::Language languageOf(const char* context);

  static ButtonWords button(VerdictAction action);

 private:
  static QString busyText(const VerdictSituation& situation);
  static VerdictView withoutVerdict(const VerdictSituation& situation);
  static QStringList notesOn(const VerdictSituation& situation);
};
