#include "SharedFiles/tasks/TaskPipes.h"

#include <array>
#include <cerrno>
#include <system_error>

#include <poll.h>

#include "SharedFiles/foundation/QVPlatformException.h"
#include "system/FileBytes.h"

namespace {

constexpr qsizetype chunkSize = 65536;

[[noreturn]] void raise(int error) {
  throw QVPlatformException(
      "cannot read a program's output: " + QString::fromStdString(std::generic_category().message(error)),
      "NSFileHandleOperationException");
}

/// One read; empty at the end.
QByteArray readSome(int descriptor) {
  QByteArray chunk(chunkSize, Qt::Uninitialized);
  const ssize_t got = sys::readSome(descriptor, chunk.data(), static_cast<std::size_t>(chunk.size()));
  if (got < 0) raise(errno);
  chunk.truncate(got);
  return chunk;
}

/// Descriptors below 0 are passed over.
template <std::size_t count>
void waitForAny(std::array<pollfd, count>& descriptors) {
  if (sys::untilUninterrupted([&] { return ::poll(descriptors.data(), descriptors.size(), -1); }) < 0) raise(errno);
}

}  // namespace

TaskOutput readToEnd(ChildProcess& process) {
  TaskOutput collected;
  const auto take = [](const pollfd& ready, sys::Descriptor& end, QByteArray& buffer) {
    if (ready.fd < 0 || ready.revents == 0) return;
    const QByteArray chunk = readSome(ready.fd);
    buffer += chunk;
    if (chunk.isEmpty()) end.close();
  };
  while (process.standardOutput.isOpen() || process.standardError.isOpen()) {
    std::array descriptors{pollfd{process.standardOutput.get(), POLLIN, 0},
                           pollfd{process.standardError.get(), POLLIN, 0}};
    waitForAny(descriptors);
    take(descriptors[0], process.standardOutput, collected.output);
    take(descriptors[1], process.standardError, collected.errors);
  }
  return collected;
}

QByteArray readChunk(const sys::Descriptor& output, int wake) {
  std::array descriptors{pollfd{output.get(), POLLIN, 0}, pollfd{wake, POLLIN, 0}};
  waitForAny(descriptors);
  if (descriptors[1].revents != 0) return {};
  return readSome(output.get());
}

bool isReadable(const sys::Descriptor& descriptor) {
  pollfd state{descriptor.get(), POLLIN, 0};
  return ::poll(&state, 1, 0) > 0;
}
