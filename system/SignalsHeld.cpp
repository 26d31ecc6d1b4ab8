#include "system/SignalsHeld.h"

#include <ctime>
#include <initializer_list>

namespace movie {

SignalsHeld::SignalsHeld() {
  sigset_t held;
  ::sigemptyset(&held);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGXFSZ}) ::sigaddset(&held, signal);
  ::pthread_sigmask(SIG_BLOCK, &held, &before_);
}

SignalsHeld::~SignalsHeld() {
  if (::sigismember(&before_, SIGXFSZ) == 0) {
    // What our own writes raised must not end the program now.
    sigset_t ours;
    ::sigemptyset(&ours);
    ::sigaddset(&ours, SIGXFSZ);
    const timespec now{0, 0};
    while (::sigtimedwait(&ours, nullptr, &now) > 0) {
    }
  }
  ::pthread_sigmask(SIG_SETMASK, &before_, nullptr);
}

}  // namespace movie
