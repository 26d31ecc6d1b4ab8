#pragma once

#include <QString>
#include <QStringList>
#include <functional>
#include <optional>

#include <sys/types.h>
#include <unistd.h>

#include "SharedFiles/authorization/AuthorizationRight.h"
#include "SharedFiles/foundation/PathPlatform.h"

/// What is done with administrator rights once the plain operation has failed. Each tells whether it was started.
class PrivilegedFileOperations {
 public:
  virtual ~PrivilegedFileOperations() = default;

  virtual bool authTrashFile(const QString& path) = 0;
  virtual bool authRemoveFile(const QString& path) = 0;
  virtual bool authCreateDir(const QString& path) = 0;
  virtual bool authCopyFile(const QString& source, const QString& destination) = 0;
  virtual bool authMoveFile(const QString& source, const QString& destination) = 0;
};

/// What the privileged file operations ask of the process and the system around them.
struct AuthorizationEnvironment {
  const PathPlatform* platform = nullptr;  ///< outlives the controller
  std::function<uid_t()> userId;           ///< the real user id, asked at every call
  AuthorizationPrograms programs;
  /// Run the superuser's tools: the one waits for their end, the other does not.
  std::function<void(const QString& tool, const QStringList& arguments)> runTask;
  std::function<void(const QString& tool, const QStringList& arguments)> runTaskAndReturn;

  /// The running process's.
  static AuthorizationEnvironment standard();
};

/// File operations with administrator rights, for when the plain ones have failed. The right "system.privilege.admin"
/// is obtained once, with a dialog or with credentials, or not at all when the process is the superuser's; then the
/// system's own tools run with it. System directories are refused before anything runs.
///
/// Results are YES as soon as the tool was started, which is not when it is through, nor a promise that it succeeds.
/// Messages go to the system console. A relative path counts from the process's current folder; slashes at its end and
/// doubled ones are dropped. A path that is empty, holds a null character or is no valid Unicode is refused with a line
/// in the log; so is what the privileged program lets nobody do, before anybody is asked for a password. Calls block
/// while the user is asked. One thread at a time.
class AuthorizationController final : public PrivilegedFileOperations {
 public:
  enum class Interface { gui, none };

  /// init / initWithoutGUI. There is no privileged reference of a process to adopt on this system.
  AuthorizationController(AuthorizationEnvironment environment, Interface interface);
  ~AuthorizationController() override;
  AuthorizationController(const AuthorizationController&) = delete;
  AuthorizationController& operator=(const AuthorizationController&) = delete;

  bool hasGUI() const { return hasGUI_; }
  /// The invoking user's home folder; nil when made by the superuser.
  const QString& userDirectory() const { return userDirectory_; }

  /// authStart: obtains the right with a dialog, unless it is held.
  bool authStart();
  /// authStartWithUser:password: obtains the right with credentials and no dialog, also over one that is held. Only the
  /// invoking user can be authenticated; any other name counts as invalid.
  bool authStartWithUser(const QString& user, const QString& password);
  void authEnd();
  bool isAuthorized() const;
  bool canAuthorize() const;

  /// authRemoveFile: the file or folder with all that is in it; a link, not its target.
  bool authRemoveFile(const QString& path) override;
  /// authTrashFile:
  bool authTrashFile(const QString& path) override { return authTrashFile(path, false); }
  /// authTrashFile:deleteOnRootAccount:
  bool authTrashFile(const QString& path, bool deleteOnRootAccount);
  /// authTrashFolderContents:
  bool authTrashFolderContents(const QString& path) { return authTrashFolderContents(path, false); }
  /// authTrashFolderContents:deleteOnRootAccount: YES when every entry succeeded; one that fails keeps no other from
  /// being done. NO for a folder that cannot be listed.
  bool authTrashFolderContents(const QString& path, bool deleteOnRootAccount);
  /// authMoveFolderContents:toPath: each entry under its own name into the folder `destination`; results as above.
  bool authMoveFolderContents(const QString& path, const QString& destination);
  /// authMoveFile:toPath: into the destination where that is a folder.
  bool authMoveFile(const QString& oldPath, const QString& newPath) override;
  /// authCopyFile:toPath: with owner, mode and times, and folders with all that is in them; into the destination where
  /// that is a folder.
  bool authCopyFile(const QString& oldPath, const QString& newPath) override;
  /// authCreateDir: with the folders above it that are missing.
  bool authCreateDir(const QString& path) override;

  /// authExecTask:parameters:
  int authExecTask(const QString& tool, const QStringList& parameters) { return authExecTask(tool, parameters, true); }
  /// authExecTask:parameters:async: 0 when the tool was started, -1 without the right, -2 when there is no such tool,
  /// else a status of AuthorizationRight::start or SharedFiles/privileged/ExitStatus.h. Unless the process is the
  /// superuser's, only the tools and arguments that the operations above use are let through. When not async, returns
  /// when the tool is through.
  int authExecTask(const QString& tool, const QStringList& parameters, bool async);

 private:
  bool isSuperuser() const { return environment_.userId() == 0; }
  bool isSystemDirectory(const QString& path) const;
  bool refuses(const QString& path, const char* message) const;
  QString toolPath(const QString& path) const;
  QString toolDestination(const QString& path) const;
  QString trashTarget(const QString& path) const;
  /// What the privileged program would end with for its arguments' sake, told in the log; 0 when it would go on.
  int refusalOfRun(const QString& tool, const QStringList& parameters) const;
  bool deletesInsteadOfTrashing(bool deleteOnRootAccount) const;
  bool run(const QString& tool, const QStringList& options, const QStringList& paths);
  bool start(const QString& tool, const QStringList& options, const QStringList& paths);

  AuthorizationEnvironment environment_;
  bool hasGUI_;
  QString userDirectory_;
  std::optional<AuthorizationRight> authRef_;
};
