#pragma once

#include <QString>

#include "SharedFiles/log/LogFormat.h"

/// Writes one line to the system console, which is the process's standard error. Callable from any thread.
void writeToConsole(const QString& text);

/// The same for a format; see formatLogArguments() for the directives.
template <typename... Arguments>
void logToConsole(const char* format, const Arguments&... arguments) {
  writeToConsole(formatLog(QString::fromUtf8(format), arguments...));
}
