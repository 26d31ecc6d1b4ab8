#include "SharedFiles/analytics/HttpsConnection.h"

#include <QCoreApplication>
#include <QIODevice>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QSslConfiguration>
#include <QSslSocket>
#include <QTimer>
#include <algorithm>
#include <utility>

#include "SharedFiles/foundation/MainThread.h"

namespace {

/// Larger answers wait in the socket until they are thrown away.
constexpr qint64 answerBuffer = 64 << 10;

QSslConfiguration securityOf(const HttpsConnection::Settings& settings) {
  QSslConfiguration security = QSslConfiguration::defaultConfiguration();
  security.setProtocol(QSsl::TlsV1_2OrLater);
  security.setPeerVerifyMode(QSslSocket::VerifyPeer);
  if (!settings.authorities.isEmpty()) security.setCaCertificates(settings.authorities);
  return security;
}

QNetworkRequest networkRequestOf(const UrlRequest& request, const HttpsConnection::Settings& settings) {
  QNetworkRequest made(request.url);
  made.setHeader(QNetworkRequest::ContentTypeHeader, request.contentType);
  made.setHeader(QNetworkRequest::ContentLengthHeader, request.body.size());
  made.setAttribute(QNetworkRequest::DoNotBufferUploadDataAttribute, true);
  made.setSslConfiguration(securityOf(settings));
  made.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::ManualRedirectPolicy);
  made.setAttribute(QNetworkRequest::CacheLoadControlAttribute, QNetworkRequest::AlwaysNetwork);
  made.setAttribute(QNetworkRequest::CacheSaveControlAttribute, false);
  for (const auto attribute : {QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::CookieSaveControlAttribute,
                               QNetworkRequest::AuthenticationReuseAttribute}) {
    made.setAttribute(attribute, QNetworkRequest::Manual);
  }
  return made;
}

/// The bytes of a body that can be read through but once: Qt sends a request again whose connection is closed without
/// an answer, and cannot do so without its body.
class SentOnce final : public QIODevice {
 public:
  explicit SentOnce(QByteArray bytes) : bytes_(std::move(bytes)) { open(ReadOnly | Unbuffered); }
  bool isSequential() const override { return true; }
  bool atEnd() const override { return read_ == bytes_.size(); }
  bool reset() override { return false; }
  qint64 bytesAvailable() const override { return bytes_.size() - read_; }

 protected:
  qint64 readData(char* to, qint64 size) override {
    const qint64 count = std::min(size, bytesAvailable());
    std::copy_n(bytes_.constData() + read_, count, to);
    read_ += count;
    return count;
  }
  qint64 writeData(const char* /*from*/, qint64 /*size*/) override { return -1; }

 private:
  const QByteArray bytes_;
  qint64 read_ = 0;
};

}  // namespace

/// The request's part on the main thread.
class HttpsConnection::Transfer final : public QObject {
 public:
  explicit Transfer(HttpsConnection& connection)
      : connection_(connection.weak_from_this()), body_(connection.request_.body) {
    const Settings& settings = connection.settings_;
    reply_ = manager_.post(networkRequestOf(connection.request_, settings), &body_);
    reply_->setReadBufferSize(answerBuffer);
    connect(reply_, &QNetworkReply::readyRead, this, [this] { receive(); });
    connect(reply_, &QNetworkReply::finished, this, [this] { end(); });
    timer_.setSingleShot(true);
    connect(&timer_, &QTimer::timeout, this, [this] {
      timedOut_ = true;
      reply_->abort();
    });
    timer_.start(settings.timeOut);
  }

  void close() {
    timer_.stop();
    reply_->disconnect(this);
    reply_->abort();
    deleteLater();
  }

 private:
  void receive() {
    const std::shared_ptr<HttpsConnection> connection = connection_.lock();
    const QByteArray data = reply_->readAll();
    if (connection) connection->delegate_.connectionDidReceiveData(*connection, data);
  }

  void end() {
    timer_.stop();
    const std::shared_ptr<HttpsConnection> connection = connection_.lock();
    if (!connection) return;
    const QString failure = failureText();
    if (failure.isNull()) {
      connection->delegate_.connectionDidFinishLoading(*connection);
    } else {
      connection->delegate_.connectionDidFailWithError(*connection, failure);
    }
  }

  /// Nil when the server has answered: what it answers to the request is no failure of the connection.
  QString failureText() const {
    if (timedOut_) return QCoreApplication::translate("HttpsConnection", "The request timed out.");
    if (reply_->attribute(QNetworkRequest::RedirectionTargetAttribute).isValid()) {
      return QCoreApplication::translate("HttpsConnection",
                                         "The server leads to another address, which is not followed.");
    }
    const QNetworkReply::NetworkError error = reply_->error();
    if (error == QNetworkReply::ContentReSendError) {
      return QCoreApplication::translate("HttpsConnection", "The server closed the connection without an answer.");
    }
    const bool answered =
        error == QNetworkReply::NoError ||
        (error >= QNetworkReply::ContentAccessDenied && error <= QNetworkReply::UnknownContentError) ||
        (error >= QNetworkReply::InternalServerError && error <= QNetworkReply::UnknownServerError);
    return answered ? QString() : reply_->errorString();
  }

  const std::weak_ptr<HttpsConnection> connection_;
  SentOnce body_;
  QNetworkAccessManager manager_;
  QNetworkReply* reply_ = nullptr;
  QTimer timer_;
  bool timedOut_ = false;
};

std::shared_ptr<UrlConnection> HttpsConnection::start(UrlRequest request, UrlConnectionDelegate& delegate,
                                                      const Settings& settings) {
  const bool secure = request.url.isValid() && request.url.scheme() == QLatin1String("https");
  if (!secure || request.url.host().isEmpty() || !QSslSocket::supportsSsl()) return nullptr;
  auto made = std::make_shared<HttpsConnection>(Made{}, std::move(request), delegate, settings);
  MainThread::perform([waiting = made->weak_from_this()] {
    if (const std::shared_ptr<HttpsConnection> connection = waiting.lock()) connection->begin();
  });
  return made;
}

HttpsConnection::HttpsConnection(Made /*made*/, UrlRequest request, UrlConnectionDelegate& delegate,
                                 const Settings& settings)
    : request_(std::move(request)), delegate_(delegate), settings_(settings) {}

HttpsConnection::~HttpsConnection() {
  if (transfer_ == nullptr) return;
  if (MainThread::isCurrent()) {
    transfer_->close();
  } else {
    MainThread::perform([transfer = transfer_] { transfer->close(); });
  }
}

void HttpsConnection::begin() {
  transfer_ = std::make_unique<Transfer>(*this).release();
}
