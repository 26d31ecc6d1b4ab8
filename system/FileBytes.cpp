#include "system/FileBytes.h"

#include <string>

#include <poll.h>
#include <unistd.h>

namespace sys {

Result<struct stat> statusOf(FileRef file, FileCalls& calls) {
  struct stat status {};
  if (untilUninterrupted([&] { return calls.fstat(file.descriptor, &status); }) == 0) return status;
  return failure(errno, Step::Look, std::string(file.path));
}

Result<std::size_t> readAt(FileRef file, std::uint64_t offset, std::span<std::uint8_t> bytes, FileCalls& calls) {
  std::size_t done = 0;
  while (done < bytes.size()) {
    const auto rest = bytes.subspan(done);
    const ssize_t got = untilUninterrupted(
        [&] { return calls.pread(file.descriptor, rest.data(), rest.size(), static_cast<off_t>(offset + done)); });
    if (got < 0) return failure(errno, Step::Read, std::string(file.path));
    if (got == 0) break;
    done += static_cast<std::size_t>(got);
  }
  return done;
}

Result<void> writeAt(FileRef file, std::uint64_t offset, std::span<const std::uint8_t> bytes, FileCalls& calls) {
  for (std::size_t done = 0; done < bytes.size();) {
    const auto rest = bytes.subspan(done);
    const ssize_t wrote = untilUninterrupted(
        [&] { return calls.pwrite(file.descriptor, rest.data(), rest.size(), static_cast<off_t>(offset + done)); });
    if (wrote <= 0) return failure(wrote < 0 ? errno : EIO, Step::Write, std::string(file.path));
    done += static_cast<std::size_t>(wrote);
  }
  return {};
}

ssize_t readSome(int descriptor, void* bytes, std::size_t count) {
  return untilUninterrupted([&] { return ::read(descriptor, bytes, count); });
}

int writeAll(int descriptor, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t wrote = untilUninterrupted([&] { return ::write(descriptor, bytes.data(), bytes.size()); });
    if (wrote > 0) {
      bytes.remove_prefix(static_cast<std::size_t>(wrote));
    } else if (wrote == 0 || errno != EAGAIN) {
      return wrote == 0 ? EIO : errno;
    } else {
      pollfd ready{descriptor, POLLOUT, 0};
      ::poll(&ready, 1, -1);
    }
  }
  return 0;
}

}  // namespace sys
