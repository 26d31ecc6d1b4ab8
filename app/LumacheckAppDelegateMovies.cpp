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
#include "app/messages/OpeningMessages.h"

void LumacheckAppDelegate::loadQTMovieWithPath(const QString& path, const QString& type) {
  finishLoading({load(side(type), path)});
}

/// Empties the side, then loads the file into it, and says what came of it.
Message LumacheckAppDelegate::load(Side& side, const QString& path) {
  const Message lost = joined({changesLostWith(slot(side.master)), dropScan()});
  setSlot(side.master, nullptr);
  setSlot(side.display, nullptr);
  QVMovieView& view = *side.controls.movieView;
  stopObservingTime(view.movie());
  view.setMovie(nullptr);
  view.setRefusal({});
  const auto refused = PlayableMovie::refusalOf(path);
  if (!refused) return joined({lost, loadMaster(side, path)});
  if (path.isEmpty()) return joined({lost, OpeningMessages::emptied(side.side)});
  view.setRefusal(OpeningMessages::refusedInView(path, *refused));
  return joined({OpeningMessages::refused(side.side, path, *refused), lost});
}

Message LumacheckAppDelegate::changesLostWith(const MovieSlot& movie) {
  const bool hasChanges = movie && movie->content().hasUnsavedChanges();
  return hasChanges ? OpeningMessages::changesLost(movie->path()) : Message();
}

Message LumacheckAppDelegate::loadMaster(Side& loaded, const QString& path) {
  const MovieSlot master = PlayableMovie::movieWithFile(path);
  setSlot(loaded.master, master);
  if (master) master->gotoBeginning();
  setSlot(loaded.display, master ? master->copy() : nullptr);
  if (master) master->setEditable(true);
  const Message notShown = showIn(loaded, slot(loaded.display));
  loaded.controls.filenameText->setText(path);
  observeTime(loaded.controls.movieView->movie());
  defaults_.setObject(path, loaded.defaultsKey);
  disableSync_ = false;
  for (const MovieSlot& display : {sourceQTDisplayMov(), destQTDisplayMov()}) {
    if (display) display->setEditable(true);
  }
  updateLink();
  updateTimecode();
  if (!master) return OpeningMessages::emptied(loaded.side);
  const OpenedMovie opened{.hasPictures = master->hasVideo(), .endsInMiddle = master->endsInMiddle()};
  return joined({notShown, OpeningMessages::opened(loaded.side, path, opened)});
}

Message LumacheckAppDelegate::showIn(Side& side, const MovieSlot& display) {
  try {
    side.controls.movieView->setMovie(display);
    return {};
  } catch (const QVPlatformException& exception) {
    const bool isSource = side.side == MovieSide::Source;
    QVLog::appendLog(isSource ? "Exception loading source movie: %@" : "Exception loading dest movie: %@",
                     exception.reason());
    return OpeningMessages::notShown(side.side, exception.reason());
  }
}

void LumacheckAppDelegate::browse(const QString& type) {
  tell({});
  auto* const panel =
      makeMoviePanel(*window_, type == source_.type ? tr("Open the source movie") : tr("Open the destination movie"));
  panel->setFileMode(QFileDialog::ExistingFile);
  panel->setOption(QFileDialog::ReadOnly);  // no folders are made
  whenPanelEnds(panel, this, [this, panel, type](int code) { browseDidEnd(panel, code, type); });
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
  const Message source = load(source_, destPath);
  finishLoading({source, load(dest_, sourcePath)});
}

void LumacheckAppDelegate::applicationOpenFiles(const QStringList& files) {
  if (files.isEmpty()) return;
  const auto hasVideo = [](const MovieSlot& movie) { return movie && movie->hasVideo(); };
  if (files.size() == 1) {
    const bool onlySourceLoaded = hasVideo(sourceQTDisplayMov()) && !hasVideo(destQTDisplayMov());
    return loadQTMovieWithPath(files[0], onlySourceLoaded ? dest_.type : source_.type);
  }
  const Message source = load(source_, files[0]);
  finishLoading({source, load(dest_, files[1]), OpeningMessages::othersLeftOut(2, files.size())});
}

void LumacheckAppDelegate::filesDroppedOnMovieView(QVMovieView* view, const QStringList& files) {
  if (files.isEmpty()) return tell(OpeningMessages::namesUnreadable());
  Side& target = view == source_.controls.movieView ? source_ : dest_;
  finishLoading({load(target, files[0]), OpeningMessages::othersLeftOut(1, files.size())});
}
