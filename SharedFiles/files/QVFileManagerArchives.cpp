#include <chrono>
#include <condition_variable>
#include <mutex>
#include <system_error>
#include <thread>

#include <unistd.h>

#include "SharedFiles/files/QVFileManager.h"
#include "SharedFiles/log/QVLog.h"
#include "SharedFiles/tasks/FileNameBytes.h"
#include "SharedFiles/tasks/QVTaskEx.h"
#include "system/FileTree.h"

namespace {

/// How long administrator rights may take to clear a place, in seconds.
constexpr double clearingTimeout = 10;

/// Ends the program in a slot when that is asked for: politely, again and again since it may be about to start, and
/// after a second or so by force.
class TaskStopper {
 public:
  TaskStopper(const ChildProcessSlot& task, const std::stop_token& stop) : task_(task) {
    if (!stop.stop_possible()) return;
    try {
      thread_ = std::thread([this, stop] { watch(stop); });
    } catch (const std::system_error& error) {
      QVLog::appendLog("No thread could be started: %@", QString::fromLocal8Bit(error.what()));
    }
  }
  ~TaskStopper() {
    {
      const std::lock_guard guard(mutex_);
      ended_ = true;
    }
    changed_.notify_all();
    if (thread_.joinable()) thread_.join();
  }
  TaskStopper(const TaskStopper&) = delete;
  TaskStopper& operator=(const TaskStopper&) = delete;

 private:
  void watch(const std::stop_token& stop) {
    constexpr int patience = 50;
    constexpr std::chrono::milliseconds turn(20);
    std::unique_lock lock(mutex_);
    changed_.wait(lock, stop, [this] { return ended_; });
    for (int turns = 0; !ended_; ++turns) {
      if (const auto process = task_.get()) turns < patience ? process->terminate() : process->kill();
      changed_.wait_for(lock, turn, [this] { return ended_; });
    }
  }

  const ChildProcessSlot& task_;
  std::mutex mutex_;
  std::condition_variable_any changed_;
  bool ended_ = false;
  std::thread thread_;
};

std::int32_t statusOf(const ToolCommand& command, const std::stop_token& stop = {}) {
  ChildProcessSlot task;
  const TaskStopper stopper(task, stop);
  return QVTaskEx::terminationCodeFromTask(command.path, command.arguments, &task);
}

/// A path that the archiver can be given; null, with a log line, when there is none.
QString archiverPath(const QString& path, const char* line) {
  if (path.isEmpty()) QVLog::appendLog(line);
  return absolutePath(path);
}

bool cleared(const QString& path, const FileServices& services) {
  if (QVFileManager::trashFile(path, clearingTimeout, services)) return true;
  QVLog::appendLog("Unable to move %@ to the trash. Nothing was written there.", path);
  return false;
}

}  // namespace

bool QVFileManager::compressFile(const QString& source, const QString& archive, const FileServices& services) {
  return compressFile(source, archive, true, services);
}

bool QVFileManager::compressFile(const QString& source, const QString& archive, bool includeParent,
                                 const FileServices& services, const std::stop_token& stop) {
  const QString from = archiverPath(source, "Error compressing file: source path is nil");
  const QString to = archiverPath(archive, "Error compressing file: destination path is nil");
  if (from.isNull() || to.isNull() || !cleared(to, services)) return false;
  if (stop.stop_requested()) return false;
  const std::int32_t status = statusOf(services.tools.compress(from, to, includeParent), stop);
  const bool stopped = status != 0 && stop.stop_requested();
  if (status != 0 && !stopped) {
    QVLog::appendLog("Error compressing file %@: the archiver ended with status %i", source, status);
  }
  if (stopped || (status != 0 && !services.tools.archivesWithDitto()))
    static_cast<void>(sys::removeTree(to.toStdString()));
  return fileExistsAtPath(to);
}

bool QVFileManager::decompressFile(const QString& archive, const QString& folder, const FileServices& services) {
  const QString from = archiverPath(archive, "Error decompressing file: source path is nil");
  const QString to = archiverPath(folder, "Error decompressing file: destination path is nil");
  if (from.isNull() || to.isNull() || !cleared(to, services)) return false;
  const bool made = !services.tools.archivesWithDitto() && sys::createFolders(to.toStdString());
  const std::int32_t status = statusOf(services.tools.decompress(from, to));
  if (status != 0) {
    QVLog::appendLog("Error decompressing file %@: the archiver ended with status %i", archive, status);
    if (made) ::rmdir(to.toStdString().c_str());  // unless something is in it
  }
  return fileExistsAtPath(to);
}
