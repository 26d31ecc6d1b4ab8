#include "SharedFiles/files/QVFileManager.h"

#include <chrono>
#include <cmath>
#include <optional>
#include <thread>

#include <sys/stat.h>

#include "SharedFiles/files/FileDigest.h"
#include "SharedFiles/foundation/FilePackage.h"
#include "SharedFiles/log/QVLog.h"
#include "SharedFiles/tasks/FileNameBytes.h"
#include "system/FileTree.h"

namespace {

constexpr std::chrono::microseconds pollPause(500);

bool isTaken(const QString& path) {
  const auto bytes = bytesOfPath(path);
  return bytes && sys::standsAt(*bytes);
}

std::optional<struct stat> statusOf(const QString& path) {
  const auto bytes = bytesOfPath(path);
  struct stat status = {};
  if (!bytes || ::stat(bytes->c_str(), &status) != 0) return std::nullopt;
  return status;
}

/// Whether the file's modification date is at most 5 seconds off the time it is now.
bool wasJustModified(const QString& path) {
  constexpr double recent = 5;
  const auto status = statusOf(path);
  if (!status) return false;
  const std::chrono::duration<double> now = std::chrono::system_clock::now().time_since_epoch();
  const double modified =
      static_cast<double>(status->st_mtim.tv_sec) + static_cast<double>(status->st_mtim.tv_nsec) / 1e9;
  return std::abs(now.count() - modified) <= recent;
}

}  // namespace

QString QVFileManager::formatFileSize(double size) {
  constexpr double step = 0.0009765625, unit = 1024;
  if (size < unit) return QString::asprintf("%0.0f B", size);
  if (size < unit * unit) return QString::asprintf("%0.2f KB", size * step);
  if (size < unit * unit * unit) return QString::asprintf("%0.2f MB", size * step * step);
  if (size < unit * unit * unit * unit) return QString::asprintf("%0.2f GB", size * step * step * step);
  return QString::asprintf("%0.2f TB", size * step * step * step * step);
}

QString QVFileManager::uniqueFilename(const QString& path) {
  if (!isTaken(path)) return path;
  QString stem = path;
  while (stem.size() > 1 && stem.endsWith('/')) stem.chop(1);
  QString extension;
  const auto nameStart = stem.lastIndexOf('/') + 1, dot = stem.lastIndexOf('.');
  if (dot > nameStart && dot + 1 < stem.size()) {
    extension = stem.mid(dot);
    stem.truncate(dot);
  }
  for (long number = 2;; ++number) {
    QString candidate = QString("%1 %2%3").arg(stem, QString::number(number), extension);
    if (!isTaken(candidate)) return candidate;
  }
}

QString QVFileManager::validateFilename(const QString& name) {
  if (name == ".") return QLatin1String("");
  QString cleaned = (name.startsWith('.') ? name.mid(1) : name).trimmed();
  return cleaned.remove('/').remove(':');
}

bool QVFileManager::fileExistsAtPath(const QString& path) {
  const auto bytes = path.isEmpty() ? std::nullopt : bytesOfPath(path);
  return bytes && fileExists(QString::fromStdString(*bytes));
}

bool QVFileManager::copyFileWithProgress(const QString& source, const QStringList& destinations,
                                         unsigned int verificationType, const FileCopyDelegate& delegate,
                                         const QVariant& object, const QVariant& object2) {
  return copyFileToDestinations({.source = source,
                                 .destinations = destinations,
                                 .verificationType = verificationType,
                                 .delegate = delegate,
                                 .object = object,
                                 .object2 = object2});
}

bool QVFileManager::copyFileWithProgress(const QString& source, const QString& destination,
                                         const FileCopyDelegate& delegate, const QVariant& object,
                                         const QVariant& object2) {
  constexpr unsigned int unverified = 0;
  return copyFileWithProgress(source, QStringList{destination}, unverified, delegate, object, object2);
}

QString QVFileManager::md5HashForFile(const QString& path, const std::function<bool()>& delegate) {
  return digestOfFile(path, DigestAlgorithm::md5, delegate);
}

QString QVFileManager::sha1HashForFile(const QString& path, const std::function<bool()>& delegate) {
  return digestOfFile(path, DigestAlgorithm::sha1, delegate);
}

QString QVFileManager::sha512HashForFile(const QString& path, const std::function<bool()>& delegate) {
  return digestOfFile(path, DigestAlgorithm::sha512, delegate);
}

void QVFileManager::waitForFileWrites(const QString& path, const QString& lockFile) {
  if (!wasJustModified(path) && (lockFile.isEmpty() || !fileExistsAtPath(lockFile))) return;
  QVLog::appendLog("File %@ is currently being written to. Waiting...", path);
  while (wasJustModified(path)) std::this_thread::sleep_for(pollPause);
  QVLog::appendLog("File %@ finished writing.", path);
}

void QVFileManager::waitForFileCreation(const QString& path,
                                        double /*timeout: counts from the call, hence ends nothing*/) {
  const auto status = statusOf(path);
  if (status && status->st_size != 0) return;
  QVLog::appendLog("File %@ is not yet created. Waiting...", path);
  std::this_thread::sleep_for(pollPause);
}
