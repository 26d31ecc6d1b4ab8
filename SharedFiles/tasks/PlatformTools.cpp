#include "SharedFiles/tasks/PlatformTools.h"

#include <QFile>
#include <algorithm>
#include <utility>

#include <sys/stat.h>

#include "SharedFiles/foundation/FilePackage.h"

namespace {

constexpr auto xattr = "/usr/bin/xattr";
constexpr auto diskutil = "/usr/sbin/diskutil";

/// Where a path's last name begins.
qsizetype nameStart(const QString& path) {
  return path.lastIndexOf('/') + 1;
}

bool isFolder(const QString& path) {
  struct stat status = {};
  return ::lstat(QFile::encodeName(path).constData(), &status) == 0 && S_ISDIR(status.st_mode);
}

}  // namespace

PlatformTools::PlatformTools(QString root) : root_(std::move(root)) {}

const PlatformTools& PlatformTools::standard() {
  static const PlatformTools tools;
  return tools;
}

bool PlatformTools::has(const char* path) const {
  return isExecutableFileAtPath(rooted(path));
}

ToolCommand PlatformTools::bsdtar(const char* locale, const QStringList& arguments) const {
  constexpr auto path = "/usr/bin/bsdtar";
  if (!has(path)) return {rooted(path), arguments};
  return {rooted("/usr/bin/env"), QStringList{QString("LC_ALL=") + locale, rooted(path)} + arguments};
}

ToolCommand PlatformTools::compress(const QString& source, const QString& archive, bool includeParent) const {
  if (has(ditto)) {
    QStringList arguments{"-ck"};
    if (includeParent) arguments << "--keepParent";
    return {rooted(ditto), arguments + QStringList{source, archive}};
  }
  // "./" keeps "@name" from being taken for an archive and, when it is unpacked, "c:name" for a drive and "back\\slash"
  // for two names. Where none of this is to be feared the entries do without: -s leaves alone what a link says.
  const bool entriesOnly = !includeParent && isFolder(source);
  const QString name = source.mid(nameStart(source));
  const QString folder = entriesOnly ? source : source.left(std::max<qsizetype>(nameStart(source) - 1, 1));
  QStringList arguments{"-c", "--format", "zip"};
  if (!entriesOnly && !name.contains(':') && !name.contains('\\'))
    arguments << "-s"
              << ",^\\./,,S";
  arguments << "-f" << archive << "-C" << folder << "--" << (entriesOnly ? "." : "./" + name);
  return bsdtar("C", arguments);  // in which the names in an archive are bytes, UTF-8 or not
}

ToolCommand PlatformTools::decompress(const QString& archive, const QString& folder) const {
  if (has(ditto)) return {rooted(ditto), {"-xk", archive, folder}};
  return bsdtar("C.UTF-8", {"-x", "-f", archive, "-C", folder});
}

std::optional<ToolCommand> PlatformTools::writeAttribute(const QString& name, const QString& value,
                                                         const QString& file) const {
  if (!has(xattr)) return std::nullopt;
  return ToolCommand{rooted(xattr), {"-w", name, value, file}};
}

std::optional<ToolCommand> PlatformTools::deleteAttribute(const QString& name, const QString& file) const {
  if (!has(xattr)) return std::nullopt;
  return ToolCommand{rooted(xattr), {"-d", name, file}};
}

std::optional<ToolCommand> PlatformTools::diskInformation(const QString& volume) const {
  if (!has(diskutil)) return std::nullopt;
  return ToolCommand{rooted(diskutil), {"info", "-plist", volume}};
}

ToolCommand PlatformTools::touch(const QString& file) const {
  return {rooted("/usr/bin/touch"), {file}};
}

ToolCommand PlatformTools::changeOwner(const QString& owner, const QString& file) const {
  constexpr auto settled = "/usr/sbin/chown";
  return {rooted(has(settled) ? settled : "/usr/bin/chown"), {owner, file}};
}

ToolCommand PlatformTools::networkInterfaces() const {
  constexpr auto settled = "/sbin/ifconfig";
  if (has(settled)) return {rooted(settled), {}};
  return {rooted("/usr/bin/ip"), {"address", "show"}};
}
