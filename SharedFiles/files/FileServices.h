#pragma once

#include <QString>

#include "SharedFiles/foundation/PathPlatform.h"
#include "SharedFiles/tasks/PlatformTools.h"

/// What is done with administrator rights once the plain operation has failed. Each tells whether it was started.
class PrivilegedFileOperations {
 public:
  virtual ~PrivilegedFileOperations() = default;

  virtual bool authTrashFile(const QString& path) = 0;
  virtual bool authRemoveFile(const QString& path) = 0;
  virtual bool authCreateDir(const QString& path) = 0;
  virtual bool authCopyFile(const QString& source, const QString& destination) = 0;
  virtual bool authMoveFile(const QString& source, const QString& destination) = 0;

  /// The process's own: QVAuthorization::sharedController().
  static PrivilegedFileOperations& standard();
};

/// What the file manager asks of its surroundings.
struct FileServices {
  const PathPlatform& paths = PathPlatform::standard();
  const PlatformTools& tools = PlatformTools::standard();
  PrivilegedFileOperations& privileges = PrivilegedFileOperations::standard();
};
