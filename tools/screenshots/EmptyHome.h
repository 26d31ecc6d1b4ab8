#pragma once

#include <QTemporaryDir>
#include <QtGlobal>

#include "SharedFiles/log/QVLog.h"

/// What a window is tried in that nobody sees: a home of its own without a log, gone with this object, and no screen
/// unless one is asked for. Made before QApplication.
class EmptyHome {
 public:
  EmptyHome() {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("HOME", home_.path().toUtf8());
    for (const char* variable : {"XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_CONFIG_HOME"}) qunsetenv(variable);
    QVLog::sharedController().setLoggingDisabled(true);
  }

 private:
  QTemporaryDir home_;
};
