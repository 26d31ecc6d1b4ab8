#include "SharedFiles/analytics/AnalyticsController.h"

#include <QCoreApplication>
#include <QDir>
#include <QEvent>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QTimer>
#include <string_view>
#include <utility>

#include "SharedFiles/alerts/QVAlert.h"
#include "SharedFiles/analytics/MultipartForm.h"
#include "SharedFiles/foundation/QVLocalPaths.h"
#include "SharedFiles/log/QVLog.h"
#include "SharedFiles/settings/PropertyList.h"

namespace {

using Preferences = AnalyticsPreferences;

constexpr int allow = 1;
constexpr int doNotAllow = -1;
constexpr qlonglong firstLaunchAsked = 3;
constexpr qlonglong firstLaunchUploaded = 4;
constexpr qint64 dayInMilliseconds = 86'400'000;
constexpr qint64 launchIsRecent = 60;
constexpr qint64 writePause = 1000;
constexpr qint64 identifierLifeInMilliseconds = 90 * dayInMilliseconds;
constexpr std::int32_t identifierLength = 12;
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

QString knownOr(const QString& text) {
  return text.isNull() ? QStringLiteral("Unknown") : text;
}

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
  shouldLog_ = preferences_.objectForKey(Preferences::decisionKey).toInt() == 1;
  services_.defaults.setObject(services_.defaults.integerForKey("launchCount") + 1, "launchCount");
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

void AnalyticsController::loadQC(QWidget* parentWindow) {
  const auto decision = [this] { return preferences_.objectForKey(Preferences::decisionKey); };
  if (const QVariant decided = decision(); decided.isValid()) {
    shouldLog_ = decided.toBool();
    return;
  }
  if (!context_ || services_.defaults.integerForKey("launchCount") < firstLaunchAsked) return;
  QTimer::singleShot(services_.promptDelay, Qt::PreciseTimer, context_.get(),
                     [this, decision, window = QPointer<QWidget>(parentWindow)] {
                       if (!decision().isValid()) askForConsent(window);
                     });
}

void AnalyticsController::askForConsent(QWidget* parentWindow) {
  const QuitWatch quit;
  const std::shared_ptr<QVAlert> alert = QVAlert::create();
  const int answer = QVAlert::alertSheetWithMessageText(
      "Help improve Quorvane software by submitting analytics and usage data", "Allow", "More Info", "Don't Allow",
      "This information helps us find problems and improve our software. It is anonymous and cannot be used to "
      "identify you.",
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

void AnalyticsController::setupInitialLogging() {
  if (!shouldLog_) return;
  logLoadEvent();
  logSystemSpecsEvent();
  if (!cache().isEmpty() && isUploadDue()) opQueue_.addOperation([this] { uploadData(); });
}

bool AnalyticsController::isUploadDue() const {
  const QVariant last = services_.defaults.objectForKey("lastSubmission");
  if (last.typeId() == QMetaType::QDateTime) return last.toDateTime().msecsTo(services_.now()) > dayInMilliseconds;
  return services_.defaults.integerForKey("launchCount") >= firstLaunchUploaded;
}

void AnalyticsController::setQCLogging(bool log) {
  preferences_.setObject(log, Preferences::decisionKey);
  shouldLog_ = log;
}

void AnalyticsController::awakeFromNib() const {
  if (showShouldLog_) showShouldLog_(shouldLog_);
}

qint64 AnalyticsController::secondsSince1970() const {
  return services_.now().toMSecsSinceEpoch() / 1000;
}

void AnalyticsController::logQCEvent(const std::optional<QVariantMap>& event) {
  if (!event) return;
  {
    const std::lock_guard guard(fields_);
    cache_.append(*event);
  }
  if (!wroteCacheWithinASecond()) writeCache();
}

void AnalyticsController::logLoadEvent() {
  const qint64 now = secondsSince1970();
  for (const QVariant& cached : cache()) {
    const QVariantMap event = cached.toMap();
    if (event.value("event") == "launch" && now - event.value("date").toLongLong() < launchIsRecent) return;
  }
  logQCEvent(QVariantMap{{"event", "launch"}, {"date", now}});
}

void AnalyticsController::logSystemSpecsEvent() {
  const QString version = services_.osVersion();
  if (version.isNull() || version == services_.defaults.stringForKey("lastOSVersion")) return;
  logQCEvent(QVariantMap{{"event", "specs"}, {"date", secondsSince1970()}, {"data", version}});
  services_.defaults.setObject(version, "lastOSVersion");
}

void AnalyticsController::writeCache() {
  if (shouldLog_) opQueue_.addOperation([this] { writeCacheOnThread(); });
}

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
  return QVLocalPaths::cacheDirectory(true, services_.paths) + "/Quorvane/QC";
}

QString AnalyticsController::generateRandomString(std::int32_t length) const {
  QString made;
  for (std::int32_t i = 0; i < length; ++i) made.append(QLatin1Char(alphabet[services_.random() % alphabet.size()]));
  return made;
}

void AnalyticsController::willTerminate() {
  if (!context_) return;
  context_.reset();
  opQueue_.shutDown();
  writeCacheOnThread();
}

// --- The upload -----------------------------------------------------------------------------------------------------

void AnalyticsController::uploadData() {
  const std::lock_guard guard(uploading_);
  const QVariantList sent = cache();
  if (!shouldLog_ || sent.isEmpty()) return;
  const QByteArray events = QJsonDocument(QJsonArray::fromVariantList(sent)).toJson(QJsonDocument::Compact);
  postDictionary({{"uid", installationIdentifier()},
                  {"app", knownOr(bundleID_)},
                  {"version", knownOr(services_.bundle.objectForInfoDictionaryKey("CFBundleVersion"))},
                  {"events", QString::fromUtf8(events)}},
                 services_.endpoint);
  dropSent(sent.size());
  QFile::remove(cacheFolder() + u'/' + knownOr(bundleID_));
  services_.defaults.setObject(services_.now(), "lastSubmission");
}

/// The stored one; a new one when there is none or when it is too old.
QString AnalyticsController::installationIdentifier() {
  QString known = preferences_.objectForKey(Preferences::identifierKey).toString();
  const QDateTime assigned = preferences_.objectForKey(Preferences::identifierDateKey).toDateTime();
  const QDateTime now = services_.now();
  const bool old = assigned.isValid() && assigned.msecsTo(now) > identifierLifeInMilliseconds;
  if (!known.isEmpty() && !old) return known;
  QString made = generateRandomString(identifierLength);
  preferences_.setObjects({{Preferences::identifierKey, made}, {Preferences::identifierDateKey, now}});
  return made;
}

/// Events recorded meanwhile stay.
void AnalyticsController::dropSent(qsizetype sent) {
  const std::lock_guard guard(fields_);
  cache_.remove(0, sent);
}

void AnalyticsController::postDictionary(const QVariantMap& dictionary, const QUrl& url) {
  const QString boundary = services_.paths.globallyUniqueString();
  UrlRequest request{url, "multipart/form-data; boundary=" + boundary.toUtf8(),
                     MultipartForm::generateFormData(dictionary, boundary)};
  const std::lock_guard guard(fields_);  // how it ends is told after what is logged here
  connection_ = services_.makeConnection(std::move(request), *this);
  QVLog::appendLog("Sending QC log to Quorvane...");
  if (!connection_) QVLog::appendLog("Failed to establish a connection. Please try again later.");
}

std::shared_ptr<UrlConnection> AnalyticsController::connection() const {
  const std::lock_guard guard(fields_);
  return connection_;
}

void AnalyticsController::connectionDidReceiveData(UrlConnection& /*connection*/, const QByteArray& /*data*/) {}

void AnalyticsController::connectionDidFailWithError(UrlConnection& connection, const QString& error) {
  releaseConnection(connection);
  QVLog::appendLogAndPrint("Connection failed - %@", error);
}

void AnalyticsController::connectionDidFinishLoading(UrlConnection& connection) {
  releaseConnection(connection);
}

void AnalyticsController::releaseConnection(const UrlConnection& ended) {
  const std::lock_guard guard(fields_);
  if (connection_.get() == &ended) connection_.reset();
}
