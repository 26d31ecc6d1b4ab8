#include "app/start/QuitSignals.h"

#include <QCoreApplication>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <system_error>

#include <sys/eventfd.h>
#include <unistd.h>

namespace {

constexpr std::array quitting{SIGTERM, SIGINT, SIGHUP};
std::array<struct sigaction, quitting.size()> before;
volatile std::sig_atomic_t wakeDescriptor = -1;

/// Async-signal-safe: write only.
void wake(int /*signal*/) {
  const int saved = errno;
  const std::uint64_t one = 1;
  [[maybe_unused]] const ssize_t written = ::write(wakeDescriptor, &one, sizeof one);
  errno = saved;
}

int openDescriptor() {
  const int descriptor = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
  if (descriptor < 0) throw std::system_error(errno, std::generic_category(), "eventfd");
  return descriptor;
}

}  // namespace

QuitSignals::QuitSignals() : notifier_(openDescriptor(), QSocketNotifier::Read) {
  wakeDescriptor = static_cast<int>(notifier_.socket());
  QObject::connect(&notifier_, &QSocketNotifier::activated, qApp, [this] {
    notifier_.setEnabled(false);
    QCoreApplication::quit();
  });
  struct sigaction action {};
  action.sa_handler = wake;
  action.sa_flags = SA_RESTART;
  for (std::size_t i = 0; i < quitting.size(); ++i) ::sigaction(quitting[i], &action, &before[i]);
}

QuitSignals::~QuitSignals() {
  for (std::size_t i = 0; i < quitting.size(); ++i) ::sigaction(quitting[i], &before[i], nullptr);
  notifier_.setEnabled(false);
  ::close(wakeDescriptor);
}
