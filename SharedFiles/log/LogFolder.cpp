#include "SharedFiles/log/LogFolder.h"

#include <QDir>
#include <QFile>
#include <cstring>
#include <utility>

#include "SharedFiles/foundation/QVLocalPaths.h"
#include "SharedFiles/log/LogFormat.h"
#include "system/FileTree.h"
#include "system/ReplacementFile.h"

LogFolder::LogFolder(const PathPlatform& platform, QString name)
    : platform_(platform),
      name_(std::move(name)),
      path_(QVLocalPaths::libraryDirectory(true, platform) + QStringLiteral("/Logs/Quorvane")) {}

QString LogFolder::generation(int number) const {
  return path_ + formatLog("/%@.%li.log", name_, number);
}

QString LogFolder::currentFile() const {
  if (platform_.realUserId() != 0) return path_ + formatLog("/%@.1.log", name_);
  const QString library = QVLocalPaths::libraryDirectory(false, platform_);
  return library.isNull() ? library : library + formatLog("/Logs/Quorvane/%@.1.log", name_);
}

QStringList LogFolder::availableLogs() const {
  QStringList logs;
  for (int number = 1; number <= generations; ++number) {
    const QString log = formatLog("%@/%@.%li.log", path_, name_, number);
    if (QFile::exists(log)) logs << log;
  }
  return logs;
}

std::optional<QString> LogFolder::startGeneration() const {
  if (!QFile::exists(path_) && !QDir().mkpath(path_)) return formatLog("Unable to create folder %s.\n", path_);
  const QString current = currentFile();
  if (QFile::exists(current)) {
    if (std::optional<QString> failure = rotate()) return failure;
  }
  const auto made = sys::writeWhole(QFile::encodeName(current).toStdString(), {});
  if (made) return std::nullopt;
  return formatLog("Unable to create log file %s - %s\n", current, std::strerror(made.error().code));
}

std::optional<QString> LogFolder::rotate() const {
  const QString oldest = path_ + formatLog("/%@.5.log", name_);
  static_cast<void>(sys::removeTree(QFile::encodeName(oldest).toStdString()));
  for (int number = generations - 1; number >= 1; --number) {
    const QString from = generation(number);
    const QString to = generation(number + 1);
    if (QFile::exists(from) && !QFile::rename(from, to)) {
      return formatLog("Unable to move file %s to %s.\n", from, to);
    }
  }
  return std::nullopt;
}
