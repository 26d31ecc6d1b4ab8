#include "SharedFiles/authorization/AuthorizationRight.h"

#include <QFile>
#include <csignal>
#include <cstring>
#include <string_view>
#include <utility>

#include <unistd.h>

#include "SharedFiles/foundation/BundleInfo.h"
#include "SharedFiles/foundation/FilePackage.h"
#include "SharedFiles/foundation/QVPlatformException.h"
#include "SharedFiles/log/SystemConsole.h"
#include "SharedFiles/tasks/QVTaskEx.h"
#include "system/FileBytes.h"
#include "system/SignalsHeld.h"

namespace {

/// What the privileged program writes once the tool runs.
const QByteArray startedLine = QByteArrayLiteral("started\n");

/// This process as polkit names it, so that no other one that gets its number inherits the right.
QString subject(uid_t userId) {
  QFile file(QStringLiteral("/proc/self/stat"));
  if (!file.open(QIODevice::ReadOnly)) return {};
  const QByteArray status = file.readAll();
  constexpr qsizetype startTime = 19;  // counted from the state, which follows the name in parentheses
  const QList<QByteArray> fields = status.mid(status.lastIndexOf(')') + 2).split(' ');
  if (fields.size() <= startTime) return {};
  return QStringLiteral("%1,%2,%3").arg(::getpid()).arg(QString::fromLatin1(fields[startTime])).arg(userId);
}

/// Writes into a pipe that has room for it. A reader that has gone is no signal to this process.
void writeQuietly(const sys::Descriptor& pipe, std::string_view bytes) {
  const sys::SignalsHeld held({SIGPIPE});
  sys::writeAll(pipe.get(), bytes);
}

/// A text's bytes in one place, overwritten when they are no longer needed.
class Secret {
 public:
  explicit Secret(const QString& text) : isText_(text.isValidUtf16()), bytes_(text.toUtf8()) {}
  ~Secret() { ::explicit_bzero(bytes_.data(), static_cast<std::size_t>(bytes_.size())); }
  Secret(const Secret&) = delete;
  Secret& operator=(const Secret&) = delete;

  /// Whether it fits on the one line that sudo reads.
  bool isOneLine() const {
    constexpr qsizetype longest = 1000;
    return isText_ && bytes_.size() <= longest && !bytes_.contains('\n') && !bytes_.contains('\r') &&
           !bytes_.contains('\0');
  }
  void writeLineTo(const sys::Descriptor& pipe) const {
    writeQuietly(pipe, {bytes_.constData(), static_cast<std::size_t>(bytes_.size())});
    writeQuietly(pipe, "\n");
  }

 private:
  bool isText_;
  QByteArray bytes_;
};

bool sudoAccepts(const QString& sudo, const QString& password) {
  const Secret secret(password);
  if (!secret.isOneLine()) return false;
  ChildProcess process({.path = sudo,
                        .arguments = {"-S", "-p", "", "-v"},
                        .input = StandardStream::pipe,
                        .output = StandardStream::nullDevice,
                        .error = StandardStream::nullDevice});
  process.launch();
  secret.writeLineTo(process.standardInput);
  process.standardInput.close();
  process.waitUntilExit();
  return process.terminationStatus() == 0;
}

/// Reads until the tool runs; false when the output ends before.
bool awaitStart(const ChildProcess& process) {
  QByteArray output;
  while (!output.startsWith(startedLine)) {
    const QByteArray chunk = readChunk(process.standardOutput, -1);
    if (chunk.isEmpty()) return false;
    output += chunk;
  }
  return true;
}

}  // namespace

AuthorizationPrograms AuthorizationPrograms::standard() {
  const QString folder = BundleInfo::mainBundle().executableFolder();
  return {.pkcheck = QStringLiteral("/usr/bin/pkcheck"),
          .pkexec = QStringLiteral("/usr/bin/pkexec"),
          .sudo = QStringLiteral("/usr/bin/sudo"),
          .privileged = folder.section(u'/', 0, -2) + QStringLiteral("/" LUMACHECK_PRIVILEGED_PROGRAM)};
}

std::optional<AuthorizationRight> AuthorizationRight::askUser(const AuthorizationPrograms& programs, uid_t userId) {
  const QString process = subject(userId);
  if (process.isEmpty() || !isExecutableFileAtPath(programs.pkcheck)) return std::nullopt;
  const QStringList arguments = {"--action-id", "system.privilege.admin", "--process", process,
                                 "--allow-user-interaction"};
  if (QVTaskEx::terminationCodeFromTask(programs.pkcheck, arguments) != 0) return std::nullopt;
  // Asked is in the desktop's dialog or not at all, never on a terminal.
  return AuthorizationRight({programs.pkexec, "--disable-internal-agent", programs.privileged}, QString());
}

AuthorizationRight::Outcome AuthorizationRight::tryPassword(const AuthorizationPrograms& programs,
                                                            const QString& password) {
  if (!isExecutableFileAtPath(programs.sudo)) return {.right = std::nullopt, .error = ENOENT};
  const AuthorizationRight right({programs.sudo, "-n", "--", programs.privileged}, programs.sudo);
  right.giveUp();  // what was kept from before proves nothing
  try {
    if (sudoAccepts(programs.sudo, password)) return {.right = right};
    return {};
  } catch (const QVPlatformException&) {
    return {.right = std::nullopt, .error = EACCES};
  }
}

void AuthorizationRight::giveUp() const {
  if (!renewsItself()) QVTaskEx::runTask(keeper_, {"-k"});
}

AuthorizationRight::Start AuthorizationRight::start(const QString& tool, const QStringList& arguments) const {
  auto process =
      std::make_shared<ChildProcess>(ProgramCall{.path = command_.first(),
                                                 .arguments = command_.mid(1) + QStringList(tool) + arguments,
                                                 .input = StandardStream::nullDevice,
                                                 .output = StandardStream::pipe});
  try {
    process->launch();
    if (awaitStart(*process)) return {.status = 0, .process = std::move(process)};
  } catch (const QVPlatformException& exception) {
    logToConsole("Unable to execute task: %@", exception.reason());
    return {.status = cannotLaunch, .process = nullptr};
  }
  process->waitUntilExit();
  const int status = process->terminationStatus();
  return {.status = status != 0 ? status : cannotLaunch, .process = nullptr};
}
