#include "SharedFiles/authorization/AuthorizationController.h"

#include <QDateTime>
#include <QDir>
#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <optional>
#include <string>
#include <utility>

#include <sys/stat.h>

#include "SharedFiles/foundation/FilePackage.h"
#include "SharedFiles/foundation/QVLocalPaths.h"
#include "SharedFiles/log/QVLog.h"
#include "SharedFiles/log/SystemConsole.h"
#include "SharedFiles/privileged/PrivilegedRun.h"
#include "SharedFiles/tasks/FileNameBytes.h"
#include "SharedFiles/tasks/QVTaskEx.h"
#include "system/FilePlace.h"
#include "system/FileTree.h"

namespace {

constexpr int notAuthorized = -1;
constexpr int noSuchTool = -2;

const QString removeTool = QStringLiteral("/bin/rm");
const QString moveTool = QStringLiteral("/bin/mv");
const QString copyTool = QStringLiteral("/bin/cp");
const QString makeFolderTool = QStringLiteral("/bin/mkdir");

/// The folder that the path leads to, without links; null where that cannot be told.
QString resolved(const QString& path) {
  const std::unique_ptr<char, decltype(&std::free)> place(::realpath(path.toUtf8().constData(), nullptr), &std::free);
  return place ? fileNameAsText(place.get()).value_or(QString()) : QString();
}

QString inside(const QString& folder, const QString& name) {
  return QVLocalPaths::ensureTrailingSlash(folder) + name;
}

QString nameOf(const QString& path) {
  return path.section(u'/', -1);
}

/// The path without links above its last component, as far as the folders above exist.
QString withoutLinksAbove(const QString& path) {
  const qsizetype slash = path.lastIndexOf(u'/');
  if (slash <= 0) return path;
  const QString parent = path.left(slash);
  const QString place = resolved(parent);
  return inside(place.isNull() ? withoutLinksAbove(parent) : place, nameOf(path));
}

/// Where a file that is given this destination arrives: a folder counts without the links that lead to it.
QString destinationWithoutLinks(const QString& path) {
  const QString folder = resolved(path + u'/');
  return folder.isNull() ? withoutLinksAbove(path) : folder;
}

/// The target with the date before its extension.
QString dated(const QString& target, std::time_t now) {
  const qsizetype nameStart = target.lastIndexOf(u'/') + 1;
  const qsizetype dot = target.lastIndexOf(u'.');
  const bool hasExtension = dot > nameStart && dot + 1 < target.size();
  const QString date = QDateTime::fromSecsSinceEpoch(now).toString(QStringLiteral("yyyyMMddHHmmss"));
  return (hasExtension ? target.left(dot) : target) + u'_' + date + u'.' +
         (hasExtension ? target.mid(dot + 1) : QString());
}

bool areGiven(const QString& oldPath, const QString& newPath, const char* operation) {
  if (oldPath.isNull()) {
    logToConsole("Error in %s: old path is null", operation);
  } else if (newPath.isNull()) {
    logToConsole("Error in %s: new path is null", operation);
  }
  return !oldPath.isNull() && !newPath.isNull();
}

/// Does it with the path of everything in the folder; whether it succeeded every time. False for a folder that cannot
/// be listed, and when a name in it is no text.
bool forEachEntry(const QString& folder, const std::function<bool(const QString& entry)>& act) {
  const auto names = sys::namesInFolderAt(folder.toStdString());
  bool succeeded = names.has_value();
  for (const std::string& name : names.value_or(std::vector<std::string>())) {
    const std::optional<QString> text = fileNameAsText(name);
    succeeded = text && act(inside(folder, *text)) && succeeded;
  }
  return succeeded;
}

}  // namespace

AuthorizationEnvironment AuthorizationEnvironment::standard() {
  return {.platform = &PathPlatform::standard(),
          .userId = ::getuid,
          .programs = AuthorizationPrograms::standard(),
          .runTask = [](const QString& tool, const QStringList& arguments) { QVTaskEx::runTask(tool, arguments); },
          .runTaskAndReturn = QVTaskEx::runTaskAndReturn};
}

AuthorizationController::AuthorizationController(AuthorizationEnvironment environment, Interface interface)
    : environment_(std::move(environment)), hasGUI_(interface == Interface::gui) {
  if (!isSuperuser()) userDirectory_ = QVLocalPaths::userDirectory(*environment_.platform);
}

