// The metadata sync, and the ways to save the destination.

#include <QElapsedTimer>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <filesystem>
#include <system_error>

#include "SharedFiles/alerts/QVAlert.h"
#include "SharedFiles/foundation/QVPlatformException.h"
#include "SharedFiles/log/QVLog.h"
#include "app/LumacheckAppDelegate.h"
#include "app/MainInterface.h"
#include "app/dialogs/FlattenedSave.h"
#include "app/dialogs/MoviePanel.h"
#include "app/messages/OpeningMessages.h"
#include "app/messages/SaveMessages.h"
#include "app/messages/SyncMessages.h"
#include "app/widgets/MessageLine.h"

namespace {

void logProblem(const movie::MovieError& error) {
  QVLog::appendLog("%@", QString::fromStdString(error.message(movie::Attempt::Save)));
}

movie::Result<void> canUpdate(const std::shared_ptr<PlayableMovie>& master) {
  if (master && master->content().file()) return master->content().canUpdateMovieFile();
  return movie::failed({}, movie::Reason::NoMovieLoaded);
}

/// Whether another file took the movie's name, and is the one at `path`.
bool wasReplacedBy(const std::string& path, const movie::Movie& content) {
  std::error_code failed;
  return content.file() && !content.standsAtItsPath() && std::filesystem::equivalent(content.path(), path, failed);
}

}  // namespace

void LumacheckAppDelegate::syncMetadata() {
  QVLog::appendLog("Syncing metadata...");
  const check::SyncOutcome outcome = syncMetadata(sourceQTMov(), destQTMov());
  QVLog::appendLog("Metadata sync complete.");
  const MovieSlot master = destQTMov();
  const Message synced = SyncMessages::synced(state(), pathOf(master), outcome);
  setDestQTDisplayMov(master ? master->copy() : nullptr);
  Message notShown;
  try {
    dest_.controls.movieView->setMovie(destQTDisplayMov());
  } catch (const QVPlatformException& exception) {
    QVLog::appendLog("Exception loading source movie: %@", exception.reason());
    notShown = OpeningMessages::notShown(MovieSide::Destination, exception.reason());
  }
  finish(joined({synced, notShown}));
  QVAlert::alertSheetWithMessageText(QStringLiteral("Metadata sync complete"),
                                     QStringLiteral("Please check the destination preview and save the file."),
                                     window_);
}

check::SyncOutcome LumacheckAppDelegate::syncMetadata(const MovieSlot& source, const MovieSlot& dest) {
  return source && dest ? check::syncMetadata(source->content(), dest->content()) : check::SyncOutcome();
}

void LumacheckAppDelegate::saveDest() {
  QVLog::appendLog("Saving...");
  const MovieSlot master = destQTMov();
  if (master) master->setEditable(true);
  const auto possible = canUpdate(master);
  if (!possible) {
    QVLog::appendLog("Cannot update file... saving as");
    logProblem(possible.error());
    saveDestAs();
    return tell(SaveMessages::refused(pathOf(master), possible.error()));
  }
  QVLog::appendLog("Updating original file");
  QElapsedTimer timer;
  timer.start();
  const auto saved = master->content().updateMovieFile();
  const SaveMessages::Span took(timer.elapsed());
  if (!saved) {
    logProblem(saved.error());
    return finish(SaveMessages::failed(master->path(), saved.error()));
  }
  for (const std::string& note : saved->notes) QVLog::appendLog("%@", QString::fromStdString(note));
  finish(SaveMessages::saved(master->path(), took, *saved));
}

void LumacheckAppDelegate::saveDestAs() {
  tell({});
  auto* const panel = makeMoviePanel(*window_, tr("Save the destination as"));
  panel->setAcceptMode(QFileDialog::AcceptSave);
  panel->setFileMode(QFileDialog::AnyFile);
  panel->setDefaultSuffix(movieFileTypes().first());
  whenPanelEnds(panel, this, [this, panel](int code) { savePanelDidEnd(panel, code, nullptr); });
  panel->open();
}

void LumacheckAppDelegate::savePanelDidEnd(QFileDialog* panel, int returnCode, void* /*contextInfo*/) {
  constexpr int ok = 1;
  if (returnCode != ok) return tell(joined({interface_.messageLine->message(), SaveMessages::nothingSaved()}));
  panel->hide();
  const MovieSlot master = destQTMov();
  if (!master) return tell(SaveMessages::nothingToCopy());
  const QString path = panel->selectedFiles().value(0);
  const bool stood = master->content().standsAtItsPath();
  QElapsedTimer timer;
  timer.start();
  // Nothing here scales a movie: its current size is its natural size.
  const auto written = writeFlattened(*master, path, *window_, copyWriter_);
  if (!written) {
    logProblem(written.error());
    const bool leftAsItWas = stood == master->content().standsAtItsPath();
    return tell(SaveMessages::copyFailed(path, written.error(), leftAsItWas));
  }
  const SaveMessages::Span took(timer.elapsed());
  const Message source = reopenReplaced(source_, path), dest = reopenReplaced(dest_, path);
  const Message copied = SaveMessages::copied({.path = path,
                                               .bytes = QFileInfo(path).size(),
                                               .took = took,
                                               .outranCancelling = written->outranCancelling,
                                               .leavesUnsavedChanges = state().hasUnsavedChanges});
  finish(joined({copied, source, dest}));
}

/// A side whose file was replaced goes on with the new one: slots, field, defaults and observers stay as they are.
Message LumacheckAppDelegate::reopenReplaced(Side& side, const QString& writtenPath) {
  const std::string written = QFile::encodeName(writtenPath).toStdString();
  const MovieSlot display = slot(side.display);
  const movie::MovieTime durationBefore = display ? display->duration() : movie::MovieTime{};
  bool isReplaced = false, isShown = false;
  for (const MovieSlot& each : {slot(side.master), display}) {
    if (!each || !wasReplacedBy(written, each->content())) continue;
    const auto reopened = each->reopen();
    if (!reopened) {
      QVLog::appendLog("%@", QString::fromStdString(reopened.error().message()));
      return SaveMessages::doesNotGoOn(side.side, reopened.error());
    }
    isReplaced = true;
    dropScan();
    isShown = each == display;
  }
  Message goesOn = isReplaced ? SaveMessages::goesOn(side.side) : Message();
  if (!isShown) return goesOn;
  const Message notShown = showIn(side, display);
  if (movie::compareTimes(display->duration(), durationBefore) != 0) updateLink();
  updateTimecode();
  return joined({goesOn, notShown});
}
