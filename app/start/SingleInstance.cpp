#include "app/start/SingleInstance.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QLocalSocket>
#include <QLockFile>
#include <QStandardPaths>
#include <QThread>
#include <cstdio>

#include <sys/socket.h>

#include "SharedFiles/log/QVLog.h"

namespace {

constexpr int patience = 3000;  // ms that a running window has to answer
constexpr int turn = 5;         // ms between two looks
constexpr qint64 largestMessage = 1 << 20;
constexpr char received = 'R';

/// One line: a JSON array of the paths. Those that it has no room for are left out: of thousands the window opens the
/// first.
QByteArray messageOf(const QStringList& files) {
  constexpr qint64 largestCharacter = 6;  // "\u001b"
  QJsonArray named;
  qint64 room = largestMessage;
  for (const QString& file : files) {
    room -= largestCharacter * (file.size() + 1);
    if (room < 0) break;
    named.append(file);
  }
  return QJsonDocument(named).toJson(QJsonDocument::Compact) + '\n';
}

QStringList filesIn(const QByteArray& message) {
  QStringList files;
  for (const auto& file : QJsonDocument::fromJson(message).array()) files << file.toString();
  return files;
}

/// Whether the window at the other end is the user's. Where there is no folder that only the user can write, anybody
/// may have set up a meeting point of that name.
bool isOf(uid_t user, const QLocalSocket& socket) {
  ucred other{};
  socklen_t size = sizeof other;
  return ::getsockopt(static_cast<int>(socket.socketDescriptor()), SOL_SOCKET, SO_PEERCRED, &other, &size) == 0 &&
         other.uid == user;
}

}  // namespace

SingleInstance::SingleInstance(const QString& name, uid_t user) : name_(name), user_(user) {
  server_.setSocketOptions(QLocalServer::UserAccessOption);
  connect(&server_, &QLocalServer::newConnection, this, &SingleInstance::serve);
}

QString SingleInstance::standardName() {
  const QString folder = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
  const QString own = QStringLiteral("lumacheck-%1").arg(::getuid());
  return folder.isEmpty() ? own : folder + u'/' + own;
}

bool SingleInstance::handOver(const QStringList& files) {
  if (told(files)) return true;
  // Of those that start at the same time one looks and listens before the next looks again. Without the lock they may
  // miss each other.
  QLockFile lock(QDir(QDir::tempPath()).absoluteFilePath(name_) + QStringLiteral(".lock"));
  const QDeadlineTimer end(patience);
  while (!lock.tryLock(0) && lock.error() == QLockFile::LockFailedError && !end.hasExpired()) QThread::msleep(turn);
  if (told(files)) return true;
  listen();
  return false;
}

/// Whether there is a window, and it has the paths.
bool SingleInstance::told(const QStringList& files) const {
  QLocalSocket socket;
  socket.connectToServer(name_);
  if (!socket.waitForConnected(patience) || !isOf(user_, socket)) return false;
  socket.write(messageOf(files));
  socket.flush();
  if ((socket.bytesAvailable() > 0 || socket.waitForReadyRead(patience)) && socket.read(1) == QByteArray(1, received)) {
    return true;
  }
  if (socket.state() != QLocalSocket::ConnectedState) return false;  // it was about to go
  // One that is busy opens them when it is done.
  std::fputs("Lumacheck is running already, and busy: it will open the movies later.\n", stderr);
  return true;
}

void SingleInstance::listen() {
  if (server_.listen(name_)) return;
  QLocalServer::removeServer(name_);  // left by one that crashed
  if (!server_.listen(name_)) QVLog::appendLog("Later starts cannot reach this window: %@", server_.errorString());
}

void SingleInstance::leave() {
  server_.close();
}

void SingleInstance::serve() {
  while (QLocalSocket* const socket = server_.nextPendingConnection()) {
    connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
    connect(socket, &QLocalSocket::readyRead, this, [this, socket] {
      if (socket->bytesAvailable() > largestMessage || !server_.isListening()) return socket->abort();
      if (!socket->canReadLine()) return;
      const QStringList files = filesIn(socket->readLine());
      socket->write(QByteArray(1, received));
      socket->flush();
      emit filesOpened(files);
    });
  }
}
