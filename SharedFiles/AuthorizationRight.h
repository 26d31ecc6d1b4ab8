#pragma once

#include <QString>
#include <QStringList>
#include <functional>
#include <memory>
#include <optional>

#include <sys/types.h>

#include "SharedFiles/ChildProcess.h"

/// The programs that give administrator rights, by absolute path. One that does not exist gives none.
struct AuthorizationPrograms {
  QString pkcheck;     ///< asks the user through the desktop's authentication dialog
  QString pkexec;      ///< runs the privileged program with a right that pkcheck obtained
  QString sudo;        ///< checks given credentials, and runs the privileged program with them
  QString privileged;  ///< runs the few tools as the superuser, whoever started it; see SharedFiles/privileged

  /// This system's, and the privileged program installed beside the running executable.
  static AuthorizationPrograms standard();
};

/// An administrator right that was obtained; giving it up is the destructor's. Used by one thread at a time.
class AuthorizationRight {
 public:
  virtual ~AuthorizationRight() = default;
  AuthorizationRight(const AuthorizationRight&) = delete;
  AuthorizationRight& operator=(const AuthorizationRight&) = delete;

  /// Asks for "system.privilege.admin" with a dialog; blocks until the user has answered. None when it was refused, and
  /// where the system has no such service.
  static std::unique_ptr<AuthorizationRight> askUser(const AuthorizationPrograms& programs, uid_t userId);

  /// What became of credentials. `right` is set when they were good. `error` (an errno) when they could not be tried.
  struct Outcome {
    std::unique_ptr<AuthorizationRight> right;
    int error = 0;
  };
  /// Tries credentials without a dialog. Only the user with that id can be tried: the name of any other is refused. The
  /// password goes through a pipe, and the copies made of it here are overwritten; a password with a line break, a null
  /// character or more than 1,000 bytes is refused.
  static Outcome tryCredentials(const AuthorizationPrograms& programs, uid_t userId, const QString& user,
                                const QString& password);

  /// How a run of a tool began: 0 once the tool runs as the superuser, else why it does not (see the statuses below).
  struct Start {
    int status = 0;
    std::shared_ptr<ChildProcess> process;  ///< set when it runs; its output is a pipe that ends with the tool
  };
  static constexpr int cannotLaunch = -3;  ///< pkexec or sudo is missing, or an argument cannot be handed over
  /// Any other status is the one that pkexec, sudo or the privileged program ended with before the tool ran.

  /// Starts a tool with this right. Blocks until the tool runs, which takes another answer of the user's when the right
  /// has run out in the meantime (or is refused at once, when it came from credentials).
  Start start(const QString& tool, const QStringList& arguments) const;

 protected:
  AuthorizationRight() = default;
  /// The program and the leading arguments that make the privileged program run with this right.
  virtual QStringList commandLine() const = 0;
};
