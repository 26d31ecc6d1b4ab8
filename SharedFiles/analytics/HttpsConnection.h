#pragma once

#include <QList>
#include <QSslCertificate>
#include <chrono>
#include <memory>

#include "SharedFiles/analytics/UrlConnection.h"

/// A POST over HTTPS, TLS 1.2 or later. The server's certificate must hold for the host and lead to an authority that
/// is trusted; no redirect is followed; the body is sent once; cookies and passwords are neither sent nor kept. The
/// transfer lives on the main thread.
class HttpsConnection final : public UrlConnection, public std::enable_shared_from_this<HttpsConnection> {
  struct Made {};  ///< lets only start() construct

 public:
  struct Settings {
    std::chrono::milliseconds timeOut = std::chrono::seconds(60);  ///< from the start to the end of the answer
    QList<QSslCertificate> authorities = {};                       ///< none: those that the system trusts
  };

  /// Null for an address that is not of HTTPS or has no host, and where there is no TLS.
  static std::shared_ptr<UrlConnection> start(UrlRequest request, UrlConnectionDelegate& delegate,
                                              const Settings& settings);

  HttpsConnection(Made made, UrlRequest request, UrlConnectionDelegate& delegate, const Settings& settings);
  ~HttpsConnection() override;
  HttpsConnection(const HttpsConnection&) = delete;
  HttpsConnection& operator=(const HttpsConnection&) = delete;

 private:
  class Transfer;
  void begin();

  const UrlRequest request_;
  UrlConnectionDelegate& delegate_;
  const Settings settings_;
  Transfer* transfer_ = nullptr;  ///< deletes itself on the main thread once it is closed
};
