#include "SharedFiles/crash/CrashReporting.h"

#include <filesystem>

#include <sys/stat.h>

#include "SharedFiles/crash/handler/CrashHandler.h"
#include "SharedFiles/foundation/BundleInfo.h"
#include "SharedFiles/foundation/QVLocalPaths.h"
#include "SharedFiles/tasks/ApplicationBundle.h"

namespace {

bool makePrivateFolder(const std::string& folder) {
  std::error_code error;
  std::filesystem::create_directories(std::filesystem::path(folder).parent_path(), error);
  ::mkdir(folder.c_str(), S_IRWXU);
  return std::filesystem::is_directory(folder, error);
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
