#pragma once

#include <QString>
#include <QStringList>
#include <cstddef>
#include <cstdlib>
#include <ctime>

#include <unistd.h>

#include "SharedFiles/foundation/BundleInfo.h"

/// The kinds of standard folder, with the platform's numbers.
enum class SearchPathDirectory {
  NSApplicationDirectory = 1,
  NSAdminApplicationDirectory = 4,
  NSLibraryDirectory = 5,
  NSDocumentationDirectory = 8,
  NSDocumentDirectory = 9,
  NSDesktopDirectory = 12,
  NSCachesDirectory = 13,
  NSApplicationSupportDirectory = 14,
  NSMoviesDirectory = 17,
};

/// Where a folder of a kind is looked for: in the home folder, machine-wide, or in the system's own part.
enum class SearchPathDomain { User = 1, Local = 2, System = 8 };

/// What QVLocalPaths asks of the system it runs on. Thread-safe. Paths are absolute and have no trailing slash.
class PathPlatform {
 public:
  virtual ~PathPlatform() = default;

  /// The folders of a kind in a domain, best first, with the tilde expanded; empty where there is none.
  virtual QStringList searchPaths(SearchPathDirectory directory, SearchPathDomain domain) const = 0;
  virtual QString homeDirectory() const = 0;       ///< NSHomeDirectory
  virtual QString userName() const = 0;            ///< NSUserName
  virtual QString temporaryDirectory() const = 0;  ///< NSTemporaryDirectory
  virtual uid_t realUserId() const = 0;            ///< getuid
  /// confstr: the length of the value with its final zero, as much of it as fits into the buffer; 0 when there is none.
  virtual std::size_t configurationString(int name, char* buffer, std::size_t size) const {
    return ::confstr(name, buffer, size);
  }
  virtual QString globallyUniqueString() const;
  virtual std::time_t time() const { return std::time(nullptr); }
  virtual std::clock_t clock() const { return std::clock(); }
  virtual void srand(unsigned int seed) const { std::srand(seed); }
  virtual int rand() const { return std::rand(); }

  /// The running system and user; lives as long as the process.
  static const PathPlatform& standard();
};

/// Linux. The user's folders follow HOME and the XDG variables as they are at the time of the call; a variable that is
/// not an absolute path counts as unset. For the superuser the look-up gives /var/root and what follows the home
/// folder.
class LinuxPathPlatform : public PathPlatform {
 public:
  /// The machine-wide Library is found from the bundle's executable.
  LinuxPathPlatform(uid_t realUserId, const BundleInfo& bundle);

  QStringList searchPaths(SearchPathDirectory directory, SearchPathDomain domain) const override;
  QString homeDirectory() const override;
  QString userName() const override;
  QString temporaryDirectory() const override;
  uid_t realUserId() const override { return realUserId_; }

 private:
  QString userFolder(SearchPathDirectory directory) const;
  QString localFolder(SearchPathDirectory directory) const;

  uid_t realUserId_;
  BundleInfo bundle_;
};
