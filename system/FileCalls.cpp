#include "system/FileCalls.h"

#include <string>

#include <signal.h>

namespace sys {

int FileCalls::link(int file, int folder, const char* name) {
  const std::string path = "/proc/self/fd/" + std::to_string(file);
  return ::linkat(AT_FDCWD, path.c_str(), folder, name, AT_SYMLINK_FOLLOW);
}

int FileCalls::lock(int file) {
  struct flock whole {};
  whole.l_type = F_WRLCK;
  whole.l_whence = SEEK_SET;
  return ::fcntl(file, F_OFD_SETLK, &whole);
}

int FileCalls::probeLease(int file) {
  // A lease that is broken meanwhile must not end the program, as SIGIO would: SIGURG is ignored by default.
  ::fcntl(file, F_SETSIG, SIGURG);
  if (::fcntl(file, F_SETLEASE, F_RDLCK) != 0) return -1;
  return ::fcntl(file, F_SETLEASE, F_UNLCK);
}

FileCalls& systemCalls() {
  static FileCalls calls;
  return calls;
}

}  // namespace sys
