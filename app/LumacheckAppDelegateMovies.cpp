// How movies come into the slots.

#include <QFileDialog>
#include <QLineEdit>
#include <algorithm>
#include <utility>

#include "SharedFiles/foundation/QVPlatformException.h"
#include "SharedFiles/log/QVLog.h"
#include "SharedFiles/settings/UserDefaults.h"
#include "app/LumacheckAppDelegate.h"
#include "app/MainInterface.h"
#include "app/dialogs/MoviePanel.h"

void LumacheckAppDelegate::loadQTMovieWithPath(const QString& path, const QString& type) {
  Side& loaded = side(type);
  setSlot(loaded.master, nullptr);
  setSlot(loaded.display, nullptr);
  stopObservingTime(loaded.controls.movieView->movie());
  loaded.controls.movieView->setMovie(nullptr);
  if (!PlayableMovie::canInitWithFile(path)) return;

  const MovieSlot master = PlayableMovie::movieWithFile(path);
  setSlot(loaded.master, master);
  if (master) master->gotoBeginning();
  setSlot(loaded.display, master ? master->copy() : nullptr);
  if (master) master->setEditable(true);
  showIn(loaded, slot(loaded.display));
  loaded.controls.filenameText->setText(path);
  observeTime(loaded.controls.movieView->movie());
  defaults_.setObject(path, loaded.defaultsKey);
  disableSync_ = false;
  for (const MovieSlot& display : {sourceQTDisplayMov(), destQTDisplayMov()}) {
    if (display) display->setEditable(true);
  }
  updateLink();
  updateTimecode();
}

void LumacheckAppDelegate::showIn(Side& side, const MovieSlot& display) {
  try {
    side.controls.movieView->setMovie(display);
  } catch (const QVPlatformException& exception) {
    const bool isSource = &side == &source_;
    QVLog::appendLog(isSource ? "Exception loading source movie: %@" : "Exception loading dest movie: %@",
                     exception.reason());
  }
}

void LumacheckAppDelegate::browse(const QString& type) {
  auto* const panel =
      makeMoviePanel(*window_, type == source_.type ? tr("Open the source movie") : tr("Open the destination movie"));
  panel->setFileMode(QFileDialog::ExistingFile);
  panel->setOption(QFileDialog::ReadOnly);  // no folders are made
  connect(panel, &QDialog::finished, this, [this, panel, type](int code) { browseDidEnd(panel, code, type); });
  panel->open();
}

void LumacheckAppDelegate::browseDidEnd(QFileDialog* panel, int returnCode, const QString& contextInfo) {
  constexpr int ok = 1;
  if (returnCode != ok) return;
  panel->hide();
  const QString path = panel->selectedFiles().value(0);
  loadQTMovieWithPath(path, contextInfo);
  side(contextInfo).controls.filenameText->setText(path);
}

void LumacheckAppDelegate::modifySourcePath() {
  loadQTMovieWithPath(source_.controls.filenameText->text(), source_.type);
}

void LumacheckAppDelegate::modifyDestPath() {
  loadQTMovieWithPath(dest_.controls.filenameText->text(), dest_.type);
}

void LumacheckAppDelegate::swapMovies() {
  const QString sourcePath = source_.controls.filenameText->text();
  const QString destPath = dest_.controls.filenameText->text();
  loadQTMovieWithPath(destPath, source_.type);
  loadQTMovieWithPath(sourcePath, dest_.type);
}

void LumacheckAppDelegate::applicationOpenFiles(const QStringList& files) {
  if (files.isEmpty()) return;
  const auto hasVideo = [](const MovieSlot& movie) { return movie && movie->hasVideo(); };
  if (files.size() == 1) {
    const bool onlySourceLoaded = hasVideo(sourceQTDisplayMov()) && !hasVideo(destQTDisplayMov());
    return loadQTMovieWithPath(files[0], onlySourceLoaded ? dest_.type : source_.type);
  }
  loadQTMovieWithPath(files[0], source_.type);
  loadQTMovieWithPath(files[1], dest_.type);
}

void LumacheckAppDelegate::filesDroppedOnMovieView(QVMovieView* view, const QStringList& files) {
  if (files.isEmpty()) return;
  loadQTMovieWithPath(files[0], view == source_.controls.movieView ? source_.type : dest_.type);
}
