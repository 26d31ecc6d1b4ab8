#pragma once

#include <QString>
#include <QStringList>
#include <memory>
#include <optional>
#include <utility>

#include <sys/types.h>

#include "SharedFiles/tasks/ChildProcess.h"

/// The programs that give administrator rights, by absolute path. One that does not exist gives none.
struct AuthorizationPrograms {
  QString pkcheck;     ///< asks the user through the desktop's authentication dialog
  QString pkexec;      ///< runs the privileged program with a right that pkcheck obtained
  QString sudo;        ///< checks given credentials, and runs the privileged program with them
  QString privileged;  ///< runs the few tools as the superuser, whoever started it; see SharedFiles/privileged

  /// This system's, and the privileged program installed beside the running executable.
  static AuthorizationPrograms standard();
};

/// An administrator right that was obtained, and that polkit or sudo keeps for this process for some minutes. Used by
/// one thread at a time.
class AuthorizationRight {
 public:
  /// Asks for "system.privilege.admin" with a dialog; blocks until the user has answered. None when it was refused, and
  /// where the system has no such service.
  static std::optional<AuthorizationRight> askUser(const AuthorizationPrograms& programs, uid_t userId);

  /// What became of credentials.
  struct Outcome;
  /// Tries the invoking user's password without a dialog. It goes through a pipe, and the copy made of it here is
  /// overwritten. One that is no text, or has a line break, a null character or more than 1,000 bytes, is refused
  /// untried.
  static Outcome tryPassword(const AuthorizationPrograms& programs, const QString& password);

  /// How a run of a tool began.
  struct Start {
    /// 0 once the tool runs as the superuser; `cannotLaunch`, or what pkexec, sudo or the privileged program ended with
    /// before that (see SharedFiles/privileged/ExitStatus.h).
    int status = 0;
    std::shared_ptr<ChildProcess> process;  ///< set when the tool runs; its output is a pipe that ends with the tool
  };
  static constexpr int cannotLaunch = -3;  ///< pkexec or sudo is missing, or an argument cannot be handed over

  /// Starts a tool with this right. Blocks until the tool runs or is refused; the user may be asked again meanwhile,
  /// when the right has run out and came from a dialog.
  Start start(const QString& tool, const QStringList& arguments) const;

  /// Whether pkexec asks again by itself when it has run out.
  bool renewsItself() const { return keeper_.isNull(); }
  /// Gives the right back to sudo. What polkit keeps can be revoked for the whole session only, other applications
  /// included: it runs out instead.
  void giveUp() const;

 private:
  AuthorizationRight(QStringList command, QString keeper) : command_(std::move(command)), keeper_(std::move(keeper)) {}

  QStringList command_;  ///< the program, and its arguments before the tool's
  QString keeper_;       ///< sudo's path; null where polkit keeps the right
};

struct AuthorizationRight::Outcome {
  std::optional<AuthorizationRight> right;  ///< set when they were good
  int error = 0;                            ///< an errno when they could not be tried
};
