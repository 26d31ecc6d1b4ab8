#include "cli/Process.h"

#include <cerrno>
#include <csignal>

#include <poll.h>
#include <signal.h>
#include <unistd.h>

#include "cli/CommandResult.h"

namespace cli {
namespace {

extern "C" void endInterrupted(int) {
  ::_exit(interrupted);
}

constexpr std::array endingSignals{SIGINT, SIGTERM, SIGHUP};
volatile std::sig_atomic_t notedSignal = 0;

extern "C" void noteInterrupt(int signal) {
  if (notedSignal == 0) notedSignal = signal;
}

void handle(int signal, void (*handler)(int)) {
  struct sigaction action = {};
  action.sa_handler = handler;
  ::sigemptyset(&action.sa_mask);
  ::sigaction(signal, &action, nullptr);
}

}  // namespace

void installSignalHandling() {
  handle(SIGINT, endInterrupted);
  handle(SIGPIPE, SIG_IGN);
}

NotedInterrupts::NotedInterrupts() {
  notedSignal = 0;
  for (std::size_t i = 0; i < endingSignals.size(); ++i) {
    ::sigaction(endingSignals[i], nullptr, &before_[i]);
    if (before_[i].sa_handler != SIG_IGN) handle(endingSignals[i], noteInterrupt);
  }
}

NotedInterrupts::~NotedInterrupts() {
  for (std::size_t i = 0; i < endingSignals.size(); ++i) ::sigaction(endingSignals[i], &before_[i], nullptr);
}

int NotedInterrupts::signal() {
  return notedSignal;
}

bool writeAll(int descriptor, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = ::write(descriptor, bytes.data(), bytes.size());
    if (written >= 0) {
      bytes.remove_prefix(static_cast<std::size_t>(written));
    } else if (errno == EAGAIN) {
      pollfd ready{descriptor, POLLOUT, 0};
      ::poll(&ready, 1, -1);
    } else if (errno != EINTR) {
      return false;
    }
  }
  return true;
}

}  // namespace cli
