#include "app/LumacheckAppDelegate.h"

#include <QCheckBox>
#include <QLineEdit>
#include <QPushButton>
#include <initializer_list>
#include <utility>

#include "SharedFiles/analytics/QVQC.h"
#include "SharedFiles/crash/QVCrashline.h"
#include "SharedFiles/log/QVLog.h"
#include "SharedFiles/settings/UserDefaults.h"
#include "app/MainInterface.h"

LumacheckAppDelegate::LumacheckAppDelegate(MainInterface& interface, UserDefaults& defaults,
                                           ControllerServices services)
    : interface_(interface),
      defaults_(defaults),
      services_(std::move(services)),
      source_{QStringLiteral("source"), QStringLiteral("lastSourceFile"), interface.source},
      dest_{QStringLiteral("dest"), QStringLiteral("lastDestFile"), interface.dest},
      window_(&interface.window()),
      console_(*interface.resultsView) {
  QVCrashline::startCrashline();
  QVLog::finishWriting();  // what that logged, before its file becomes an older one
  QVLog::createNewLog();
  connectControls();
  connectMenus();
  addKeys();
}

LumacheckAppDelegate::~LumacheckAppDelegate() = default;

void LumacheckAppDelegate::connectControls() {
  const auto wire = [this](const SideInterface& controls, auto browseAction, auto modifyPath) {
    connect(controls.browseBtn, &QPushButton::clicked, this, browseAction);
    connect(controls.filenameText, &QLineEdit::returnPressed, this, modifyPath);
    QLineEdit* const field = controls.timecodeText;
    connect(field, &QLineEdit::returnPressed, this, [this, field] { changeTimecode(field); });
  };
  wire(interface_.source, &LumacheckAppDelegate::browseSource, &LumacheckAppDelegate::modifySourcePath);
  wire(interface_.dest, &LumacheckAppDelegate::browseDest, &LumacheckAppDelegate::modifyDestPath);
  connect(interface_.swapBtn, &QPushButton::clicked, this, &LumacheckAppDelegate::swapMovies);
  connect(interface_.checkBtn, &QPushButton::clicked, this, &LumacheckAppDelegate::checkAction);
  connect(interface_.syncBtn, &QPushButton::clicked, this, [this] { syncMetadata(); });
  connect(interface_.saveBtn, &QPushButton::clicked, this, &LumacheckAppDelegate::saveDest);
  connect(interface_.saveAsBtn, &QPushButton::clicked, this, &LumacheckAppDelegate::saveDestAs);
}

void LumacheckAppDelegate::addKeys() {
  interface_.addMovieKeys(keys_);
  keys_.addMenus(*window_);
  keys_.add(tr("Leave full screen"), {QKeySequence(Qt::Key_Escape)},
            [this] { window_->setWindowState(window_->windowState() & ~Qt::WindowFullScreen); });
  keys_.install(*window_);
}

LumacheckAppDelegate::Side& LumacheckAppDelegate::side(const QString& type) {
  return type == source_.type ? source_ : dest_;
}

void LumacheckAppDelegate::awakeFromNib() {
  for (Side* each : {&source_, &dest_}) restoreLastFile(*each);
  readQCLogging();
}

void LumacheckAppDelegate::restoreLastFile(Side& side) {
  if (!side.controls.filenameText->text().isEmpty()) return;
  const QString last = defaults_.stringForKey(side.defaultsKey);
  if (!last.isNull()) loadQTMovieWithPath(last, side.type);
}

void LumacheckAppDelegate::applicationDidFinishLaunching() {
  for (Side* each : {&source_, &dest_}) {
    connect(each->controls.movieView, &QVMovieView::filesDropped, this, &LumacheckAppDelegate::filesDroppedOnMovieView);
  }
  for (MovieSlot* each : {&source_.master, &source_.display, &dest_.master, &dest_.display}) {
    MovieSlot empty = PlayableMovie::movie();
    empty->setIdling(false);
    setSlot(*each, std::move(empty));
  }
  for (Side* each : {&source_, &dest_}) each->controls.movieView->setMovie(each->display);
  for (Side* each : {&source_, &dest_}) {
    const QString path = each->controls.filenameText->text();
    if (!path.isEmpty()) loadQTMovieWithPath(path, each->type);
  }
  for (Side* each : {&source_, &dest_}) observeTime(each->controls.movieView->movie());
  updateLink();
  QVQC::sharedController().loadQC(window_);
}

void LumacheckAppDelegate::applicationWillTerminate() {
  QVCrashline::stopCrashline();
  QVLog::willTerminate();
}

void LumacheckAppDelegate::manualUpdateCheck() {
  interface_.softwareUpdate.manualUpdateCheck();
}

LumacheckAppDelegate::MovieSlot LumacheckAppDelegate::slot(const MovieSlot& which) const {
  const std::lock_guard guard(slots_);
  return which;
}

void LumacheckAppDelegate::setSlot(MovieSlot& which, MovieSlot movie) {
  const std::lock_guard guard(slots_);
  which.swap(movie);
}
