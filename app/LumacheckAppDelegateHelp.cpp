// The menus: what they share with the controls, the preferences, help and troubleshooting.

#include <QAction>
#include <QCheckBox>
#include <QFile>
#include <QSignalBlocker>
#include <QUrl>
#include <mutex>

#include "SharedFiles/MakerHosts.h"
#include "SharedFiles/analytics/AnalyticsPreferences.h"
#include "SharedFiles/foundation/QVLocalPaths.h"
#include "SharedFiles/support/QVTroubleshootingUtils.h"
#include "app/LumacheckAppDelegate.h"
#include "app/MainInterface.h"
#include "app/dialogs/AboutDialog.h"
#include "app/dialogs/BusySheet.h"
#include "app/dialogs/PreferencesDialog.h"

namespace {

const char applicationName[] = "Lumacheck";

QString page(const char* host, const QString& pathAndQuery) {
  return "http://" + QString::fromLatin1(host) + pathAndQuery;
}

TroubleshootingServices troubleshooting(const ControllerServices& services) {
  return {.paths = services.paths, .files = {.paths = services.paths}, .workspace = services.workspace};
}

/// How far a gathering is: noted by the thread that gathers, told by the main thread.
class NotedProgress {
 public:
  void note(const GatheringProgress& progress) {
    const std::lock_guard guard(mutex_);
    progress_ = progress;
  }
  QString text() const {
    const std::lock_guard guard(mutex_);
    const QString text = progress_.packing ? LumacheckAppDelegate::tr("Packing… Files collected: %1")
                                           : LumacheckAppDelegate::tr("Files collected: %1");
    return text.arg(progress_.files);
  }

 private:
  mutable std::mutex mutex_;
  GatheringProgress progress_;
};

}  // namespace

void LumacheckAppDelegate::connectMenus() {
  using Self = LumacheckAppDelegate;
  const MenuBar& menus = interface_.menus;
  const auto wire = [this](const QAction* action, auto act) { connect(action, &QAction::triggered, this, act); };
  wire(menus.openSource, &Self::browseSource);
  wire(menus.openDest, &Self::browseDest);
  wire(menus.save, &Self::saveDest);
  wire(menus.saveAs, &Self::saveDestAs);
  wire(menus.quit, [this] { window_->close(); });
  wire(menus.preferences, &Self::showPreferences);
  wire(menus.check, &Self::checkAction);
  wire(menus.sync, [this] { syncMetadata(); });
  wire(menus.swap, &Self::swapMovies);
  wire(menus.link, [this] { linkBtn_->click(); });
  connect(linkBtn_, &QCheckBox::toggled, menus.link, &QAction::setChecked);
  wire(menus.fullScreen, [this] { window_->setWindowState(window_->windowState() ^ Qt::WindowFullScreen); });
  wire(menus.userManual, &Self::helpUserManual);
  wire(menus.keys, [this] { keys_.show(*window_); });
  wire(menus.vextrelHome, &Self::helpVextrelHome);
  wire(menus.quorvaneHome, &Self::helpQVHome);
  wire(menus.support, &Self::helpSupport);
  wire(menus.reportBug, &Self::helpReportBug);
  wire(menus.suggestFeature, &Self::helpSuggestFeature);
  wire(menus.viewLog, &Self::viewLog);
  wire(menus.viewTaskLog, &Self::viewTaskLog);
  wire(menus.gatherLogs, &Self::gatherLogs);
  wire(menus.updateCheck, &Self::manualUpdateCheck);
  wire(menus.about, [this] { AboutDialog::showOver(*window_); });
  connect(interface_.qcLoggingCheck, &QCheckBox::clicked, this,
          [this] { prefsToggleQCLogging(interface_.qcLoggingCheck); });
}

void LumacheckAppDelegate::showPreferences() {
  readQCLogging();  // consent may have been asked for since the start
  interface_.preferences->show();
  interface_.preferences->raise();
  interface_.preferences->activateWindow();
}

void LumacheckAppDelegate::readQCLogging() {
  const QVariant decision = AnalyticsPreferences(services_.paths).objectForKey(AnalyticsPreferences::decisionKey);
  interface_.qcLoggingCheck->setChecked(decision.toLongLong() != 0);
}

// prefsToggleQCLogging:
void LumacheckAppDelegate::prefsToggleQCLogging(const QCheckBox* sender) {
  AnalyticsPreferences(services_.paths)
      .setObject(sender->checkState() == Qt::Checked, AnalyticsPreferences::decisionKey);
}

// helpUserManual:
void LumacheckAppDelegate::helpUserManual() {
  const QString manual =
      QVLocalPaths::libraryDirectory(false, services_.paths) + "/Documentation/Quorvane/Vextrel User Manual.pdf";
  if (QFile::exists(manual)) services_.workspace.openFile(manual);
}

// helpVextrelHome:
void LumacheckAppDelegate::helpVextrelHome() {
  services_.workspace.openURL(page(makerHosts::web, "/vextrel/"));
}

// helpSupport:
void LumacheckAppDelegate::helpSupport() {
  services_.workspace.openURL(page(makerHosts::support, "/vextrel/"));
}

// helpQVHome:
void LumacheckAppDelegate::helpQVHome() {
  services_.workspace.openURL(page(makerHosts::web, QString()));
}

QString LumacheckAppDelegate::shortName() const {
  const QString name = services_.bundle.objectForInfoDictionaryKey(QStringLiteral("QVShortName"));
  return name.isNull() ? QStringLiteral("vextrel") : name;
}

// helpReportBug:
void LumacheckAppDelegate::helpReportBug() {
  const QString version = services_.bundle.objectForInfoDictionaryKey(QStringLiteral("CFBundleShortVersionString"));
  services_.workspace.openURL(page(makerHosts::support, "/vextrel/bugreport?app=" + shortName() + "&version=" +
                                                            QString::fromLatin1(QUrl::toPercentEncoding(version))));
}

// helpSuggestFeature:
void LumacheckAppDelegate::helpSuggestFeature() {
  services_.workspace.openURL(page(makerHosts::support, "/vextrel/featurerequest?app=" + shortName()));
}

// viewLog:
void LumacheckAppDelegate::viewLog() {
  QVTroubleshootingUtils::viewLogForApp(applicationName, troubleshooting(services_));
}

// viewTaskLog:
void LumacheckAppDelegate::viewTaskLog() {
  QVTroubleshootingUtils::viewTaskLogForApp(applicationName, troubleshooting(services_));
}

// gatherLogs:
void LumacheckAppDelegate::gatherLogs() {
  if (gathering_) return;  // two would share their working folder
  gathering_ = true;
  NotedProgress progress;
  TroubleshootingServices services = troubleshooting(services_);
  services.watch.progress = [&progress](const GatheringProgress& now) { progress.note(now); };
  const auto gather = [&services](const std::stop_token& stop) {
    services.watch.stop = stop;
    QVTroubleshootingUtils::gatherLogsForAppWithName(applicationName, services);
  };
  runUnderBusySheet(*window_, tr("Gathering logs…"), {.work = gather, .progress = [&] { return progress.text(); }});
  gathering_ = false;
}

// printOperationWithSettings:error:
const void* LumacheckAppDelegate::printOperationWithSettings(const QVariantMap& /*settings*/, QString* /*error*/) {
  return nullptr;
}
