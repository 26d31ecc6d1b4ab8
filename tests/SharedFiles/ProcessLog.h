#pragma once

#include <QDir>
#include <QFile>
#include <QStringList>
#include <QTemporaryDir>
#include <iostream>
#include <sstream>

#include "SharedFiles/log/LogFolder.h"
#include "SharedFiles/log/QVLog.h"
#include "tests/SharedFiles/EnvironmentGuard.h"

/// The process's own log, in a home folder of its own, with what it prints.
class ProcessLog {
 public:
  ProcessLog() {
    environment_.set("HOME", QFile::encodeName(home()));
    for (const char* variable : {"XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_CONFIG_HOME"}) environment_.clear(variable);
    QDir().mkpath(QFileInfo(folder().currentFile()).path());
    before_ = std::cout.rdbuf(printed_.rdbuf());
    QVLog::createNewLog();
    QVLog::finishWriting();
    header_ = read();
    printed_.str("");
  }
  ~ProcessLog() {
    QVLog::finishWriting();
    std::cout.rdbuf(before_);
  }
  ProcessLog(const ProcessLog&) = delete;
  ProcessLog& operator=(const ProcessLog&) = delete;

  QString home() const { return home_.path(); }

  /// The texts logged since the start, without their dates.
  QStringList entries() const {
    QVLog::finishWriting();
    QStringList texts;
    for (const QByteArray& line : read().mid(header_.size()).split('\n')) {
      if (!line.isEmpty()) texts.append(QString::fromUtf8(line.mid(line.indexOf(" - ") + 3)));
    }
    return texts;
  }
  QString printed() const { return QString::fromStdString(printed_.str()); }

 private:
  static LogFolder folder() { return {PathPlatform::standard(), QVLog::sharedController().appName()}; }
  static QByteArray read() {
    QFile file(folder().currentFile());
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
  }

  QTemporaryDir home_;
  EnvironmentGuard environment_;
  std::ostringstream printed_;
  std::streambuf* before_ = nullptr;
  QByteArray header_;
};
