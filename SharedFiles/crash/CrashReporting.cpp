#include "SharedFiles/crash/CrashReporting.h"

#include <sys/stat.h>

#include "SharedFiles/crash/handler/CrashHandler.h"
#include "SharedFiles/foundation/BundleInfo.h"
#include "SharedFiles/foundation/QVLocalPaths.h"
#include "SharedFiles/tasks/ApplicationBundle.h"
#include "system/FileTree.h"

namespace {

bool makePrivateFolder(const std::string& folder) {
  static_cast<void>(sys::createFolders(folder.substr(0, folder.rfind('/'))));
  ::mkdir(folder.c_str(), S_IRWXU);
  return sys::isFolderAt(folder);
}

}  // namespace

void installCrashReporting() {
  const QString logs = QVLocalPaths::logDirectory(true);
  const QString bundle = ApplicationBundle::hostPath();
  if (logs.isNull() || bundle.isNull()) return;
  const BundleInfo& information = BundleInfo::mainBundle();
  const auto value = [&information](const char* key) {
    return information.objectForInfoDictionaryKey(QLatin1String(key)).toStdString();
  };
  const std::string folder = logs.toStdString() + "/DiagnosticReports";
  if (!makePrivateFolder(folder)) return;
  crash::installCrashHandler({.reportFolder = folder,
                              .application = value("CFBundleName"),
                              .version = value("CFBundleVersion"),
                              .reportProgram = bundle.toStdString() + "/lumacheck-crash-report"});
}
