#pragma once

#include <QDateTime>
#include <QString>
#include <QStringList>
#include <atomic>
#include <functional>
#include <iosfwd>
#include <memory>
#include <mutex>
#include <utility>

#include "SharedFiles/foundation/BundleInfo.h"
#include "SharedFiles/foundation/PathPlatform.h"
#include "SharedFiles/log/LogFolder.h"
#include "SharedFiles/log/LogFormat.h"
#include "SharedFiles/log/LogSink.h"
#include "system/Guarded.h"
#include "system/SerialQueue.h"

/// What the header of a log says about the machine.
struct LogSystemSummary {
  QString version;  ///< the operating system's version string
  long processorCount = 1;
  quint64 physicalMemory = 0;  ///< bytes
};

/// What a log is built on.
struct LogEnvironment {
  const PathPlatform& paths;  ///< folders and user id; outlives the log
  BundleInfo bundle;
  std::function<QDateTime()> now;
  std::function<bool()> isMainThread;
  std::function<LogSystemSummary()> system;
  std::ostream& output;                     ///< standard output; outlives the log
  std::shared_ptr<sys::SerialQueue> queue;  ///< shut down with the log

  /// The running program's.
  static LogEnvironment standard();
};

/// A text log: up to five generations of a file, each starting with a header that describes the machine, written entry
/// by entry on a serial queue. QVLog is the door to the process's own.
///
/// Every member may be called from any thread. Failures show on the standard output only, and not at all with
/// noPrinting. createNewLog calls do not exclude each other, nor an entry being written: they are for the start of a
/// program.
class LogController {
 public:
  /// Bytes after which the current generation ends.
  static constexpr quint32 sizeLimit = 500000;
  /// With this many entries left to write, the end of the program drops them.
  static constexpr std::size_t longBacklog = 11;

  explicit LogController(LogEnvironment environment);
  ~LogController();  ///< as willTerminate()
  LogController(const LogController&) = delete;
  LogController& operator=(const LogController&) = delete;

  /// Base name of the log files: the name set, else the bundle's executable without its extension, else nil.
  QString appName() const;
  void setAppName(const QString& name) { appName_.set(name); }
  /// The open current log file, or null.
  std::shared_ptr<LogSink> fileHandle() const { return fileHandle_.get(); }
  void setFileHandle(std::shared_ptr<LogSink> handle) { fileHandle_.set(std::move(handle)); }
  /// Bytes of entry lines since the current file was made.
  quint32 bytesWritten() const { return bytesWritten_; }
  void setBytesWritten(quint32 bytes) { bytesWritten_ = bytes; }
  std::shared_ptr<sys::SerialQueue> writeQueue() const { return writeQueue_.get(); }
  void setWriteQueue(std::shared_ptr<sys::SerialQueue> queue) { writeQueue_.set(std::move(queue)); }
  /// Characters of the entries not yet written: a hint, not exact.
  quint32 bytesInQueue() const { return bytesInQueue_; }
  void setBytesInQueue(quint32 bytes) { bytesInQueue_ = bytes; }
  /// Once set, every later operation returns at once.
  bool loggingDisabled() const { return loggingDisabled_; }
  void setLoggingDisabled(bool disabled) { loggingDisabled_ = disabled; }
  bool noPrinting() const { return noPrinting_; }
  void setNoPrinting(bool quiet) { noPrinting_ = quiet; }

  /// Sends every entry to one place instead of the log files: no rotation, no size limit, no look at the shared
  /// settings. Null goes back to the files.
  void setSink(std::shared_ptr<LogSink> sink) { sink_.set(std::move(sink)); }

  /// createNewLog
  /// createNewLog:
  /// createNewLog:noPrinting: starts a generation. A given name counts only where appName() is nil.
  void createNewLog(const QString& name = {}, bool noPrinting = false);

  /// appendLog: queues an entry. On any but the main thread a text of 1 to 99 characters, with fewer than 100 in the
  /// queue, waits until all is written. The format goes through escapeTextForLogging() first; a null one does nothing.
  void appendLog(const QString& format, LogArguments arguments = {});
  /// fastAppendLog: queues an entry and never waits.
  void fastAppendLog(const QString& format, LogArguments arguments = {});
  /// appendLogAndPrint: appendLog(), with the text on the standard output too.
  void appendLogAndPrint(const QString& format, LogArguments arguments = {});
  /// appendLogAndDebugPrint: appendLog() of the trimmed text; prints nothing.
  void appendLogAndDebugPrint(const QString& format, LogArguments arguments = {});

  /// Blocks until every entry is written; callers wait one after another. Returns at once on the write queue.
  void finishWriting();
  /// The user's log files that exist, newest first.
  QStringList availableLogs() const;
  /// escapeTextForLogging: doubles a per cent sign before one of " .!,-;:+", so that it stands for itself in a format.
  static QString escapeTextForLogging(const QString& text);

  /// willTerminate: writes what is queued, or drops a long backlog, and closes the log. Later entries are dropped.
  void willTerminate();

 private:
  void appendTextToLog(const QString& text);
  void appendLogOnThread(const QString& text);
  void writeEntry(const QString& text);
  std::shared_ptr<LogSink> openFileHandle();
  void endGenerationOnThread();
  void writeHeader();
  bool isDisabledBySettings() const;
  LogFolder folder() const { return {environment_.paths, appName()}; }
  static QString printableText(QString text);
  void print(const QString& text);

  const LogEnvironment environment_;
  std::mutex finishing_, printing_;
  sys::Guarded<QString> appName_;
  sys::Guarded<std::shared_ptr<LogSink>> fileHandle_, sink_;
  sys::Guarded<std::shared_ptr<sys::SerialQueue>> writeQueue_;
  std::atomic<quint32> bytesWritten_ = 0, bytesInQueue_ = 0;
  std::atomic<bool> loggingDisabled_ = false, noPrinting_ = false;
};
