#pragma once

#include <csignal>
#include <functional>

#include <sys/wait.h>
#include <unistd.h>

namespace movie::test {

/// How a child came to its end that did this work until it was killed; `work` returns only where it failed.
inline int killedAfter(unsigned microseconds, const std::function<void()>& work) {
  const pid_t child = ::fork();
  if (child == 0) {
    work();
    ::_exit(1);
  }
  ::usleep(microseconds);
  ::kill(child, SIGKILL);
  int status = 0;
  ::waitpid(child, &status, 0);
  return status;
}

}  // namespace movie::test
