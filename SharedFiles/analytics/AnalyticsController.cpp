#include "SharedFiles/analytics/AnalyticsController.h"

#include <QCoreApplication>
#include <QDir>
#include <QEvent>
#include <QTimer>
#include <string_view>
#include <utility>

#include "SharedFiles/alerts/QVAlert.h"
#include "SharedFiles/foundation/QVLocalPaths.h"
#include "SharedFiles/log/QVLog.h"
#include "SharedFiles/settings/PropertyList.h"

namespace {

constexpr int allow = 1;
constexpr int doNotAllow = -1;
constexpr qlonglong firstLaunchAsked = 3;
constexpr qlonglong firstLaunchUploaded = 4;
constexpr qint64 dayInMilliseconds = 86'400'000;
constexpr qint64 launchIsRecent = 60;
constexpr qint64 writePause = 1000;
constexpr std::string_view alphabet = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXZY0123456789";

/// Tells whether the application was asked to quit, which closes its panels as if the user had done so.
class QuitWatch final : public QObject {
 public:
  QuitWatch() { QCoreApplication::instance()->installEventFilter(this); }
  bool asked() const { return asked_; }
  bool eventFilter(QObject* watched, QEvent* event) override {
    asked_ = asked_ || event->type() == QEvent::Quit;
    return QObject::eventFilter(watched, event);
  }

 private:
  bool asked_ = false;
};

}  // namespace

AnalyticsController::AnalyticsController(Services services)
    : services_(std::move(services)),
      preferences_(services_.paths),
      bundleID_(services_.bundle.objectForInfoDictionaryKey(QStringLiteral("CFBundleIdentifier"))),
      context_(std::make_unique<QObject>()) {
  loadCache();
  if (QCoreApplication* const application = QCoreApplication::instance()) {
    QObject::connect(application, &QCoreApplication::aboutToQuit, context_.get(), [this] { willTerminate(); });
  }
  shouldLog_ = preferences_.read().value(QLatin1String(AnalyticsPreferences::decisionKey)).toInt() == 1;
  const QString launchCount = QStringLiteral("launchCount");
  services_.defaults.setObject(services_.defaults.integerForKey(launchCount) + 1, launchCount);
}

AnalyticsController::~AnalyticsController() {
  context_.reset();
  opQueue_.shutDown();
}

void AnalyticsController::loadCache() {
  if (bundleID_.isNull()) return;
  const QVariant stored = PropertyList::read(cacheFolder() + u'/' + bundleID_).value_or(QVariant());
  for (const QVariant& event : stored.toList()) {
    if (event.typeId() == QMetaType::QVariantMap) cache_.append(event);
  }
}

bool AnalyticsController::isDecided() const {
  return preferences_.read().contains(QLatin1String(AnalyticsPreferences::decisionKey));
}

// loadQC:
void AnalyticsController::loadQC(QWidget* parentWindow) {
  const QVariantMap stored = preferences_.read();
  const QLatin1String decision(AnalyticsPreferences::decisionKey);
  if (stored.contains(decision)) {
    shouldLog_ = stored.value(decision).toBool();
    return;
  }
  if (!context_ || services_.defaults.integerForKey(QStringLiteral("launchCount")) < firstLaunchAsked) return;
  QTimer::singleShot(services_.promptDelay, Qt::PreciseTimer, context_.get(),
                     [this, window = QPointer<QWidget>(parentWindow)] {
                       if (!isDecided()) askForConsent(window);
                     });
}

void AnalyticsController::askForConsent(QWidget* parentWindow) {
  const QuitWatch quit;
  const std::shared_ptr<QVAlert> alert = QVAlert::create();
  const int answer = QVAlert::alertSheetWithMessageText(
      QStringLiteral("Help improve Quorvane software by submitting analytics and usage data"), QStringLiteral("Allow"),
      QStringLiteral("More Info"), QStringLiteral("Don't Allow"),
      QStringLiteral("This information helps us find problems and improve our software. It is anonymous and cannot be "
                     "used to identify you."),
      parentWindow, nullptr, QString(), true, alert);
  if (quit.asked() || !alert->alertEnded()) return;  // nobody has answered
  if (answer == allow) {
    enableQCLogging();
    setupInitialLogging();
  } else if (answer == doNotAllow) {
    disableQCLogging();
  } else {
    services_.workspace.openURL(services_.moreInfo);
  }
}

