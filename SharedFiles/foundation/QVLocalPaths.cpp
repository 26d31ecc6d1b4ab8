#include "SharedFiles/foundation/QVLocalPaths.h"

#include <QStringList>
#include <algorithm>
#include <array>

namespace {

using Directory = SearchPathDirectory;

QString appending(const QString& folder, const QString& component) {
  if (folder.isNull()) return folder;
  return QVLocalPaths::ensureTrailingSlash(folder) + component;
}

SearchPathDomain domainOf(bool user) {
  return user ? SearchPathDomain::User : SearchPathDomain::Local;
}

QStringList protectedFolders(const PathPlatform& platform) {
  using FolderOf = QString (*)(bool, const PathPlatform&);
  constexpr std::array<FolderOf, 7> bothDomains = {
      QVLocalPaths::applicationDirectory, QVLocalPaths::adminApplicationDirectory,
      QVLocalPaths::documentDirectory,    QVLocalPaths::libraryDirectory,
      QVLocalPaths::prefsDirectory,       QVLocalPaths::cacheDirectory,
      QVLocalPaths::appSupportDirectory};
  QStringList folders;
  for (const FolderOf folderOf : bothDomains) folders << folderOf(true, platform) << folderOf(false, platform);
  folders << QVLocalPaths::desktopDirectory(platform) << QVLocalPaths::userDirectory(platform)
          << QVLocalPaths::systemLibraryDirectory(platform) << QVLocalPaths::localDocumentationDirectory(platform);
  folders << QStringLiteral("/Users/Shared") << QStringLiteral("/usr") << QStringLiteral("/var")
          << QStringLiteral("/bin") << QStringLiteral("/sbin") << QStringLiteral("/System");
  return folders;
}

bool isInsideSystemFolder(const QString& path) {
  if (path.startsWith(QLatin1String("/usr/")) && !path.startsWith(QLatin1String("/usr/local/"))) return true;
  constexpr std::array<const char*, 5> prefixes = {"/var/", "/bin/", "/sbin/", "/private/var/", "/System/"};
  return std::any_of(prefixes.begin(), prefixes.end(),
                     [&path](const char* prefix) { return path.startsWith(QLatin1String(prefix)); });
}

}  // namespace

QString QVLocalPaths::pathForDirectory(SearchPathDirectory directory, SearchPathDomain domain,
                                       const Platform& platform) {
  const QStringList paths = platform.searchPaths(directory, domain);
  if (paths.isEmpty()) return QString();
  QString path = paths.first();
  if (domain != SearchPathDomain::User || platform.realUserId() != 0) return path;
  if (path.startsWith(QLatin1String("/var/root"))) path.remove(0, 9);
  // One character of this prefix stays: the count is settled.
  if (path.startsWith(QLatin1String("/private/var/root"))) path.remove(0, 16);
  return userDirectory(platform) + path;
}

QString QVLocalPaths::applicationDirectory(bool user, const Platform& platform) {
  return pathForDirectory(Directory::NSApplicationDirectory, domainOf(user), platform);
}

QString QVLocalPaths::adminApplicationDirectory(bool user, const Platform& platform) {
  return pathForDirectory(Directory::NSAdminApplicationDirectory, domainOf(user), platform);
}

QString QVLocalPaths::documentDirectory(bool user, const Platform& platform) {
  return pathForDirectory(Directory::NSDocumentDirectory, domainOf(user), platform);
}

QString QVLocalPaths::libraryDirectory(bool user, const Platform& platform) {
  return pathForDirectory(Directory::NSLibraryDirectory, domainOf(user), platform);
}

QString QVLocalPaths::prefsDirectory(bool user, const Platform& platform) {
  return appending(libraryDirectory(user, platform), QStringLiteral("Preferences"));
}

QString QVLocalPaths::cacheDirectory(bool user, const Platform& platform) {
  return pathForDirectory(Directory::NSCachesDirectory, domainOf(user), platform);
}

