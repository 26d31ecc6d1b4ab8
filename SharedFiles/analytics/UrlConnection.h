#pragma once

#include <QByteArray>
#include <QString>
#include <QUrl>
#include <functional>
#include <memory>

/// A POST to be made.
struct UrlRequest {
  QUrl url;
  QByteArray contentType, body;
};

/// A request in flight. Letting go of the last reference, on any thread, ends it without a word to the delegate.
class UrlConnection {
 public:
  virtual ~UrlConnection() = default;
};

/// Who is told what becomes of a request. On the main thread; the connection may be let go of meanwhile.
class UrlConnectionDelegate {
 public:
  virtual ~UrlConnectionDelegate() = default;
  /// connection:didReceiveData:
  virtual void connectionDidReceiveData(UrlConnection& connection, const QByteArray& data) = 0;
  /// connection:didFailWithError: the error as the user would read it. The last message.
  virtual void connectionDidFailWithError(UrlConnection& connection, const QString& error) = 0;
  /// connectionDidFinishLoading: the server has answered, whatever its answer is. The last message.
  virtual void connectionDidFinishLoading(UrlConnection& connection) = 0;
};

/// Starts a request and does not wait: the delegate, which outlives the connection, hears nothing before the call
/// returns. Null when no connection could be made. Callable from any thread.
using MakeUrlConnection = std::function<std::shared_ptr<UrlConnection>(UrlRequest, UrlConnectionDelegate&)>;
