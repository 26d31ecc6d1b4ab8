#include <QStorageInfo>
#include <optional>
#include <string>

#include <fcntl.h>
#include <fnmatch.h>

#include "SharedFiles/files/QVFileManager.h"
#include "SharedFiles/settings/PropertyList.h"
#include "SharedFiles/tasks/FileNameBytes.h"
#include "SharedFiles/tasks/QVTaskEx.h"
#include "system/FilePlace.h"

namespace {

bool matches(const std::string& name, const std::string& wildcard) {
  return ::fnmatch(wildcard.c_str(), name.c_str(), 0) == 0;
}

QVariantMap fromTool(const ToolCommand& command) {
  const auto output = QVTaskEx::dataFromTask(command.path, command.arguments, nullptr);
  return output ? PropertyList::fromBytes(*output).value_or(QVariant()).toMap() : QVariantMap();
}

}  // namespace

QVariantMap QVFileManager::infoForDisk(const QString& path, const FileServices& services) {
  const QString file = absolutePath(path);
  if (!fileExistsAtPath(file)) return {};
  const QStorageInfo volume(file);
  if (!volume.isValid()) return {};
  if (const auto command = services.tools.diskInformation(volume.rootPath())) return fromTool(*command);
  return {{"VolumeName", volume.displayName()},
          {"MountPoint", volume.rootPath()},
          {"DeviceNode", QString::fromUtf8(volume.device())},
          {"FilesystemType", QString::fromUtf8(volume.fileSystemType())},
          {"TotalSize", static_cast<qlonglong>(volume.bytesTotal())},
          {"FreeSpace", static_cast<qlonglong>(volume.bytesAvailable())},
          {"WritableVolume", !volume.isReadOnly()}};
}

bool QVFileManager::filenameMatchesWildcard(const QString& name, const QString& wildcard) {
  const auto nameBytes = bytesOfPath(name), wildcardBytes = bytesOfPath(wildcard);
  return nameBytes && wildcardBytes && matches(*nameBytes, *wildcardBytes);
}

QStringList QVFileManager::filesInFolder(const QString& folder, const QString& wildcard) {
  const auto folderBytes = bytesOfPath(folder), wildcardBytes = bytesOfPath(wildcard);
  if (!folderBytes || !wildcardBytes) return {};
  const sys::Descriptor opened(::open(folderBytes->c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  QStringList files;
  for (const std::string& name :
       sys::namesInFolder({opened.get(), *folderBytes}).value_or(std::vector<std::string>())) {
    const auto text = matches(name, *wildcardBytes) ? fileNameAsText(name) : std::nullopt;
    if (text) files << *text;
  }
  return files;
}
