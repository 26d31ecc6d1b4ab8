#include <unistd.h>

#include "SharedFiles/FileNameBytes.h"
#include "SharedFiles/FileTree.h"
#include "SharedFiles/QVFileManager.h"
#include "SharedFiles/QVLog.h"
#include "SharedFiles/QVTaskEx.h"

namespace {

/// How long administrator rights may take to clear a place, in seconds.
constexpr double clearingTimeout = 10;

std::int32_t statusOf(const ToolCommand& command) {
  return QVTaskEx::terminationCodeFromTask(command.path, command.arguments);
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
                                 const FileServices& services) {
  const QString from = archiverPath(source, "Error compressing file: source path is nil");
  const QString to = archiverPath(archive, "Error compressing file: destination path is nil");
  if (from.isNull() || to.isNull() || !cleared(to, services)) return false;
  const std::int32_t status = statusOf(services.tools.compress(from, to, includeParent));
  if (status != 0) {
    QVLog::appendLog("Error compressing file %@: the archiver ended with status %i", source, status);
    if (!services.tools.archivesWithDitto()) static_cast<void>(removeTree(to.toStdString()));
  }
  return fileExistsAtPath(to);
}

bool QVFileManager::decompressFile(const QString& archive, const QString& folder, const FileServices& services) {
  const QString from = archiverPath(archive, "Error decompressing file: source path is nil");
  const QString to = archiverPath(folder, "Error decompressing file: destination path is nil");
  if (from.isNull() || to.isNull() || !cleared(to, services)) return false;
  const bool made = !services.tools.archivesWithDitto() && createFolders(to.toStdString());
  const std::int32_t status = statusOf(services.tools.decompress(from, to));
  if (status != 0) {
    QVLog::appendLog("Error decompressing file %@: the archiver ended with status %i", archive, status);
    if (made) ::rmdir(to.toStdString().c_str());  // unless something is in it
  }
  return fileExistsAtPath(to);
}
