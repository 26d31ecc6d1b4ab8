#include <cerrno>
#include <cstring>
#include <exception>
#include <memory>
#include <string>
#include <variant>
#include <vector>

#include <unistd.h>

#include "SharedFiles/log/QVLog.h"
#include "cli/CommandLine.h"
#include "cli/Process.h"
#include "system/FileBytes.h"
#include "system/StandardDescriptors.h"

namespace {

/// The command's log: none, so that many processes do not rotate one user's logs, or one file without rotation, which
/// is appended to and complete when this goes. Must come before any entry.
class CommandLog {
 public:
  explicit CommandLog(const std::shared_ptr<LogSink>& sink) {
    log_.setNoPrinting(true);
    log_.setLoggingDisabled(sink == nullptr);
    if (sink == nullptr) return;
    log_.setSink(sink);
    log_.createNewLog(QString(), true);
  }
  ~CommandLog() {
    log_.finishWriting();
    log_.setLoggingDisabled(true);
    log_.setSink(nullptr);
  }
  CommandLog(const CommandLog&) = delete;
  CommandLog& operator=(const CommandLog&) = delete;

 private:
  LogController& log_ = QVLog::sharedController();
};

cli::CommandResult run(const cli::CommandLine& line) {
  if (const auto* options = std::get_if<cli::CheckOptions>(&line.command)) {
    return cli::runCheckCommand(*options, cli::stylingOfStandardOutput());
  }
  if (const auto* options = std::get_if<cli::ScanOptions>(&line.command)) {
    return cli::runScanCommand(*options, cli::stylingOfStandardOutput());
  }
  if (const auto* options = std::get_if<cli::WindowOptions>(&line.command)) return cli::runWindowCommand(*options);
  if (const auto* options = std::get_if<cli::SyncOptions>(&line.command)) return cli::runSyncCommand(*options);
  return cli::runInfoCommand(std::get<cli::InfoOptions>(line.command));
}

cli::CommandResult runArguments(const std::vector<std::string>& arguments) {
  const auto line = cli::parseCommandLine(arguments);
  if (!line) return line.error();
  std::shared_ptr<LogSink> sink;
  if (line->logFile) {
    errno = 0;
    sink = LogFileSink::open(QByteArray::fromStdString(*line->logFile), LogFileSink::IfMissing::Create);
    const std::string reason = std::strerror(errno);
    if (!sink)
      return {"", cli::complaint("Cannot open the log \"" + *line->logFile + "\": " + reason + "."), cli::failure};
  }
  const CommandLog log(sink);
  return run(*line);
}

/// What a library throws that we do not know of, memory that runs out: a sentence too.
cli::CommandResult runGuarded(const std::vector<std::string>& arguments) {
  try {
    return runArguments(arguments);
  } catch (const std::exception& exception) {
    return {"", cli::complaint(std::string("The command failed: ") + exception.what() + "."), cli::failure};
  }
}

}  // namespace

int main(int argc, char** argv) {
  sys::keepStandardDescriptorsTaken();
  cli::installSignalHandling();
  cli::CommandResult result = runGuarded({argv + (argc > 0 ? 1 : 0), argv + argc});
  if (const int error = sys::writeAll(STDOUT_FILENO, result.out)) {
    result.err += cli::complaint(std::string("Cannot write to standard output: ") + std::strerror(error) + ".");
    result.status = cli::failure;
  }
  sys::writeAll(STDERR_FILENO, result.err);
  return result.status;
}
