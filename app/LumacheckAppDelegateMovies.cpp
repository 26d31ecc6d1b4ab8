// How movies come into the slots.

#include <QFileDialog>
#include <QLineEdit>
#include <algorithm>
#include <utility>

#include "SharedFiles/foundation/QVPlatformException.h"
#include "SharedFiles/log/QVLog.h"
#include "SharedFiles/settings/UserDefaults.h"
#include "app/LumacheckAppDelegate.h"
#include "app/Subclasses/QVMovieView.h"
#include "app/Subclasses/QVQTWindow.h"
#include "app/dialogs/MoviePanel.h"

// loadQTMovieWithPath:type:
void LumacheckAppDelegate::loadQTMovieWithPath(const QString& path, const QString& type) {
  Side& loaded = side(type);
  setSlot(loaded.master, nullptr);
  setSlot(loaded.display, nullptr);
  stopObservingTime(loaded.movieView->movie());
  loaded.movieView->setMovie(nullptr);
  if (!PlayableMovie::canInitWithFile(path)) return;

  const MovieSlot master = PlayableMovie::movieWithFile(path);
  setSlot(loaded.master, master);
  if (master) master->gotoBeginning();
  setSlot(loaded.display, master ? master->copy() : nullptr);
  if (master) master->setEditable(true);
  showIn(loaded, slot(loaded.display));
  loaded.filenameText->setText(path);
  observeTime(loaded.movieView->movie());
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
    side.movieView->setMovie(display);
  } catch (const QVPlatformException& exception) {
    const bool isSource = &side == &source_;
    QVLog::appendLog(isSource ? "Exception loading source movie: %@" : "Exception loading dest movie: %@",
                     exception.reason());
  }
}

// browseSource:
void LumacheckAppDelegate::browseSource() {
  browse(source_.type);
}

// browseDest:
void LumacheckAppDelegate::browseDest() {
  browse(dest_.type);
}

void LumacheckAppDelegate::browse(const QString& type) {
  auto* const panel =
      makeMoviePanel(*window_, type == source_.type ? tr("Open the source movie") : tr("Open the destination movie"));
  panel->setFileMode(QFileDialog::ExistingFile);
  panel->setOption(QFileDialog::ReadOnly);  // no folders are made
  connect(panel, &QDialog::finished, this, [this, panel, type](int code) { browseDidEnd(panel, code, type); });
  panel->open();
}

// browseDidEnd:returnCode:contextInfo:
void LumacheckAppDelegate::browseDidEnd(QFileDialog* panel, int returnCode, const QString& contextInfo) {
  constexpr int ok = 1;
  if (returnCode != ok) return;
  panel->hide();
  const QString path = panel->selectedFiles().value(0);
  loadQTMovieWithPath(path, contextInfo);
  side(contextInfo).filenameText->setText(path);
}

// modifySourcePath:
void LumacheckAppDelegate::modifySourcePath() {
  loadQTMovieWithPath(source_.filenameText->text(), source_.type);
}

// modifyDestPath:
void LumacheckAppDelegate::modifyDestPath() {
  loadQTMovieWithPath(dest_.filenameText->text(), dest_.type);
}

// swapMovies:
void LumacheckAppDelegate::swapMovies() {
  const QString sourcePath = source_.filenameText->text();
  const QString destPath = dest_.filenameText->text();
  loadQTMovieWithPath(destPath, source_.type);
  loadQTMovieWithPath(sourcePath, dest_.type);
}

// application:openFiles:
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

// filesDroppedOnMovieView:
void LumacheckAppDelegate::filesDroppedOnMovieView(QVMovieView* view, const QStringList& files) {
  if (files.isEmpty()) return;
  loadQTMovieWithPath(files[0], view == source_.movieView ? source_.type : dest_.type);
}
