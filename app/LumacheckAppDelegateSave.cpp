// The metadata sync, and the ways to save the destination.

#include <QFile>
#include <QFileDialog>
#include <filesystem>
#include <system_error>

#include "SharedFiles/alerts/QVAlert.h"
#include "SharedFiles/foundation/QVPlatformException.h"
#include "SharedFiles/log/QVLog.h"
#include "app/LumacheckAppDelegate.h"
#include "app/MainInterface.h"
#include "app/dialogs/FlattenedSave.h"
#include "app/dialogs/MoviePanel.h"
#include "check/MetadataSync.h"

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
  syncMetadata(sourceQTMov(), destQTMov());
  QVLog::appendLog("Metadata sync complete.");
  const MovieSlot master = destQTMov();
  setDestQTDisplayMov(master ? master->copy() : nullptr);
  try {
    dest_.controls.movieView->setMovie(destQTDisplayMov());
  } catch (const QVPlatformException& exception) {
    QVLog::appendLog("Exception loading source movie: %@", exception.reason());
  }
  QVAlert::alertSheetWithMessageText(QStringLiteral("Metadata sync complete"),
                                     QStringLiteral("Please check the destination preview and save the file."),
                                     window_);
}

void LumacheckAppDelegate::syncMetadata(const MovieSlot& source, const MovieSlot& dest) {
  if (source && dest) check::syncMetadata(source->content(), dest->content());
}

void LumacheckAppDelegate::saveDest() {
  QVLog::appendLog("Saving...");
  const MovieSlot master = destQTMov();
  if (master) master->setEditable(true);
  const auto possible = canUpdate(master);
  if (!possible) {
    QVLog::appendLog("Cannot update file... saving as");
    logProblem(possible.error());
    return saveDestAs();
  }
  QVLog::appendLog("Updating original file");
  const auto saved = master->content().updateMovieFile();
  if (!saved) return logProblem(saved.error());
  for (const std::string& note : saved->notes) QVLog::appendLog("%@", QString::fromStdString(note));
}

void LumacheckAppDelegate::saveDestAs() {
  auto* const panel = makeMoviePanel(*window_, tr("Save the destination as"));
  panel->setAcceptMode(QFileDialog::AcceptSave);
  panel->setFileMode(QFileDialog::AnyFile);
  panel->setDefaultSuffix(movieFileTypes().first());
  connect(panel, &QDialog::finished, this, [this, panel](int code) { savePanelDidEnd(panel, code, nullptr); });
  panel->open();
}

void LumacheckAppDelegate::savePanelDidEnd(QFileDialog* panel, int returnCode, void* /*contextInfo*/) {
  constexpr int ok = 1;
  if (returnCode != ok) return;
  panel->hide();
  const MovieSlot master = destQTMov();
  if (!master) return;
  const QString path = panel->selectedFiles().value(0);
  // Nothing here scales a movie: its current size is its natural size.
  const auto written = writeFlattened(*master, path, *window_, copyWriter_);
  if (!written) return logProblem(written.error());
  for (Side* each : {&source_, &dest_}) reopenReplaced(*each, path);
}

/// A side whose file was replaced goes on with the new one: slots, field, defaults and observers stay as they are.
void LumacheckAppDelegate::reopenReplaced(Side& side, const QString& writtenPath) {
  const std::string written = QFile::encodeName(writtenPath).toStdString();
  const MovieSlot display = slot(side.display);
  const movie::MovieTime durationBefore = display ? display->duration() : movie::MovieTime{};
  bool isShown = false;
  for (const MovieSlot& each : {slot(side.master), display}) {
    if (!each || !wasReplacedBy(written, each->content())) continue;
    const auto reopened = each->reopen();
    if (!reopened) return QVLog::appendLog("%@", QString::fromStdString(reopened.error().message()));
    isShown = each == display;
  }
  if (!isShown) return;
  showIn(side, display);
  if (movie::compareTimes(display->duration(), durationBefore) != 0) updateLink();
  updateTimecode();
}
