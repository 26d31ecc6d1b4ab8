// lumacheck-crash-report FOLDER APPLICATION VERSION < REQUEST
//
// Writes the report of a crashed process, which started it and waits for it. Ends with 0 once the report has its name
// in the folder; with 1 when there is none.

#include <csignal>
#include <cstdlib>
#include <optional>

#include <sys/resource.h>
#include <unistd.h>

#include "SharedFiles/crash/handler/CrashRequest.h"
#include "SharedFiles/crash/report/CrashReport.h"
#include "system/FileBytes.h"

namespace {

/// Earlier than the crashed process loses patience. The system lets the stopped threads go on when this one ends.
constexpr unsigned mostSeconds = 9;

std::optional<crash::CrashRequest> readRequest() {
  crash::CrashRequest request;
  if (sys::readSome(STDIN_FILENO, &request, sizeof request) != static_cast<ssize_t>(sizeof request))
    return std::nullopt;
  if (request.mark != crash::CrashRequest::expectedMark || request.size != sizeof request) return std::nullopt;
  request.exception.back() = '\0';
  return request;
}

/// Started from a signal handler, most signals are blocked.
void unblockSignals() {
  sigset_t none;
  ::sigemptyset(&none);
  ::sigprocmask(SIG_SETMASK, &none, nullptr);
}

}  // namespace

int main(int argc, char** argv) {
  unblockSignals();
  ::alarm(mostSeconds);
  const rlimit noCore{0, 0};
  ::setrlimit(RLIMIT_CORE, &noCore);
  constexpr int arguments = 4;
  if (argc != arguments) return EXIT_FAILURE;
  const auto request = readRequest();
  // Whoever asks is the process itself.
  if (!request || request->process != ::getppid()) return EXIT_FAILURE;
  const crash::CrashReport report = crash::examine(*request, argv[2], argv[3]);
  return !report.threads.empty() && crash::writeReport(argv[1], report) ? EXIT_SUCCESS : EXIT_FAILURE;
}
