#include "system/SignalsHeld.h"

#include <cerrno>
#include <ctime>

namespace sys {

SignalsHeld::SignalsHeld(std::initializer_list<int> numbers) {
  sigset_t held;
  ::sigemptyset(&held);
  ::sigemptyset(&raised_);
  for (const int signal : numbers) ::sigaddset(&held, signal);
  ::pthread_sigmask(SIG_BLOCK, &held, &before_);
  for (const int signal : {SIGPIPE, SIGXFSZ}) {
    if (::sigismember(&held, signal) == 1 && ::sigismember(&before_, signal) == 0) ::sigaddset(&raised_, signal);
  }
}

SignalsHeld::~SignalsHeld() {
  const timespec now{};
  while (::sigtimedwait(&raised_, nullptr, &now) > 0 || errno == EINTR) {
  }
  ::pthread_sigmask(SIG_SETMASK, &before_, nullptr);
}

}  // namespace sys
