#include "tests/SharedFiles/analytics/HttpsServer.h"

#include <QFile>
#include <QProcess>
#include <QSslConfiguration>
#include <QSslSocket>
#include <QTimer>
#include <memory>
#include <utility>

#include <gtest/gtest.h>

namespace {

QByteArray contentOf(const QString& path) {
  QFile file(path);
  return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

qsizetype lengthOf(const QByteArray& request) {
  const qsizetype head = request.indexOf("\r\n\r\n");
  if (head < 0) return -1;
  const QByteArray field = "\r\ncontent-length: ";
  const qsizetype at = request.left(head).toLower().indexOf(field);
  if (at < 0) return head + 4;
  const qsizetype number = at + field.size();
  return head + 4 + request.mid(number, request.indexOf("\r\n", number) - number).toLongLong();
}

}  // namespace

ServerCertificate ServerCertificate::make(const char* host) {
  const QTemporaryDir folder;
  const QString key = folder.filePath("key.pem"), certificate = folder.filePath("certificate.pem");
  const QString name = QString::fromLatin1(host);
  QProcess openssl;
  openssl.start("openssl",
                {"req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1", "-nodes", "-keyout", key,
                 "-out", certificate, "-days", "2", "-subj", "/CN=" + name, "-addext", "subjectAltName=DNS:" + name});
  EXPECT_TRUE(openssl.waitForFinished(60000) && openssl.exitCode() == 0)
      << openssl.readAllStandardError().toStdString();
  return {QSslCertificate(contentOf(certificate)), QSslKey(contentOf(key), QSsl::Ec)};
}

HttpsServer::HttpsServer(ServerCertificate certificate, Speech speech)
    : certificate_(std::move(certificate)), speech_(speech) {
  EXPECT_TRUE(listen(QHostAddress::LocalHost));
}

QUrl HttpsServer::address() const {
  return QUrl(QStringLiteral("https://localhost:%1/appdata/qc/qc.php").arg(serverPort()));
}

QByteArray HttpsServer::answerOf(const QByteArray& status, const QByteArray& header) {
  return "HTTP/1.1 " + status + "\r\n" + header + "Content-Length: 4\r\nConnection: close\r\n\r\nbody";
}

void HttpsServer::incomingConnection(qintptr descriptor) {
  ++connections_;
  auto* const socket = new QSslSocket(this);
  socket->setSocketDescriptor(descriptor);
  const auto received = std::make_shared<QByteArray>();
  connect(socket, &QIODevice::readyRead, this, [this, socket, received] { receive(*socket, *received); });
  if (speech_ == Speech::Plain) return;
  QSslConfiguration security = QSslConfiguration::defaultConfiguration();
  security.setLocalCertificate(certificate_.certificate);
  security.setPrivateKey(certificate_.key);
  security.setPeerVerifyMode(QSslSocket::VerifyNone);
  socket->setSslConfiguration(security);
  socket->startServerEncryption();
}

void HttpsServer::receive(QTcpSocket& socket, QByteArray& received) {
  received += socket.readAll();
  const qsizetype length = lengthOf(received);
  if (speech_ == Speech::Tls && (length < 0 || received.size() < length)) return;
  requests_.push_back(received);
  received.clear();
  if (manner_ == Manner::Trickles) return trickle(socket);
  if (manner_ == Manner::Answers) socket.write(answer_);
  if (manner_ != Manner::KeepsSilent) socket.disconnectFromHost();
}

void HttpsServer::trickle(QTcpSocket& socket) {
  auto* const timer = new QTimer(&socket);
  timer->callOnTimeout([this, &socket, sent = qsizetype{0}]() mutable {
    if (sent < answer_.size()) socket.write(answer_.mid(sent++, 1));
  });
  timer->start(100);
}

TunnelProxy::TunnelProxy(quint16 serverPort) : serverPort_(serverPort) {
  EXPECT_TRUE(listen(QHostAddress::LocalHost));
  connect(this, &QTcpServer::newConnection, this, &TunnelProxy::open);
}

void TunnelProxy::open() {
  QTcpSocket* const near = nextPendingConnection();
  connect(near, &QIODevice::readyRead, near, [this, near] { begin(*near); });
}

void TunnelProxy::begin(QTcpSocket& near) {
  if (!near.peek(near.bytesAvailable()).contains("\r\n\r\n")) return;
  asked_.push_back(near.readLine().trimmed());
  while (near.readLine() != "\r\n") {
  }
  near.disconnect();
  auto* const far = new QTcpSocket(&near);
  connect(far, &QTcpSocket::connected, &near, [&near] { near.write("HTTP/1.1 200 OK\r\n\r\n"); });
  connect(&near, &QIODevice::readyRead, far, [this, &near, far] {
    const QByteArray bytes = near.readAll();
    carried_ += bytes;
    far->write(bytes);
  });
  connect(far, &QIODevice::readyRead, &near, [&near, far] { near.write(far->readAll()); });
  connect(far, &QTcpSocket::disconnected, &near, [&near] { near.disconnectFromHost(); });
  far->connectToHost(QHostAddress(QHostAddress::LocalHost), serverPort_);
}
