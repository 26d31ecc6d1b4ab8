#include "cli/LogSetup.h"

#include <cerrno>
#include <cstring>

#include "SharedFiles/log/QVLog.h"

namespace cli {

LogSetup::LogSetup(const std::optional<std::string>& path) {
  LogController& log = QVLog::sharedController();
  log.setNoPrinting(true);
  errno = 0;
  const std::shared_ptr<LogSink> sink =
      path ? LogFileSink::open(QByteArray::fromStdString(*path), LogFileSink::IfMissing::Create) : nullptr;
  if (!sink) {
    if (path) problem_ = "Cannot open the log \"" + *path + "\": " + std::strerror(errno) + ".";
    log.setLoggingDisabled(true);
    return;
  }
  log.setSink(sink);
  log.createNewLog(QString(), true);
}

LogSetup::~LogSetup() {
  LogController& log = QVLog::sharedController();
  log.finishWriting();
  log.setLoggingDisabled(true);
  log.setSink(nullptr);
}

}  // namespace cli
