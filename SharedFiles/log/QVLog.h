#pragma once

#include <QString>
#include <QStringList>

#include "SharedFiles/log/LogController.h"
#include "SharedFiles/log/LogFormat.h"

/// The process's log. Formats may be a QString, UTF-8 bytes or a std::string; see formatLogArguments() for the
/// directives and LogController for what each operation does. Callable from any thread; nothing is opened or started
/// before the first entry.
class QVLog final {
 public:
  QVLog() = delete;

  /// The one log of the process. It is closed by an exit handler; the reason of an exception that nothing catches is
  /// written before the process dies. From the first call on the process ignores SIGPIPE: a standard output that nobody
  /// reads any longer ends nothing.
  static LogController& sharedController();

  /// createNewLog
  /// createNewLog:
  /// createNewLog:noPrinting:
  static void createNewLog(const QString& name = {}, bool noPrinting = false) {
    sharedController().createNewLog(name, noPrinting);
  }

  /// appendLog:
  template <typename Format, typename... Arguments>
  static void appendLog(const Format& format, const Arguments&... arguments) {
    append(&LogController::appendLog, format, arguments...);
  }
  /// fastAppendLog:
  template <typename Format, typename... Arguments>
  static void fastAppendLog(const Format& format, const Arguments&... arguments) {
    append(&LogController::fastAppendLog, format, arguments...);
  }
  /// appendLogAndPrint:
  template <typename Format, typename... Arguments>
  static void appendLogAndPrint(const Format& format, const Arguments&... arguments) {
    append(&LogController::appendLogAndPrint, format, arguments...);
  }
  /// appendLogAndDebugPrint:
  template <typename Format, typename... Arguments>
  static void appendLogAndDebugPrint(const Format& format, const Arguments&... arguments) {
    append(&LogController::appendLogAndDebugPrint, format, arguments...);
  }
  /// debugPrint: does nothing; an entry point that is kept.
  template <typename Format>
  static void debugPrint(const Format& /*format*/) {}

  static void finishWriting() { sharedController().finishWriting(); }
  static QStringList availableLogs() { return sharedController().availableLogs(); }
  /// escapeTextForLogging:
  static QString escapeTextForLogging(const QString& text) { return LogController::escapeTextForLogging(text); }
  /// willTerminate:
  static void willTerminate() { sharedController().willTerminate(); }

 private:
  template <typename Format, typename... Arguments>
  static void append(void (LogController::*operation)(const QString&, LogArguments), const Format& format,
                     const Arguments&... arguments) {
    LogController& log = sharedController();
    if (log.loggingDisabled()) return;
    (log.*operation)(LogArgument(format).text(), {LogArgument(arguments)...});
  }
};
