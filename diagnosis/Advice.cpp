#include "diagnosis/Advice.h"

namespace diagnosis {
namespace {

/// A matrix that the source's NCLC record names, if it does.
bool namesMatrix(const SideTags& tags) {
  return tags.nclc && tags.nclc->matrix != 0 && tags.nclc->matrix != 2;
}

bool isMissing(Comparison comparison) {
  return comparison == Comparison::Lost || comparison == Comparison::Differs;
}

/// What a sync can bring: a gamma in any case, since it also removes one; the rest only where the source has it.
bool sourceHasWhatDiffers(const TagComparison& tags) {
  if (isMissing(tags.primaries) || isMissing(tags.transferFunction)) {
    if (!tags.source.nclc) return false;
  }
  return tags.profile != Comparison::Added;
}

/// The samples would be read as before, or, where only the tag is wrong, rightly.
bool matrixAgreesAfterwards(const Finding& finding) {
  const bool wrongTag = finding.main().kind == CauseKind::Matrix && finding.main().where == Where::Tags;
  if (wrongTag) return namesMatrix(finding.tags.source);
  return finding.tags.source.matrixInForce == finding.tags.dest.matrixInForce;
}

bool pixelsAgree(const Finding& finding) {
  const Cause& main = finding.main();
  if (main.kind == CauseKind::Identical || main.kind == CauseKind::Same) return true;
  return main.kind == CauseKind::Matrix && main.where == Where::Tags && finding.causes.size() == 1;
}

/// Whether copying the source's gamma, NCLC record and profile onto the destination makes its tags right: the source
/// has what differs, and the matrix that it names is the one that the destination's samples are in.
bool syncHelps(const Finding& finding) {
  const bool somethingDiffers = finding.tags.counts() || finding.main().kind == CauseKind::Matrix;
  return pixelsAgree(finding) && somethingDiffers && sourceHasWhatDiffers(finding.tags) &&
         matrixAgreesAfterwards(finding);
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
