#include "SharedFiles/foundation/PathPlatform.h"

#include <QDir>
#include <QStandardPaths>
#include <QUuid>
#include <atomic>
#include <memory>
#include <vector>

#include <pwd.h>

namespace {

/// An environment variable that holds an absolute path, or nil.
QString absolutePathFromEnvironment(const char* variable) {
  const QString path = QFile::decodeName(qgetenv(variable));
  return path.startsWith(u'/') ? QDir::cleanPath(path) : QString();
}

struct Account {
  QString name, home;
};

/// The user's row of the password database; nil members where there is none.
Account accountOf(uid_t userId) {
  constexpr std::size_t enoughForOneEntry = 16384;
  std::vector<char> buffer(enoughForOneEntry);
  passwd entry{};
  passwd* found = nullptr;
  if (getpwuid_r(userId, &entry, buffer.data(), buffer.size(), &found) != 0 || !found) return {};
  return {QString::fromLocal8Bit(found->pw_name), QFile::decodeName(found->pw_dir)};
}

QString below(const QString& folder, const char* rest) {
  return (folder.endsWith(u'/') ? folder : folder + u'/') + QLatin1String(rest);
}

QString xdgFolder(const char* variable, const QString& home, const char* rest) {
  const QString path = absolutePathFromEnvironment(variable);
  return path.isNull() ? below(home, rest) : path;
}

/// One of the desktop's user folders. Qt takes the root folder for the home folder where HOME is not set.
QString desktopUsersFolder(QStandardPaths::StandardLocation location, const QString& home) {
  const QString path = QStandardPaths::writableLocation(location);
  return QDir::cleanPath(absolutePathFromEnvironment("HOME").isNull() ? home + u'/' + path : path);
}

/// What the superuser's look-up gives for a folder below the home folder.
QString asSeenByRoot(const QString& path, const QString& home) {
  const bool inside = path == home || path.startsWith(home.endsWith(u'/') ? home : home + u'/');
  return inside ? QStringLiteral("/var/root") + path.mid(home.size()) : path;
}

}  // namespace

const PathPlatform& PathPlatform::standard() {
  // Never destroyed: the log still asks it while the process exits.
  static const PathPlatform* const platform =
      std::make_unique<LinuxPathPlatform>(getuid(), BundleInfo::mainBundle()).release();
  return *platform;
}

LinuxPathPlatform::LinuxPathPlatform(uid_t realUserId, const BundleInfo& bundle)
    : realUserId_(realUserId), bundle_(bundle) {}

QStringList LinuxPathPlatform::searchPaths(SearchPathDirectory directory, SearchPathDomain domain) const {
  QString path;
  if (domain == SearchPathDomain::User) {
    path = userFolder(directory);
    if (realUserId_ == 0 && !path.isNull()) path = asSeenByRoot(path, homeDirectory());
  } else if (domain == SearchPathDomain::Local) {
    path = localFolder(directory);
  } else if (directory == SearchPathDirectory::NSLibraryDirectory) {
    path = QStringLiteral("/usr/lib");
  }
  return path.isNull() ? QStringList() : QStringList(path);
}

QString LinuxPathPlatform::userFolder(SearchPathDirectory directory) const {
  const QString home = homeDirectory();
  const auto library = [&home] { return below(xdgFolder("XDG_DATA_HOME", home, ".local/share"), "quorvane"); };
  switch (directory) {
    case SearchPathDirectory::NSApplicationDirectory:
      return below(home, "Applications");
    case SearchPathDirectory::NSAdminApplicationDirectory:
      return below(home, "Applications/Utilities");
    case SearchPathDirectory::NSLibraryDirectory:
      return library();
    case SearchPathDirectory::NSApplicationSupportDirectory:
      return below(library(), "Application Support");
    case SearchPathDirectory::NSCachesDirectory:
      return xdgFolder("XDG_CACHE_HOME", home, ".cache");
    case SearchPathDirectory::NSDocumentDirectory:
      return desktopUsersFolder(QStandardPaths::DocumentsLocation, home);
    case SearchPathDirectory::NSDesktopDirectory:
      return desktopUsersFolder(QStandardPaths::DesktopLocation, home);
    case SearchPathDirectory::NSMoviesDirectory:
      return desktopUsersFolder(QStandardPaths::MoviesLocation, home);
    default:
      return QString();
  }
}

QString LinuxPathPlatform::localFolder(SearchPathDirectory directory) const {
  const auto library = [this] {
    const QString folder = bundle_.executableFolder();
    return folder.isEmpty() ? QString() : QDir::cleanPath(below(folder, "../share/quorvane"));
  };
  switch (directory) {
    case SearchPathDirectory::NSApplicationDirectory:
      return QStringLiteral("/opt");
    case SearchPathDirectory::NSAdminApplicationDirectory:
      return QStringLiteral("/opt/Utilities");
    case SearchPathDirectory::NSLibraryDirectory:
      return library();
    case SearchPathDirectory::NSApplicationSupportDirectory: {
      const QString folder = library();
      return folder.isNull() ? folder : below(folder, "Application Support");
    }
    case SearchPathDirectory::NSCachesDirectory:
      return QStringLiteral("/var/cache");
    case SearchPathDirectory::NSDocumentationDirectory:
      return QStringLiteral("/usr/share/doc");
    default:
      return QString();
  }
}

QString LinuxPathPlatform::homeDirectory() const {
  QString home = absolutePathFromEnvironment("HOME");
  if (!home.isNull()) return home;
  const QString account = accountOf(realUserId_).home;
  return account.startsWith(u'/') ? QDir::cleanPath(account) : QStringLiteral("/");
}

QString LinuxPathPlatform::userName() const {
  const QString name = accountOf(realUserId_).name;
  return name.isEmpty() ? QString::fromLocal8Bit(qgetenv("LOGNAME")) : name;
}

QString LinuxPathPlatform::temporaryDirectory() const {
  const QString folder = absolutePathFromEnvironment("TMPDIR");
  return folder.isNull() ? QStringLiteral("/tmp") : folder;
}

QString PathPlatform::globallyUniqueString() const {
  static std::atomic<unsigned int> made = 0;
  return QStringLiteral("%1-%2-%3")
      .arg(QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper())
      .arg(getpid())
      .arg(++made);
}