// setupInitialLogging
void AnalyticsController::setupInitialLogging() {
  if (!shouldLog_) return;
  logLoadEvent();
  logSystemSpecsEvent();
  if (!cache().isEmpty() && isUploadDue()) opQueue_.addOperation([this] { uploadData(); });
}

bool AnalyticsController::isUploadDue() const {
  const QVariant last = services_.defaults.objectForKey(QStringLiteral("lastSubmission"));
  if (last.typeId() == QMetaType::QDateTime) return last.toDateTime().msecsTo(services_.now()) > dayInMilliseconds;
  return services_.defaults.integerForKey(QStringLiteral("launchCount")) >= firstLaunchUploaded;
}

// setQCLogging:
void AnalyticsController::setQCLogging(bool log) {
  preferences_.set({{QLatin1String(AnalyticsPreferences::decisionKey), log}});
  shouldLog_ = log;
}

// awakeFromNib
void AnalyticsController::awakeFromNib() const {
  if (showShouldLog_) showShouldLog_(shouldLog_);
}

qint64 AnalyticsController::secondsSince1970() const {
  return services_.now().toMSecsSinceEpoch() / 1000;
}

// logQCEvent:
void AnalyticsController::logQCEvent(const std::optional<QVariantMap>& event) {
  if (!event) return;
  {
    const std::lock_guard guard(fields_);
    cache_.append(*event);
  }
  if (!wroteCacheWithinASecond()) writeCache();
}

// logLoadEvent
void AnalyticsController::logLoadEvent() {
  const qint64 now = secondsSince1970();
  const QString launch = QStringLiteral("launch");
  for (const QVariant& cached : cache()) {
    const QVariantMap event = cached.toMap();
    const bool recent = now - event.value(QStringLiteral("date")).toLongLong() < launchIsRecent;
    if (event.value(QStringLiteral("event")) == launch && recent) return;
  }
  logQCEvent(QVariantMap{{QStringLiteral("event"), launch}, {QStringLiteral("date"), now}});
}

// logSystemSpecsEvent
void AnalyticsController::logSystemSpecsEvent() {
  const QString version = services_.osVersion();
  const QString lastKey = QStringLiteral("lastOSVersion");
  if (version.isNull() || version == services_.defaults.stringForKey(lastKey)) return;
  logQCEvent(QVariantMap{{QStringLiteral("event"), QStringLiteral("specs")},
                         {QStringLiteral("date"), secondsSince1970()},
                         {QStringLiteral("data"), version}});
  services_.defaults.setObject(version, lastKey);
}

// writeCache
void AnalyticsController::writeCache() {
  if (shouldLog_) opQueue_.addOperation([this] { writeCacheOnThread(); });
}

// writeCacheOnThread
void AnalyticsController::writeCacheOnThread() {
  if (!shouldLog_) return;
  const QString folder = cacheFolder();
  QDir().mkpath(folder);
  if (bundleID_.isNull()) {
    QVLog::appendLog("Error: unable to save QC data. Bundle ID not found.");
    return;
  }
  PropertyList::write(cache(), folder + u'/' + bundleID_);
  const QDateTime now = services_.now();
  const std::lock_guard guard(fields_);
  lastCacheWrite_ = now;
}

QVariantList AnalyticsController::cache() const {
  const std::lock_guard guard(fields_);
  return cache_;
}

std::optional<QDateTime> AnalyticsController::lastCacheWrite() const {
  const std::lock_guard guard(fields_);
  return lastCacheWrite_;
}

/// A write in the future, before the clock was set back, counts for nothing.
bool AnalyticsController::wroteCacheWithinASecond() const {
  const std::optional<QDateTime> last = lastCacheWrite();
  if (!last) return false;
  const qint64 since = last->msecsTo(services_.now());
  return since >= 0 && since < writePause;
}

QString AnalyticsController::cacheFolder() const {
  return QVLocalPaths::cacheDirectory(true, services_.paths) + QStringLiteral("/Quorvane/QC");
}

// generateRandomString:
QString AnalyticsController::generateRandomString(std::int32_t length) const {
  QString made;
  for (std::int32_t i = 0; i < length; ++i) made.append(QLatin1Char(alphabet[services_.random() % alphabet.size()]));
  return made;
}

// willTerminate:
void AnalyticsController::willTerminate() {
  if (!context_) return;
  context_.reset();
  opQueue_.shutDown();
  writeCacheOnThread();
}
