#include "system/StandardDescriptors.h"

#include <cerrno>

#include <fcntl.h>
#include <unistd.h>

namespace sys {

bool keepStandardDescriptorsTaken() {
  for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor) {
    if (::fcntl(descriptor, F_GETFD) != -1 || errno != EBADF) continue;
    // The lowest free descriptor is this one.
    const int mode = descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY;
    if (::open("/dev/null", mode) != descriptor) return false;
  }
  return true;
}

}  // namespace sys
