#pragma once

#include <QString>

#include "SharedFiles/foundation/PathPlatform.h"

/// Where the standard folders lie, names for temporary files, and which paths must never be deleted, moved or
/// overwritten. Stateless; callable from any thread. A path is absolute and without a trailing slash unless stated; a
/// null QString stands for a folder that does not exist on this platform, and a path built on it is null too. `user`
/// chooses between the home folder's copy of a folder and the machine-wide one.
class QVLocalPaths final {
 public:
  QVLocalPaths() = delete;

  using Platform = PathPlatform;

  /// pathForDirectory:forUserDomain: the first folder that the look-up gives. For the superuser in the user's domain it
  /// is rewritten: a leading "/var/root" loses 9 characters, then a leading "/private/var/root" 16 (one fewer than it
  /// has), and the home folder goes before the rest.
  static QString pathForDirectory(SearchPathDirectory directory, SearchPathDomain domain,
                                  const Platform& platform = Platform::standard());

  /// applicationDirectory:
  static QString applicationDirectory(bool user, const Platform& platform = Platform::standard()) {
    return pathForDirectory(SearchPathDirectory::NSApplicationDirectory, domainOf(user), platform);
  }
  /// adminApplicationDirectory:
  static QString adminApplicationDirectory(bool user, const Platform& platform = Platform::standard()) {
    return pathForDirectory(SearchPathDirectory::NSAdminApplicationDirectory, domainOf(user), platform);
  }
  /// documentDirectory:
  static QString documentDirectory(bool user, const Platform& platform = Platform::standard()) {
    return pathForDirectory(SearchPathDirectory::NSDocumentDirectory, domainOf(user), platform);
  }
  /// libraryDirectory:
  static QString libraryDirectory(bool user, const Platform& platform = Platform::standard()) {
    return pathForDirectory(SearchPathDirectory::NSLibraryDirectory, domainOf(user), platform);
  }
  /// prefsDirectory: the Library's "Preferences".
  static QString prefsDirectory(bool user, const Platform& platform = Platform::standard()) {
    return appending(libraryDirectory(user, platform), "Preferences");
  }
  /// cacheDirectory:
  static QString cacheDirectory(bool user, const Platform& platform = Platform::standard()) {
    return pathForDirectory(SearchPathDirectory::NSCachesDirectory, domainOf(user), platform);
  }
  /// appSupportDirectory:
  static QString appSupportDirectory(bool user, const Platform& platform = Platform::standard()) {
    return pathForDirectory(SearchPathDirectory::NSApplicationSupportDirectory, domainOf(user), platform);
  }
  /// logDirectory: the Library's "Logs".
  static QString logDirectory(bool user, const Platform& platform = Platform::standard()) {
    return appending(libraryDirectory(user, platform), "Logs");
  }
  /// The per-user cache folder of the system's configuration strings, with the trailing slash it may have; nil where
  /// the system has no such string.
  static QString darwinCacheDirectory(const Platform& platform = Platform::standard());
  static QString movieDirectory(const Platform& platform = Platform::standard()) {
    return pathForDirectory(SearchPathDirectory::NSMoviesDirectory, SearchPathDomain::User, platform);
  }
  static QString desktopDirectory(const Platform& platform = Platform::standard()) {
    return pathForDirectory(SearchPathDirectory::NSDesktopDirectory, SearchPathDomain::User, platform);
  }
  static QString userDirectory(const Platform& platform = Platform::standard()) { return platform.homeDirectory(); }
  static QString username(const Platform& platform = Platform::standard()) { return platform.userName(); }
  static QString systemLibraryDirectory(const Platform& platform = Platform::standard()) {
    return pathForDirectory(SearchPathDirectory::NSLibraryDirectory, SearchPathDomain::System, platform);
  }
  static QString localDocumentationDirectory(const Platform& platform = Platform::standard()) {
    return pathForDirectory(SearchPathDirectory::NSDocumentationDirectory, SearchPathDomain::Local, platform);
  }
  static QString trashDirectory(const Platform& platform = Platform::standard()) {
    return appending(userDirectory(platform), ".Trash");
  }
  static QString tempDirectory(const Platform& platform = Platform::standard()) {
    return platform.temporaryDirectory();
  }
  /// A path inside the temporary folder that no other call gives; nothing is created.
  static QString tempFile(const Platform& platform = Platform::standard()) {
    return appending(tempDirectory(platform), uuid(platform) + randomString(8, platform));
  }
  static QString uuid(const Platform& platform = Platform::standard()) { return platform.globallyUniqueString(); }

  /// randomString: characters of a-z and 0-9. Reseeds the process-wide generator of rand on every call, with a number
  /// that changes only as the clock ticks: two calls in one tick give the same string. Not for secrets.
  static QString randomString(unsigned int length, const Platform& platform = Platform::standard());

  /// ensureTrailingSlash: nil and the empty string stay as they are.
  static QString ensureTrailingSlash(const QString& path);
  /// stripTrailingSlash: takes one slash away; a string of one character stays as it is.
  static QString stripTrailingSlash(const QString& path);

  /// isPathSystemDirectory:
  static bool isPathSystemDirectory(const QString& path, const Platform& platform = Platform::standard()) {
    return isPathSystemDirectory(path, false, platform);
  }
  /// isPathSystemDirectory:exactMatch: whether the path is a protected folder or, unless an exact match is asked for,
  /// lies in one of the system's. Paths compare as they are written: links, "//" and ".." are not resolved. A path that
  /// ends in a slash loses its last two characters first.
  static bool isPathSystemDirectory(const QString& path, bool exactMatch,
                                    const Platform& platform = Platform::standard());
  /// isPathOnTimeMachineVolume:
  static bool isPathOnTimeMachineVolume(const QString& path);

 private:
  static SearchPathDomain domainOf(bool user) { return user ? SearchPathDomain::User : SearchPathDomain::Local; }
  static QString appending(const QString& folder, const QString& component) {
    return folder.isNull() ? folder : ensureTrailingSlash(folder) + component;
  }
};
