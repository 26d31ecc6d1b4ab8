#include <QCoreApplication>
#include <chrono>
#include <functional>
#include <thread>

#include "SharedFiles/files/QVFileManager.h"
#include "SharedFiles/foundation/MainThread.h"
#include "SharedFiles/tasks/FileNameBytes.h"
#include "system/FileTree.h"

namespace {

using Seconds = std::chrono::duration<double>;

bool isOccupied(const QString& path) {
  return sys::standsAt(absolutePath(path).toStdString());
}

void passTurn() {
  constexpr Seconds onMainThread(0.01), elsewhere(0.3);
  const bool main = MainThread::isCurrent();
  if (main) QCoreApplication::processEvents();
  std::this_thread::sleep_for(main ? onMainThread : elsewhere);
}

/// Waits for the effect of an operation; whether it showed within so many seconds.
bool showsWithin(double timeout, const std::function<bool()>& effect) {
  const auto start = std::chrono::steady_clock::now();
  while (!effect()) {
    const Seconds passed = std::chrono::steady_clock::now() - start;
    if (!(passed.count() < timeout)) return false;
    passTurn();
  }
  return true;
}

}  // namespace

bool QVFileManager::trashFile(const QString& path, double timeout, const FileServices& services) {
  return trashFile(path, services) && showsWithin(timeout, [&] { return !isOccupied(path); });
}

bool QVFileManager::removeFile(const QString& path, double timeout, const FileServices& services) {
  return removeFile(path, services) && showsWithin(timeout, [&] { return !isOccupied(path); });
}

bool QVFileManager::createDirectory(const QString& path, double timeout, const FileServices& services) {
  return createDirectory(path, services) &&
         showsWithin(timeout, [&] { return sys::isFolderAt(absolutePath(path).toStdString()); });
}

bool QVFileManager::copyFile(const QString& source, const QString& destination, double timeout,
                             const FileServices& services) {
  return copyFile(source, destination, services) && showsWithin(timeout, [&] { return isOccupied(destination); });
}

bool QVFileManager::moveFile(const QString& source, const QString& destination, double timeout,
                             const FileServices& services) {
  return moveFile(source, destination, services) &&
         showsWithin(timeout, [&] { return isOccupied(destination) && !isOccupied(source); });
}
