#pragma once

#include <QLocalServer>
#include <QObject>
#include <QStringList>

#include <sys/types.h>
#include <unistd.h>

/// One window for a user: a second start hands its files to the first, which opens them as files from outside. The
/// meeting point is a socket of the user's own, which others cannot reach. Main thread only.
class SingleInstance : public QObject {
  Q_OBJECT

 public:
  /// `name` tells the meeting points of different users and programs apart. Nothing is told to a window of others than
  /// `user`.
  explicit SingleInstance(const QString& name, uid_t user = ::getuid());

  /// Hands the paths to the window that runs. False when there is none, or it went without an answer: then this one
  /// listens from now on. Of several starts at the same time one listens.
  bool handOver(const QStringList& files);

  /// The window goes: later starts, also those that wait for an answer, are on their own from now on.
  void leave();

  /// The name for this user.
  static QString standardName();

 signals:
  /// A later start handed files over, perhaps none: it wanted the window.
  void filesOpened(const QStringList& files);

 private:
  bool told(const QStringList& files) const;
  void listen();
  void serve();

  const QString name_;
  const uid_t user_;
  QLocalServer server_;
};
