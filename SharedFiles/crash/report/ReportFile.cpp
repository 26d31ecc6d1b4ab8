#include <cerrno>
#include <string>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "SharedFiles/crash/handler/CrashFacts.h"
#include "SharedFiles/crash/report/CrashReport.h"
#include "system/Descriptor.h"
#include "system/FileBytes.h"

namespace crash {
namespace {

std::string nameOf(const CrashReport& report, int attempt) {
  SignalSafeText name;
  addReportName(name, report.application.c_str(), report.request.second, report.host.c_str(), attempt);
  return name.text();
}

/// Gives the finished file the first of its names that is free.
bool giveName(int folder, const std::string& unfinished, const CrashReport& report) {
  for (int attempt = 1; attempt <= nameAttempts; ++attempt) {
    if (::renameat2(folder, unfinished.c_str(), folder, nameOf(report, attempt).c_str(), RENAME_NOREPLACE) == 0) {
      return true;
    }
    if (errno != EEXIST) break;
  }
  return false;
}

}  // namespace

bool writeReport(const std::string& folder, const CrashReport& report) {
  ::mkdir(folder.c_str(), S_IRWXU);
  const sys::Descriptor directory(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!directory.isOpen()) return false;
  // Begins with a dot: nobody takes it for a report before it is one.
  const std::string unfinished = "." + report.application + "-" + std::to_string(::getpid()) + ".partial";
  const sys::Descriptor file(::openat(directory.get(), unfinished.c_str(),
                                      O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR));
  if (!file.isOpen()) return false;
  const bool written = sys::writeAll(file.get(), textOf(report)) == 0 && ::fsync(file.get()) == 0;
  if (written && giveName(directory.get(), unfinished, report)) {
    ::fsync(directory.get());
    return true;
  }
  ::unlinkat(directory.get(), unfinished.c_str(), 0);
  return false;
}

}  // namespace crash
