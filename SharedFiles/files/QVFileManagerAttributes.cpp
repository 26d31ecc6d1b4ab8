#include <QStorageInfo>
#include <array>
#include <optional>
#include <string>

#include <fcntl.h>
#include <fnmatch.h>
#include <sys/stat.h>
#include <sys/xattr.h>

#include "SharedFiles/files/QVFileManager.h"
#include "SharedFiles/settings/PropertyList.h"
#include "SharedFiles/tasks/FileNameBytes.h"
#include "SharedFiles/tasks/QVTaskEx.h"
#include "system/FilePlace.h"

namespace {

constexpr auto finderInfo = "user.com.apple.FinderInfo";
constexpr auto progress = "com.apple.progress.fractionCompleted";
constexpr auto creationDate = "user.creation-date";

/// What the attribute holds: a record of 32 bytes, here with the flags' low byte and where the label stands in it.
using FinderInfo = std::array<char, 32>;
constexpr std::size_t flagsLowByte = 9;
constexpr unsigned labelShift = 1, labelMask = 7;

std::optional<FinderInfo> finderInfoOf(const std::string& path) {
  FinderInfo info = {};
  if (::getxattr(path.c_str(), finderInfo, info.data(), info.size()) != static_cast<ssize_t>(info.size())) {
    return std::nullopt;
  }
  return info;
}

bool setAttribute(const std::string& path, const std::string& name, const std::string& value) {
  return ::setxattr(path.c_str(), name.c_str(), value.data(), value.size(), 0) == 0;
}

std::string userAttribute(const char* name) {
  std::string attribute = "user.";
  return attribute += name;
}

constexpr mode_t permissionBits = 07777, writeBits = S_IWUSR | S_IWGRP | S_IWOTH;

bool matches(const std::string& name, const std::string& wildcard) {
  return ::fnmatch(wildcard.c_str(), name.c_str(), 0) == 0;
}

QVariantMap fromTool(const ToolCommand& command) {
  const auto output = QVTaskEx::dataFromTask(command.path, command.arguments, nullptr);
  return output ? PropertyList::fromBytes(*output).value_or(QVariant()).toMap() : QVariantMap();
}

/// Whether the tool did it; false too where there is none.
bool ran(const std::optional<ToolCommand>& command) {
  return command && QVTaskEx::terminationCodeFromTask(command->path, command->arguments) == 0;
}

}  // namespace

int QVFileManager::colorLabelOfFile(const QString& path) {
  const auto bytes = bytesOfPath(path);
  const auto info = bytes ? finderInfoOf(*bytes) : std::nullopt;
  return info ? static_cast<int>((static_cast<unsigned char>((*info)[flagsLowByte]) >> labelShift) & labelMask) : 0;
}

bool QVFileManager::setColorLabel(int label, const QString& path) {
  const auto bytes = bytesOfPath(path);
  if (!bytes || label < 0 || label > static_cast<int>(labelMask)) return false;
  FinderInfo info = finderInfoOf(*bytes).value_or(FinderInfo{});
  const unsigned others = static_cast<unsigned char>(info[flagsLowByte]) & ~(labelMask << labelShift);
  info[flagsLowByte] = static_cast<char>(others | (static_cast<unsigned>(label) << labelShift));
  return setAttribute(*bytes, finderInfo, std::string(info.data(), info.size()));
}

bool QVFileManager::setCopyProgress(double fraction, const QString& path, const FileServices& services) {
  const QString file = absolutePath(path);
  if (file.isNull()) return false;
  const QString value = QString::asprintf("%0.3f", fraction);
  return ran(services.tools.writeAttribute(progress, value, file)) ||
         setAttribute(file.toStdString(), userAttribute(progress), value.toStdString());
}

bool QVFileManager::removeCopyProgress(const QString& path, const FileServices& services) {
  const QString file = absolutePath(path);
  if (file.isNull()) return false;
  return ran(services.tools.deleteAttribute(progress, file)) ||
         ::removexattr(file.toStdString().c_str(), userAttribute(progress).c_str()) == 0;
}

bool QVFileManager::touchFileForCopying(const QString& path, const FileServices& services) {
  const QString file = absolutePath(path);
  return !file.isNull() && ran(services.tools.touch(file)) &&
         setAttribute(file.toStdString(), creationDate, "1984-01-24 08:00:00 +0000");
}

QDateTime QVFileManager::creationDateOfFile(const QString& path) {
  const auto bytes = bytesOfPath(path);
  if (!bytes) return {};
  std::array<char, 32> text = {};
  const ssize_t length = ::getxattr(bytes->c_str(), creationDate, text.data(), text.size());
  if (length > 0) {
    const QString date = QString::fromLatin1(text.data(), length);
    return QDateTime::fromString(date.left(10) + 'T' + date.mid(11, 8) + date.mid(20), Qt::ISODate).toUTC();
  }
  struct statx status = {};
  if (::statx(AT_FDCWD, bytes->c_str(), 0, STATX_BTIME, &status) != 0 || (status.stx_mask & STATX_BTIME) == 0)
    return {};
  constexpr int perMillisecond = 1000000;
  return QDateTime::fromMSecsSinceEpoch(status.stx_btime.tv_sec * 1000 + status.stx_btime.tv_nsec / perMillisecond,
                                        Qt::UTC);
}

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

bool QVFileManager::lockFile(const QString& path) {
  const auto permissions = permissionsOfFile(path);
  return permissions && setPermissions(*permissions & ~writeBits, path);
}

bool QVFileManager::unlockFile(const QString& path) {
  const auto permissions = permissionsOfFile(path);
  if (!permissions) return false;
  return (*permissions & S_IWUSR) != 0 || setPermissions(*permissions | S_IWUSR, path);
}

bool QVFileManager::isFileLocked(const QString& path) {
  const auto permissions = permissionsOfFile(path);
  return permissions && (*permissions & writeBits) == 0;
}

std::optional<mode_t> QVFileManager::permissionsOfFile(const QString& path) {
  const auto bytes = bytesOfPath(path);
  struct stat status = {};
  if (!bytes || ::stat(bytes->c_str(), &status) != 0) return std::nullopt;
  return status.st_mode & permissionBits;
}

bool QVFileManager::setPermissions(mode_t permissions, const QString& path) {
  const auto bytes = bytesOfPath(path);
  return bytes && ::chmod(bytes->c_str(), permissions & permissionBits) == 0;
}

bool QVFileManager::setOwner(const QString& owner, const QString& path, const FileServices& services) {
  const QString file = absolutePath(path);
  if (file.isNull() || owner.isEmpty()) return false;
  const ToolCommand command = services.tools.changeOwner(owner, file);
  return ran(ToolCommand{command.path, QStringList{"-h", "--"} + command.arguments});
}

bool QVFileManager::filenameMatchesWildcard(const QString& name, const QString& wildcard) {
  const auto nameBytes = bytesOfPath(name), wildcardBytes = bytesOfPath(wildcard);
  return nameBytes && wildcardBytes && matches(*nameBytes, *wildcardBytes);
}

QStringList QVFileManager::filesInFolder(const QString& folder, const QString& wildcard) {
  const auto folderBytes = bytesOfPath(folder), wildcardBytes = bytesOfPath(wildcard);
  if (!folderBytes || !wildcardBytes) return {};
  QStringList files;
  for (const std::string& name : sys::namesInFolderAt(*folderBytes).value_or(std::vector<std::string>())) {
    const auto text = matches(name, *wildcardBytes) ? fileNameAsText(name) : std::nullopt;
    if (text) files << *text;
  }
  return files;
}
