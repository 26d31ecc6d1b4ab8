#pragma once

#include <initializer_list>

#include <signal.h>

namespace sys {

/// While this lives, these signals wait, as far as this thread would take them. Those that a write of this thread
/// raises, SIGPIPE and SIGXFSZ, never come: the error that the write gives must do. On the stack only, the last made
/// goes first.
class SignalsHeld {
 public:
  explicit SignalsHeld(std::initializer_list<int> numbers);
  ~SignalsHeld();
  SignalsHeld(const SignalsHeld&) = delete;
  SignalsHeld& operator=(const SignalsHeld&) = delete;

 private:
  sigset_t raised_, before_;
};

}  // namespace sys
