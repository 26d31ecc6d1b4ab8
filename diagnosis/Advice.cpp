#include "diagnosis/Advice.h"

namespace diagnosis {
namespace {

bool pixelsAgree(const Finding& finding) {
  const Cause& main = finding.main();
  if (main.kind == CauseKind::Identical || main.kind == CauseKind::Same) return true;
  return main.kind == CauseKind::Matrix && main.where == Where::Tags && finding.causes.size() == 1;
}

/// Whether copying the source's gamma, NCLC record and profile onto the destination makes its tags right: nothing that
/// counts differs then, and the samples are read as before, or, where only the tag was wrong, as the source's are.
bool syncHelps(const Finding& finding) {
  const SideTags &source = finding.tags.source, &dest = finding.tags.dest;
  const bool wrongTag = finding.main().kind == CauseKind::Matrix;
  if (!pixelsAgree(finding) || !(wrongTag || finding.tags.counts())) return false;
  const SideTags after = synced(source, dest);
  return !compareTags(source, after).counts() &&
         after.matrixInForce == (wrongTag ? source.matrixInForce : dest.matrixInForce);
}

}  // namespace

Action actionFor(const Finding& finding) {
  const Cause& main = finding.main();
  if (main.kind == CauseKind::Different || main.kind == CauseKind::Dark || main.kind == CauseKind::Unreadable) {
    return Action::ChooseAnotherFrame;
  }
  if (!isTold(finding)) return Action::CannotTell;
  if (isAllClear(finding)) return Action::Nothing;
  if (syncHelps(finding)) return Action::Sync;
  const bool onlyTags = main.kind == CauseKind::Identical || main.kind == CauseKind::Same ||
                        main.where == Where::Flags || main.where == Where::Tags;
  return onlyTags ? Action::TagDestination : Action::ExportAgain;
}

}  // namespace diagnosis
