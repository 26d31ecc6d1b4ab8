#include "SharedFiles/crash/CrashDetector.h"

#include <QFileInfo>
#include <algorithm>
#include <utility>

#include <sys/stat.h>

#include "SharedFiles/foundation/MainThread.h"
#include "SharedFiles/foundation/QVLocalPaths.h"
#include "SharedFiles/log/QVLog.h"
#include "SharedFiles/log/SystemConsole.h"
#include "SharedFiles/settings/PropertyList.h"
#include "SharedFiles/settings/SharedSettings.h"
#include "SharedFiles/tasks/ApplicationBundle.h"
#include "SharedFiles/tasks/DesktopEntry.h"
#include "SharedFiles/tasks/FileNameBytes.h"
#include "SharedFiles/tasks/QVTaskEx.h"
#include "system/FilePlace.h"

namespace {

constexpr double secondsForChown = 5;

/// Names in a folder that begin with the text, whatever the case of their letters; none in one that cannot be read.
QStringList namesBeginningWith(const QString& beginning, const QString& folder) {
  QStringList names;
  const auto bytes = bytesOfPath(folder);
  if (!bytes) return names;
  for (const std::string& found : sys::namesInFolderAt(*bytes).value_or(std::vector<std::string>())) {
    const auto name = fileNameAsText(found);
    if (name && name->startsWith(beginning, Qt::CaseInsensitive)) names.append(*name);
  }
  return names;
}

/// Capital letters do not come before small ones: the order of the date stamps counts.
bool comesBefore(const QString& one, const QString& other) {
  const int order = one.compare(other, Qt::CaseInsensitive);
  return order != 0 ? order < 0 : one < other;
}

bool isModifiedAfter(const QDateTime& date, const QString& path) {
  constexpr qint64 thousand = 1000;
  constexpr qint64 million = 1000000;
  const auto bytes = bytesOfPath(path);
  struct stat status {};
  if (!bytes || ::lstat(bytes->c_str(), &status) != 0) return false;
  return status.st_mtim.tv_sec * thousand + status.st_mtim.tv_nsec / million > date.toMSecsSinceEpoch();
}

bool openByIdentifier(const QString& identifier, const QString& file) {
  const auto entry = DesktopEntry::find(identifier);
  return entry && entry->open(file);
}

}  // namespace

CrashDetectorEnvironment CrashDetectorEnvironment::standard() {
  return {.paths = PathPlatform::standard(),
          .defaults = UserDefaults::standard(),
          .bundle = BundleInfo::mainBundle(),
          .bundlePath = ApplicationBundle::hostPath(),
          .tools = PlatformTools::standard(),
          .now = [] { return QDateTime::currentDateTimeUtc(); },
          .console = writeToConsole,
          .runTask = [](const QString& path, const QStringList& arguments,
                        double timeout) { QVTaskEx::runTask(path, arguments, timeout); },
          .openWithApplication = [](const QString& application,
                                    const QString& file) { return ApplicationBundle(application).open({file}); },
          .openWithIdentifier = openByIdentifier};
}

void CrashDetector::startCrashline(const QString& name, const QString& plistPath, const Delegate& delegate) const {
  const QString report = checkForCrashes(name, plistPath);
  if (!report.isNull() && delegate) MainThread::perform([delegate, report] { delegate(report); });
  stamp(QStringLiteral("launch"), plistPath);
}

void CrashDetector::stopCrashline(const QString& plistPath) const {
  stamp(QStringLiteral("exit"), plistPath);
}

void CrashDetector::stamp(const QString& key, const QString& plistPath) const {
  const QDateTime now = environment_.now();
  if (plistPath.isNull()) {
    environment_.defaults.setObject(now, key);
    return;
  }
  QVariantMap stamps = PropertyList::readDictionary(plistPath).value_or(QVariantMap());
  stamps.insert(key, now);
  PropertyList::write(stamps, plistPath);
  chownPlist(plistPath);
}

std::optional<QDateTime> CrashDetector::stamped(const QString& key, const QString& plistPath) const {
  const QVariant value = plistPath.isNull()
                             ? environment_.defaults.objectForKey(key)
                             : PropertyList::readDictionary(plistPath).value_or(QVariantMap()).value(key);
  if (value.typeId() != QMetaType::QDateTime) return std::nullopt;
  return value.toDateTime();
}

QString CrashDetector::checkForCrashes(const QString& name, const QString& plistPath) const {
  const auto launch = stamped(QStringLiteral("launch"), plistPath);
  if (!launch) return QString();
  const auto exit = stamped(QStringLiteral("exit"), plistPath);
  if (exit && *exit >= *launch) return QString();

  const QString application =
      name.isNull() ? environment_.bundle.objectForInfoDictionaryKey(QStringLiteral("CFBundleName")) : name;
  QString report = application.isNull() ? QString() : reportSince(*launch, application);
  if (report.isNull()) return report;

  QVLog::appendLog("Application crashed on last launch");
  if (handOffDisabled()) {
    const QString text = QStringLiteral("Crash reporter disabled");
    environment_.console(text);
    QVLog::appendLog(text);
  } else {
    handOff(report);
  }
  return report;
}

QStringList CrashDetector::reportFolders() const {
  QStringList folders;
  for (const bool user : {true, false}) {
    const QString logs = QVLocalPaths::logDirectory(user, environment_.paths);
    if (logs.isNull()) continue;
    folders << logs + QStringLiteral("/CrashReporter") << logs + QStringLiteral("/DiagnosticReports");
  }
  return folders;
}

QString CrashDetector::reportSince(const QDateTime& launch, const QString& name) const {
  for (const QString& folder : reportFolders()) {
    const QStringList names = namesBeginningWith(name + u'_', folder);
    const auto last = std::max_element(names.begin(), names.end(), comesBefore);
    if (last == names.end()) continue;
    QString report = folder + u'/' + *last;
    if (isModifiedAfter(launch, report)) return report;
  }
  return QString();
}

bool CrashDetector::handOffDisabled() const {
  return SharedSettings::isOn(QStringLiteral("disable-crash-reporter"), environment_.paths);
}

void CrashDetector::handOff(const QString& report) const {
  const ApplicationBundle bundle(environment_.bundlePath);
  for (const QString& application : {bundle.pathForResource(QStringLiteral("Crashline"), QStringLiteral("app")),
                                     environment_.bundle.executablePath() + QStringLiteral("/Crashline.app"),
                                     bundle.path() + QStringLiteral("/Contents/MacOS/Crashline.app")}) {
    if (!ApplicationBundle(application).exists()) continue;
    environment_.openWithApplication(application, report);
    return;
  }
  environment_.openWithIdentifier(QStringLiteral("com.quorvane.Crashline"), report);
}

void CrashDetector::chownPlist(const QString& path) const {
  const QStringList components = path.split(u'/', Qt::SkipEmptyParts);
  const qsizetype users = components.indexOf(QLatin1String("Users"));
  if (users < 0 || users + 1 == components.size()) return;
  // The tool would follow a link, and give away what it leads to.
  if (QFileInfo(path).isSymLink()) return;
  const ToolCommand chown = environment_.tools.changeOwner(components[users + 1], absolutePath(path));
  environment_.runTask(chown.path, chown.arguments, secondsForChown);
}
