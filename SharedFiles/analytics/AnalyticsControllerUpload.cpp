#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <utility>

#include "SharedFiles/analytics/AnalyticsController.h"
#include "SharedFiles/analytics/MultipartForm.h"
#include "SharedFiles/log/QVLog.h"

namespace {

constexpr qint64 identifierLifeInMilliseconds = qint64{7'776'000} * 1000;
constexpr std::int32_t identifierLength = 12;

QString knownOr(const QString& text) {
  return text.isNull() ? QStringLiteral("Unknown") : text;
}

}  // namespace

// uploadData
void AnalyticsController::uploadData() {
  const std::lock_guard guard(uploading_);
  const QVariantList sent = cache();
  if (!shouldLog_ || sent.isEmpty()) return;
  const QByteArray events = QJsonDocument(QJsonArray::fromVariantList(sent)).toJson(QJsonDocument::Compact);
  const QString version = services_.bundle.objectForInfoDictionaryKey(QStringLiteral("CFBundleVersion"));
  postDictionary({{QStringLiteral("uid"), installationIdentifier()},
                  {QStringLiteral("app"), knownOr(bundleID_)},
                  {QStringLiteral("version"), knownOr(version)},
                  {QStringLiteral("events"), QString::fromUtf8(events)}},
                 services_.endpoint);
  dropSent(sent.size());
  QFile::remove(cacheFolder() + u'/' + knownOr(bundleID_));
  services_.defaults.setObject(services_.now(), QStringLiteral("lastSubmission"));
}

/// The stored one; a new one when there is none or when it is too old.
QString AnalyticsController::installationIdentifier() const {
  const QLatin1String identifierKey(AnalyticsPreferences::identifierKey);
  const QLatin1String dateKey(AnalyticsPreferences::identifierDateKey);
  const QVariantMap stored = preferences_.read();
  QString known = stored.value(identifierKey).toString();
  const QDateTime now = services_.now(), assigned = stored.value(dateKey).toDateTime();
  const bool old = assigned.isValid() && assigned.msecsTo(now) > identifierLifeInMilliseconds;
  if (!known.isEmpty() && !old) return known;
  QString made = generateRandomString(identifierLength);
  preferences_.set({{identifierKey, made}, {dateKey, now}});
  return made;
}

/// Events recorded meanwhile stay.
void AnalyticsController::dropSent(qsizetype sent) {
  const std::lock_guard guard(fields_);
  cache_.remove(0, sent);
}

// postDictionary:toURL:
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

// connection:didReceiveData:
void AnalyticsController::connectionDidReceiveData(UrlConnection& /*connection*/, const QByteArray& /*data*/) {}

// connection:didFailWithError:
void AnalyticsController::connectionDidFailWithError(UrlConnection& connection, const QString& error) {
  releaseConnection(connection);
  QVLog::appendLogAndPrint("Connection failed - %@", error);
}

// connectionDidFinishLoading:
void AnalyticsController::connectionDidFinishLoading(UrlConnection& connection) {
  releaseConnection(connection);
}

void AnalyticsController::releaseConnection(const UrlConnection& ended) {
  const std::lock_guard guard(fields_);
  if (connection_.get() == &ended) connection_.reset();
}