AuthorizationController::~AuthorizationController() {
  authEnd();
}

bool AuthorizationController::authStart() {
  if (isAuthorized()) return true;
  if (!hasGUI_) {
    logToConsole("Unable to authorize");
    return false;
  }
  authRef_ = AuthorizationRight::askUser(environment_.programs, environment_.userId());
  return authRef_.has_value();
}

bool AuthorizationController::authStartWithUser(const QString& user, const QString& password) {
  if (isSuperuser()) return true;
  if (user.isNull() || password.isNull()) return false;
  authEnd();
  AuthorizationRight::Outcome outcome;
  const bool isInvokingUser = user == QVLocalPaths::username(*environment_.platform);
  if (!fileExists(environment_.programs.sudo)) {
    outcome.error = ENOENT;
  } else if (isInvokingUser) {
    outcome = AuthorizationRight::tryPassword(environment_.programs, password);
  }
  authRef_ = std::move(outcome.right);
  if (authRef_) return true;
  if (outcome.error != 0) {
    logToConsole("Unable to create authRef - error %d", outcome.error);
    return false;
  }
  logToConsole("Authorization failed. Invalid username or password");
  QVLog::appendLog("Authorization failed. Invalid username or password");
  return false;
}

void AuthorizationController::authEnd() {
  if (authRef_ && !isSuperuser()) authRef_->giveUp();
  authRef_.reset();
}

bool AuthorizationController::isAuthorized() const {
  return isSuperuser() || authRef_;
}

bool AuthorizationController::canAuthorize() const {
  return hasGUI_ || isSuperuser();
}

int AuthorizationController::authExecTask(const QString& tool, const QStringList& parameters, bool async) {
  if (!fileExists(tool)) {
    logToConsole("Unable to execute task: path %@ doesn't exist", tool);
    return noSuchTool;
  }
  if (isSuperuser()) {
    (async ? environment_.runTaskAndReturn : environment_.runTask)(tool, parameters);
    return 0;
  }
  if (const int status = refusalOfRun(tool, parameters)) return status;
  if (!isAuthorized()) authStart();
  if (!isAuthorized()) return notAuthorized;
  const AuthorizationRight::Start start = authRef_->start(tool, parameters);
  // One that has run out would stand in the way of asking anew.
  if (start.status != 0 && !authRef_->renewsItself()) authEnd();
  if (start.process && !async) readToEnd(*start.process);
  return start.status;
}

int AuthorizationController::refusalOfRun(const QString& tool, const QStringList& parameters) const {
  std::vector<std::string> commandLine{tool.toStdString()};
  for (const QString& parameter : parameters) commandLine.push_back(parameter.toStdString());
  const auto places = privileged::systemPlaces({0, environment_.userId()}, BundleInfo::mainBundle());
  const auto refusal = privileged::refusalOf(commandLine, places);
  if (!refusal) return 0;
  const QString path = QString::fromStdString(refusal->path);
  if (refusal->status == privileged::ExitStatus::usage) {
    QVLog::appendLog("Unable to run %@ with administrator rights because it is not one of the tools that may.", tool);
  } else if (refusal->status == privileged::ExitStatus::protectedPlace) {
    QVLog::appendLog("Unable to change path %@ because it is a system directory.", path);
  } else {
    QVLog::appendLog("Unable to change path %@ because a folder on its way is missing or it is too long.", path);
  }
  return static_cast<int>(refusal->status);
}

bool AuthorizationController::isSystemDirectory(const QString& path) const {
  const auto isListed = [this](const QString& written) {
    return QVLocalPaths::isPathSystemDirectory(written, true, *environment_.platform);
  };
  if (isListed(path)) return true;
  // Written in another way, or reached through links, it is still the same folder.
  const QString absolute = absolutePath(path);
  return !absolute.isNull() && (isListed(QDir::cleanPath(absolute)) || isListed(withoutLinksAbove(absolute)));
}

bool AuthorizationController::refuses(const QString& path, const char* message) const {
  if (path.isEmpty()) return true;
  if (!isSystemDirectory(path)) return absolutePath(path).isNull();
  logToConsole(message, path);
  return true;
}

