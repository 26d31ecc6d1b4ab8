#pragma once

#include <string_view>

namespace cli {

/// Makes descriptors 0, 1 and 2 taken, so that no file opened later becomes stdin, stdout or stderr. One that was
/// closed refuses reads and writes, as it would have.
void keepStandardDescriptorsTaken();

/// An interrupt ends the process at once with status 130; a reader that goes away shows as a failed write.
void installSignalHandling();

/// Writes all of it; false with errno set when that fails.
bool writeAll(int descriptor, std::string_view bytes);

}  // namespace cli
