#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>
#include <QStringList>
#include <csignal>
#include <cstdint>
#include <memory>
#include <optional>
#include <utility>

#include "system/Descriptor.h"
#include "system/Guarded.h"

/// What a standard stream of a child process is joined to.
enum class StandardStream { inherited, nullDevice, pipe };

/// A program and how it is called.
struct ProgramCall {
  QString path;
  QStringList arguments = {};
  std::optional<QMap<QString, QString>> environment = {};  ///< none: this process's own
  StandardStream input = StandardStream::inherited;
  StandardStream output = StandardStream::inherited;
  StandardStream error = StandardStream::inherited;
};

/// An external program: described, launched once, and then watched by a thread that collects its end, so that it never
/// stays behind as a zombie whether anybody waits for it or not. It outlives this object: destruction closes the pipes
/// and nothing else. The program gets the standard streams and no other descriptor, and the default signal handling.
///
/// Launched by one thread. isRunning, terminate, kill, waitUntilExit and terminationStatus may be called from any.
class ChildProcess {
 public:
  explicit ChildProcess(ProgramCall call);
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  const QString& launchPath() const { return call_.path; }

  /// Starts the program. Throws QVPlatformException when it cannot be started or when a text of the description cannot
  /// be handed over unaltered (a null character, half of a surrogate pair).
  void launch();

  bool isRunning() const;
  void terminate() const { send(SIGTERM); }  ///< politely; nothing when it is not running
  void kill() const { send(SIGKILL); }       ///< by force; the same
  void waitUntilExit() const;                ///< returns at once when it was never launched
  /// The exit status, or the number of the signal that ended it; 0 while it runs.
  std::int32_t terminationStatus() const;

  /// This process's ends of the pipes that were asked for, from the launch on. What the program reads from its standard
  /// input ends when `standardInput` is closed.
  sys::Descriptor standardInput, standardOutput, standardError;

 private:
  struct State;

  void send(int signal) const;

  const ProgramCall call_;
  const std::shared_ptr<State> state_;
};

/// A place for a child process that several threads read and write.
using ChildProcessSlot = sys::Guarded<std::shared_ptr<ChildProcess>>;

/// What a program wrote.
struct TaskOutput {
  QByteArray output = QByteArray("", 0);  ///< present even when empty
  QByteArray errors = QByteArray("", 0);
};

/// Reads the pipes that a launched process has, to the end of both. Errors are set aside while output is read, so that
/// a program is never held up by either. Throws QVPlatformException when a pipe cannot be read. Blocks.
TaskOutput readToEnd(ChildProcess& process);

/// The next chunk of the process's output; empty at its end, or once `wake` (a descriptor, or -1) is readable. Throws
/// and blocks as readToEnd.
QByteArray readChunk(const sys::Descriptor& output, int wake);

/// Whether a read would return at once.
bool isReadable(const sys::Descriptor& descriptor);
