// The menus: what they share with the controls, the preferences, help and troubleshooting.

#include <QAction>
#include <QCheckBox>
#include <QDialog>
#include <QFile>
#include <QUrl>

#include "SharedFiles/MakerHosts.h"
#include "SharedFiles/analytics/AnalyticsPreferences.h"
#include "SharedFiles/foundation/QVLocalPaths.h"
#include "SharedFiles/support/QVTroubleshootingUtils.h"
#include "app/LumacheckAppDelegate.h"
#include "app/MainInterface.h"
#include "app/dialogs/AboutDialog.h"
#include "app/dialogs/BusySheet.h"
#include "app/messages/WindowMessages.h"
#include "system/Guarded.h"

namespace {

const char applicationName[] = "Lumacheck";

QString page(const char* host, const QString& pathAndQuery) {
  return "http://" + QString::fromLatin1(host) + pathAndQuery;
}

TroubleshootingServices troubleshooting(const ControllerServices& services) {
  return {.paths = services.paths, .files = {.paths = services.paths}, .workspace = services.workspace};
}

QString textOf(const GatheringProgress& progress) {
  const QString text = progress.packing ? LumacheckAppDelegate::tr("Packing… Files collected: %1")
                                        : LumacheckAppDelegate::tr("Files collected: %1");
  return text.arg(progress.files);
}

}  // namespace

void LumacheckAppDelegate::connectMenus() {
  using Self = LumacheckAppDelegate;
  const MenuBar& menus = interface_.menus;
  const auto wire = [this](const QAction* action, auto act) { connect(action, &QAction::triggered, this, act); };
  wire(menus.openSource, &Self::browseSource);
  wire(menus.openDest, &Self::browseDest);
  wire(menus.save, &Self::saveDest);
  wire(menus.saveAs, &Self::saveDestAs);
  wire(menus.forgetPairs, &Self::forgetRecentPairs);
  wire(menus.quit, [this] { window_->close(); });
  wire(menus.preferences, &Self::showPreferences);
  wire(menus.check, &Self::checkAction);
  wire(menus.scan, &Self::scanAction);
  wire(menus.sync, [this] { syncMetadata(); });
  wire(menus.swap, &Self::swapMovies);
  wire(menus.link, [this] { interface_.linkBtn->click(); });
  connect(interface_.linkBtn, &QCheckBox::toggled, menus.link, &QAction::setChecked);
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
  wire(menus.about, [this] { showAboutDialog(*window_); });
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

void LumacheckAppDelegate::prefsToggleQCLogging(const QCheckBox* sender) {
  AnalyticsPreferences preferences(services_.paths);
  const bool isStored = preferences.setObject(sender->checkState() == Qt::Checked, AnalyticsPreferences::decisionKey);
  tell(isStored ? Message() : WindowMessages::settingsNotWritten());
}

void LumacheckAppDelegate::helpUserManual() {
  const QString manual =
      QVLocalPaths::libraryDirectory(false, services_.paths) + "/Documentation/Quorvane/Vextrel User Manual.pdf";
  if (!QFile::exists(manual)) return tell(WindowMessages::manualMissing());
  tell(services_.workspace.openFile(manual) ? Message() : WindowMessages::notOpened(manual));
}

void LumacheckAppDelegate::openPage(const QString& address) {
  tell(services_.workspace.openURL(address) ? Message() : WindowMessages::notOpened(address));
}

void LumacheckAppDelegate::helpVextrelHome() {
  openPage(page(makerHosts::web, "/vextrel/"));
}

void LumacheckAppDelegate::helpSupport() {
  openPage(page(makerHosts::support, "/vextrel/"));
}

void LumacheckAppDelegate::helpQVHome() {
  openPage(page(makerHosts::web, QString()));
}

QString LumacheckAppDelegate::shortName() const {
  const QString name = services_.bundle.objectForInfoDictionaryKey(QStringLiteral("QVShortName"));
  return name.isNull() ? QStringLiteral("vextrel") : name;
}

void LumacheckAppDelegate::helpReportBug() {
  const QString version = services_.bundle.objectForInfoDictionaryKey(QStringLiteral("CFBundleShortVersionString"));
  openPage(page(makerHosts::support, "/vextrel/bugreport?app=" + shortName() +
                                         "&version=" + QString::fromLatin1(QUrl::toPercentEncoding(version))));
}

void LumacheckAppDelegate::helpSuggestFeature() {
  openPage(page(makerHosts::support, "/vextrel/featurerequest?app=" + shortName()));
}

void LumacheckAppDelegate::viewLog() {
  const bool isOpened = QVTroubleshootingUtils::viewLogForApp(applicationName, troubleshooting(services_));
  tell(isOpened ? Message() : WindowMessages::logNotOpened());
}

void LumacheckAppDelegate::viewTaskLog() {
  const bool isOpened = QVTroubleshootingUtils::viewTaskLogForApp(applicationName, troubleshooting(services_));
  tell(isOpened ? Message() : WindowMessages::logNotOpened());
}

void LumacheckAppDelegate::gatherLogs() {
  if (gathering_) return;  // two would share their working folder
  gathering_ = true;
  sys::Guarded<GatheringProgress> progress;  // noted by the thread that gathers, told by the main thread
  TroubleshootingServices services = troubleshooting(services_);
  services.watch.progress = [&progress](const GatheringProgress& now) { progress.set(now); };
  bool isGathered = false;
  const auto gather = [&services, &isGathered](const std::stop_token& stop) {
    services.watch.stop = stop;
    isGathered = QVTroubleshootingUtils::gatherLogsForAppWithName(applicationName, services);
  };
  const bool isCancelled = runUnderBusySheet(*window_, tr("Gathering logs…"),
                                             {.work = gather, .progress = [&] { return textOf(progress.get()); }});
  tell(isGathered ? Message() : isCancelled ? WindowMessages::gatheringCancelled() : WindowMessages::logsNotGathered());
  gathering_ = false;
}

const void* LumacheckAppDelegate::printOperationWithSettings(const QVariantMap& /*settings*/, QString* /*error*/) {
  return nullptr;
}
