#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>
#include <QStringList>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>

#include "system/Descriptor.h"

/// What a standard stream of a child process is joined to.
enum class StandardStream { inherited, nullDevice, pipe };

/// An external program: described, launched once, and then watched by a thread that collects its end, so that it never
/// stays behind as a zombie whether anybody waits for it or not. It outlives this object: destruction closes the pipes
/// and nothing else. The program gets the standard streams and no other descriptor, and the default signal handling.
///
/// The description is set by one thread before the launch. isRunning, terminate, kill, waitUntilExit and
/// terminationStatus may be called from any thread.
class ChildProcess {
 public:
  using Environment = QMap<QString, QString>;

  ChildProcess();
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  void setLaunchPath(const QString& path) { launchPath_ = path; }
  void setArguments(const QStringList& arguments) { arguments_ = arguments; }
  void setEnvironment(const Environment& environment) { environment_ = environment; }  ///< none: this process's own
  void setStandardInput(StandardStream stream) { input_ = stream; }
  void setStandardOutput(StandardStream stream) { output_ = stream; }
  void setStandardError(StandardStream stream) { error_ = stream; }

  const QString& launchPath() const { return launchPath_; }
  const QStringList& arguments() const { return arguments_; }

  /// Starts the program. Throws QVPlatformException when it cannot be started or when a text of the description cannot
  /// be handed over unaltered (a null character, half of a surrogate pair).
  void launch();

  bool isRunning() const;
  void terminate() const;      ///< SIGTERM; nothing when it is not running
  void kill() const;           ///< SIGKILL; the same
  void waitUntilExit() const;  ///< returns at once when it was never launched
  /// The exit status, or the number of the signal that ended it; 0 while it runs.
  std::int32_t terminationStatus() const;

  /// This process's ends of the pipes that were asked for, from the launch on. What the program reads from its standard
  /// input ends when `standardInput` is closed.
  sys::Descriptor standardInput, standardOutput, standardError;

 private:
  struct State;

  QString launchPath_;
  QStringList arguments_;
  std::optional<Environment> environment_;
  StandardStream input_ = StandardStream::inherited;
  StandardStream output_ = StandardStream::inherited;
  StandardStream error_ = StandardStream::inherited;
  std::shared_ptr<State> state_;
};

/// A place for a child process that several threads read and write.
class ChildProcessSlot {
 public:
  std::shared_ptr<ChildProcess> get() const {
    const std::lock_guard guard(mutex_);
    return process_;
  }
  void set(std::shared_ptr<ChildProcess> process) {
    const std::lock_guard guard(mutex_);
    process_.swap(process);
  }

 private:
  mutable std::mutex mutex_;
  std::shared_ptr<ChildProcess> process_;
};