QString AuthorizationController::toolPath(const QString& path) const {
  const QString absolute = absolutePath(path);
  return isSuperuser() || absolute.isNull() ? absolute : withoutLinksAbove(absolute);
}

QString AuthorizationController::toolDestination(const QString& path) const {
  const QString absolute = absolutePath(path);
  return isSuperuser() || absolute.isNull() ? absolute : destinationWithoutLinks(absolute);
}

bool AuthorizationController::run(const QString& tool, const QStringList& options, const QStringList& paths) {
  return !paths.contains(QString()) && authExecTask(tool, options + paths) == 0;
}

bool AuthorizationController::start(const QString& tool, const QStringList& options, const QStringList& paths) {
  if (!isSuperuser()) return run(tool, options, paths);
  if (paths.contains(QString())) return false;
  environment_.runTaskAndReturn(tool, options + paths);
  return true;
}

bool AuthorizationController::authRemoveFile(const QString& path) {
  if (refuses(path, "Unable to delete path %@ because it is a system directory.")) return false;
  return run(removeTool, {QStringLiteral("-Rdf")}, {toolPath(path)});
}

bool AuthorizationController::deletesInsteadOfTrashing(bool deleteOnRootAccount) const {
  return deleteOnRootAccount && userDirectory_.isEmpty() && isSuperuser();
}

QString AuthorizationController::trashTarget(const QString& path) const {
  const bool isUsersTrash = isSuperuser() && !userDirectory_.isEmpty();
  const QString trash =
      isUsersTrash ? userDirectory_ + "/.Trash" : QVLocalPaths::trashDirectory(*environment_.platform);
  // A home folder need not have one. It is private, as the home folder's owner makes it.
  if (!isUsersTrash) ::mkdir(trash.toUtf8().constData(), S_IRWXU);
  const QString target = inside(trash, nameOf(absolutePath(path)));
  return sys::standsAt(target.toStdString()) ? dated(target, environment_.platform->time()) : target;
}

bool AuthorizationController::authTrashFile(const QString& path, bool deleteOnRootAccount) {
  if (refuses(path, "Unable to trash path %@ because it is a system directory.")) return false;
  const QString target = trashTarget(path);
  // What is removed is the name in the trash, not the file: settled.
  return deletesInsteadOfTrashing(deleteOnRootAccount) ? authRemoveFile(target) : authMoveFile(path, target);
}

bool AuthorizationController::authTrashFolderContents(const QString& path, bool deleteOnRootAccount) {
  if (refuses(path, "Unable to trash folder contents of path %@ because it is a system directory.")) return false;
  return forEachEntry(absolutePath(path), [&](const QString& entry) {
    if (!deletesInsteadOfTrashing(deleteOnRootAccount)) return authTrashFile(entry, deleteOnRootAccount);
    if (refuses(entry, "Unable to trash path %@ because it is a system directory.")) return false;
    return run(removeTool, {QStringLiteral("-R"), QStringLiteral("-f")}, {entry});
  });
}

bool AuthorizationController::authMoveFolderContents(const QString& path, const QString& destination) {
  if (refuses(path, "Unable to move contents of path %@ because it is a system directory.")) return false;
  return forEachEntry(absolutePath(path), [&](const QString& entry) {
    return authMoveFile(entry, destination.isNull() ? destination : inside(destination, nameOf(entry)));
  });
}

bool AuthorizationController::authMoveFile(const QString& oldPath, const QString& newPath) {
  if (!areGiven(oldPath, newPath, "authMoveFile")) return false;
  if (refuses(oldPath, "Unable to move path %@ because it is a system directory.")) return false;
  return run(moveTool, {QStringLiteral("-f")}, {toolPath(oldPath), toolDestination(newPath)});
}

bool AuthorizationController::authCopyFile(const QString& oldPath, const QString& newPath) {
  if (!areGiven(oldPath, newPath, "authCopyFile") || !fileExists(oldPath)) return false;
  return start(copyTool, {QStringLiteral("-f"), QStringLiteral("-p"), QStringLiteral("-R")},
               {toolPath(oldPath), toolDestination(newPath)});
}

bool AuthorizationController::authCreateDir(const QString& path) {
  return start(makeFolderTool, {QStringLiteral("-p")}, {toolPath(path)});
}
