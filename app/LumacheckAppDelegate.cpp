#include "app/LumacheckAppDelegate.h"

#include <QCheckBox>
#include <QLineEdit>
#include <QPushButton>
#include <initializer_list>
#include <utility>
#include <vector>

#include "SharedFiles/analytics/QVQC.h"
#include "SharedFiles/crash/QVCrashline.h"
#include "SharedFiles/log/QVLog.h"
#include "SharedFiles/settings/UserDefaults.h"
#include "app/MainInterface.h"
#include "app/messages/WindowMessages.h"
#include "app/scan/ScanStrip.h"
#include "app/scan/TimelineView.h"
#include "app/verdict/VerdictStrip.h"
#include "app/widgets/MessageLine.h"

LumacheckAppDelegate::LumacheckAppDelegate(MainInterface& interface, UserDefaults& defaults,
                                           ControllerServices services)
    : interface_(interface),
      defaults_(defaults),
      services_(std::move(services)),
      source_{MovieSide::Source, QStringLiteral("source"), QStringLiteral("lastSourceFile"), interface.source},
      dest_{MovieSide::Destination, QStringLiteral("dest"), QStringLiteral("lastDestFile"), interface.dest},
      window_(&interface.window()),
      console_(*interface.resultsView),
      recentPairs_(defaults) {
  QVCrashline::startCrashline();
  QVLog::finishWriting();  // what that logged, before its file becomes an older one
  QVLog::createNewLog();
  connectControls();
  connectMenus();
  addKeys();
  showRecentPairs();
}

LumacheckAppDelegate::~LumacheckAppDelegate() = default;

void LumacheckAppDelegate::connectControls() {
  const auto wire = [this](const SideInterface& controls, auto browseAction, auto modifyPath) {
    connect(controls.browseBtn, &QPushButton::clicked, this, browseAction);
    connect(controls.filenameText, &QLineEdit::returnPressed, this, modifyPath);
    QLineEdit* const field = controls.timecodeText;
    connect(field, &QLineEdit::returnPressed, this, [this, field] { changeTimecode(field); });
    connect(controls.movieView, &QVMovieView::playbackDidChange, this, &LumacheckAppDelegate::showVerdict);
  };
  wire(interface_.source, &LumacheckAppDelegate::browseSource, &LumacheckAppDelegate::modifySourcePath);
  wire(interface_.dest, &LumacheckAppDelegate::browseDest, &LumacheckAppDelegate::modifyDestPath);
  connect(interface_.swapBtn, &QPushButton::clicked, this, &LumacheckAppDelegate::swapMovies);
  connect(interface_.checkBtn, &QPushButton::clicked, this, &LumacheckAppDelegate::checkAction);
  connect(interface_.scanBtn, &QPushButton::clicked, this, &LumacheckAppDelegate::scanAction);
  connect(&interface_.scanStrip->timeline(), &TimelineView::placeChosen, this, &LumacheckAppDelegate::goToScanned);
  connect(interface_.dest.movieView, &QVMovieView::playbackDidChange, this, &LumacheckAppDelegate::showScanPlayhead);
  connect(interface_.syncBtn, &QPushButton::clicked, this, [this] { syncMetadata(); });
  connect(interface_.saveBtn, &QPushButton::clicked, this, &LumacheckAppDelegate::saveDest);
  connect(interface_.saveAsBtn, &QPushButton::clicked, this, &LumacheckAppDelegate::saveDestAs);
  connect(interface_.verdictStrip, &VerdictStrip::chosen, this, &LumacheckAppDelegate::carryOut);
  connect(window_, &QVQTWindow::fullScreenDidChange, this, &LumacheckAppDelegate::tellOfFullScreen);
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
  std::vector<Message> messages;
  for (Side* each : {&source_, &dest_}) messages.push_back(restoreLastFile(*each));
  finish(joined(std::move(messages)));
  readQCLogging();
}

/// Tells of a file that cannot be opened. One that can is loaded once more, and told of then.
Message LumacheckAppDelegate::restoreLastFile(Side& side) {
  if (!side.controls.filenameText->text().isEmpty()) return {};
  const QString last = defaults_.stringForKey(side.defaultsKey);
  if (last.isNull()) return {};
  const Message message = load(side, last);
  return side.controls.filenameText->text().isEmpty() ? message : Message();
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
  std::vector<Message> messages{interface_.messageLine->message()};
  for (Side* each : {&source_, &dest_}) {
    const QString path = each->controls.filenameText->text();
    if (!path.isEmpty()) messages.push_back(load(*each, path));
  }
  for (Side* each : {&source_, &dest_}) observeTime(each->controls.movieView->movie());
  updateLink();
  finishLoading(std::move(messages));
  QVQC::sharedController().loadQC(window_);
}

void LumacheckAppDelegate::applicationWillTerminate() {
  dropScan();
  QVCrashline::stopCrashline();
  QVLog::willTerminate();
}

void LumacheckAppDelegate::manualUpdateCheck() {
  const bool isOpened = interface_.softwareUpdate.manualUpdateCheck();
  tell(isOpened ? Message() : WindowMessages::updaterMissing());
}

LumacheckAppDelegate::MovieSlot LumacheckAppDelegate::slot(const MovieSlot& which) const {
  const std::lock_guard guard(slots_);
  return which;
}

void LumacheckAppDelegate::setSlot(MovieSlot& which, MovieSlot movie) {
  const std::lock_guard guard(slots_);
  which.swap(movie);
}
