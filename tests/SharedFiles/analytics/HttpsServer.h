#pragma once

#include <QByteArray>
#include <QSslCertificate>
#include <QSslKey>
#include <QTcpServer>
#include <QTemporaryDir>
#include <QUrl>
#include <vector>

/// A certificate for "localhost" that nobody but itself vouches for, made by the openssl program.
struct ServerCertificate {
  QSslCertificate certificate;
  QSslKey key;

  static ServerCertificate make(const char* host = "localhost");
};

/// A proxy of this machine that leads every tunnel to one server. Lives in the event loop.
class TunnelProxy final : public QTcpServer {
 public:
  explicit TunnelProxy(quint16 serverPort);

  QByteArray address() const { return "http://127.0.0.1:" + QByteArray::number(serverPort()); }
  /// The first line of what each connection was asked, and all that came through after it.
  const std::vector<QByteArray>& asked() const { return asked_; }
  const QByteArray& carried() const { return carried_; }

 private:
  void open();
  void begin(QTcpSocket& near);

  const quint16 serverPort_;
  std::vector<QByteArray> asked_;
  QByteArray carried_;
};

/// A server of this machine that notes what it is sent and answers as it is told. Lives in the event loop.
class HttpsServer final : public QTcpServer {
 public:
  enum class Speech { Tls, Plain };
  /// One that trickles sends its answer a byte at a time, ten a second.
  enum class Manner { Answers, HangsUp, KeepsSilent, Trickles };

  explicit HttpsServer(ServerCertificate certificate, Speech speech = Speech::Tls);

  QUrl address() const;
  void setAnswer(const QByteArray& answer) { answer_ = answer; }
  void setManner(Manner manner) { manner_ = manner; }

  int connections() const { return connections_; }
  /// The bytes of each request that came in whole; its body is as long as its Content-Length tells.
  const std::vector<QByteArray>& requests() const { return requests_; }

  static QByteArray answerOf(const QByteArray& status, const QByteArray& header = {});

 protected:
  void incomingConnection(qintptr descriptor) override;

 private:
  void receive(QTcpSocket& socket, QByteArray& received);
  void trickle(QTcpSocket& socket);

  const ServerCertificate certificate_;
  const Speech speech_;
  Manner manner_ = Manner::Answers;
  QByteArray answer_ = answerOf("200 OK");
  int connections_ = 0;
  std::vector<QByteArray> requests_;
};
