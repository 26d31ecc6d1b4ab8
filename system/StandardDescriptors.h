#pragma once

namespace sys {

/// Makes descriptors 0, 1 and 2 taken, so that no file opened later becomes stdin, stdout or stderr. One that was
/// closed refuses reads and writes, as it would have. Whether they are. For the start of a program, before anything is
/// opened.
bool keepStandardDescriptorsTaken();

}  // namespace sys
