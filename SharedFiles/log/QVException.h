#pragma once

#include <QString>

#include "SharedFiles/foundation/QVPlatformException.h"
#include "SharedFiles/log/LogController.h"
#include "SharedFiles/log/QVLog.h"

/// Turns a caught exception into a log entry. Stateless.
class QVException final {
 public:
  QVException() = delete;

  /// logException:forMethod: logs and prints the method, the exception's name and its reason; returns the text.
  static QString logException(const QVPlatformException& exception, const char* method,
                              LogController& log = QVLog::sharedController());
  /// didTimeout: whether the exception is that of a connection that timed out.
  static bool didTimeout(const QVPlatformException& exception);
};
