#pragma once

#include <signal.h>

namespace movie {

/// While this lives, signals that a user or a terminal ends programs with wait, as far as this thread would take them;
/// a write past the limit of file sizes is an error and no signal. One per thread at a time.
class SignalsHeld {
 public:
  SignalsHeld();
  ~SignalsHeld();
  SignalsHeld(const SignalsHeld&) = delete;
  SignalsHeld& operator=(const SignalsHeld&) = delete;

 private:
  sigset_t before_;
};

}  // namespace movie