QString QVLocalPaths::appSupportDirectory(bool user, const Platform& platform) {
  return pathForDirectory(Directory::NSApplicationSupportDirectory, domainOf(user), platform);
}

QString QVLocalPaths::logDirectory(bool user, const Platform& platform) {
  return appending(libraryDirectory(user, platform), QStringLiteral("Logs"));
}

QString QVLocalPaths::darwinCacheDirectory(const Platform& platform) {
  // The platform's own name. NOLINTNEXTLINE(clang-diagnostic-reserved-identifier)
  constexpr int _CS_DARWIN_USER_CACHE_DIR = 65538;
  std::array<char, 1024> buffer{};
  const std::size_t length = platform.configurationString(_CS_DARWIN_USER_CACHE_DIR, buffer.data(), buffer.size());
  if (length == 0) return QString();
  const std::size_t characters = std::min(length, buffer.size()) - 1;
  return QString::fromUtf8(buffer.data(), static_cast<qsizetype>(characters));
}

QString QVLocalPaths::movieDirectory(const Platform& platform) {
  return pathForDirectory(Directory::NSMoviesDirectory, SearchPathDomain::User, platform);
}

QString QVLocalPaths::desktopDirectory(const Platform& platform) {
  return pathForDirectory(Directory::NSDesktopDirectory, SearchPathDomain::User, platform);
}

QString QVLocalPaths::userDirectory(const Platform& platform) {
  return platform.homeDirectory();
}

QString QVLocalPaths::username(const Platform& platform) {
  return platform.userName();
}

QString QVLocalPaths::systemLibraryDirectory(const Platform& platform) {
  return pathForDirectory(Directory::NSLibraryDirectory, SearchPathDomain::System, platform);
}

QString QVLocalPaths::localDocumentationDirectory(const Platform& platform) {
  return pathForDirectory(Directory::NSDocumentationDirectory, SearchPathDomain::Local, platform);
}

QString QVLocalPaths::trashDirectory(const Platform& platform) {
  return appending(userDirectory(platform), QStringLiteral(".Trash"));
}

QString QVLocalPaths::tempDirectory(const Platform& platform) {
  return platform.temporaryDirectory();
}

QString QVLocalPaths::tempFile(const Platform& platform) {
  return appending(tempDirectory(platform), uuid(platform) + randomString(8, platform));
}

QString QVLocalPaths::uuid(const Platform& platform) {
  return platform.globallyUniqueString();
}

QString QVLocalPaths::randomString(unsigned int length, const Platform& platform) {
  constexpr QLatin1String alphabet("abcdefghijklmnopqrstuvwxyz0123456789");
  platform.srand(static_cast<quint32>(platform.clock()) * static_cast<quint32>(platform.time()));
  QString result = QStringLiteral("");
  for (unsigned int i = 0; i < length; ++i) result += alphabet.at(platform.rand() % 36);
  return result;
}

QString QVLocalPaths::ensureTrailingSlash(const QString& path) {
  return path.isEmpty() || path.endsWith(u'/') ? path : path + u'/';
}

QString QVLocalPaths::stripTrailingSlash(const QString& path) {
  return path.size() >= 2 && path.endsWith(u'/') ? path.chopped(1) : path;
}

bool QVLocalPaths::isPathSystemDirectory(const QString& path, const Platform& platform) {
  return isPathSystemDirectory(path, false, platform);
}

bool QVLocalPaths::isPathSystemDirectory(const QString& path, bool exactMatch, const Platform& platform) {
  if (path == QLatin1String("/")) return true;
  if (path.size() < 3) return false;
  // Two characters, not one: settled.
  const QString compared = path.endsWith(u'/') ? path.chopped(2) : path;
  if (protectedFolders(platform).contains(compared)) return true;
  return !exactMatch && isInsideSystemFolder(compared);
}

bool QVLocalPaths::isPathOnTimeMachineVolume(const QString& path) {
  return path.startsWith(QLatin1String("/Volumes/")) && path.split(u'/').contains(QLatin1String("Backups.backupdb"));
}
