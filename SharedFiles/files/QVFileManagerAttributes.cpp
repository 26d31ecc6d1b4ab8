#include <array>
#include <cerrno>
#include <string>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>

#include "SharedFiles/files/QVFileManager.h"
#include "SharedFiles/foundation/FilePackage.h"
#include "SharedFiles/tasks/FileNameBytes.h"
#include "SharedFiles/tasks/QVTaskEx.h"

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
