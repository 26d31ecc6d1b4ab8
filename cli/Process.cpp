#include "cli/Process.h"

#include <csignal>

#include <signal.h>
#include <unistd.h>

#include "cli/Commands.h"

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

}  // namespace cli
