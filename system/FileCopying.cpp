#include "system/FileCopying.h"

#include <algorithm>
#include <limits>
#include <optional>
#include <string>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace sys {

namespace {

constexpr std::uint64_t kernelPiece = std::uint64_t{64} << 20U;
constexpr std::uint64_t bufferPiece = std::uint64_t{1} << 20U;
constexpr auto largestOffset = static_cast<std::uint64_t>(std::numeric_limits<off_t>::max());

/// Whether the file takes less space than it is long. Only then is it asked for its holes.
bool isSparse(int file) {
  constexpr off_t blockSize = 512;
  struct stat status {};
  return ::fstat(file, &status) == 0 && status.st_blocks < status.st_size / blockSize;
}

/// The next run of data at or behind an offset, up to `end`; none when only a hole is left.
std::optional<std::pair<std::uint64_t, std::uint64_t>> dataFrom(int file, std::uint64_t offset, std::uint64_t end) {
  const off_t begin = ::lseek(file, static_cast<off_t>(offset), SEEK_DATA);
  if (begin < 0) return errno == ENXIO ? std::nullopt : std::optional(std::pair(offset, end));
  const auto first = static_cast<std::uint64_t>(begin);
  if (first >= end) return std::nullopt;
  const off_t hole = ::lseek(file, begin, SEEK_HOLE);
  return std::pair(first, hole <= begin ? end : std::min(end, static_cast<std::uint64_t>(hole)));
}

/// Whether reading and writing may do what copy_file_range answers that errno to: it does not copy between these two
/// files, or cannot tell which of them it is that fails. Servers answer ENOENT and ETXTBSY where they mean the first.
bool meansByHand(int code) {
  return code == EXDEV || code == EINVAL || code == ENOSYS || code == EOPNOTSUPP || code == EPERM || code == EIO ||
         code == ENOENT || code == ETXTBSY;
}

}  // namespace

std::vector<CopiedRun> withoutHoles(int file, const CopiedRun& run) {
  if (!isSparse(file)) return {run};
  std::vector<CopiedRun> filled;
  const std::uint64_t end = run.from + run.size;
  for (std::uint64_t at = run.from; at < end;) {
    const auto data = dataFrom(file, at, end);
    if (!data) break;
    filled.push_back({data->first, data->second - data->first, run.to + (data->first - run.from)});
    at = data->second;
  }
  return filled;
}

Result<std::uint64_t> FileCopying::copy(FileRef from, CopiedRun run) {
  const std::uint64_t size = run.size;
  while (run.size > 0) {
    if (progress_ && !progress_(done_)) return failure(ECANCELED, Step::Copy, std::string(to_.path));
    auto piece = copyPiece(from, run);
    if (!piece) return piece;
    if (*piece == 0) break;
    if (writeback_ == Writeback::AtOnce) {
      ::sync_file_range(to_.descriptor, static_cast<off_t>(run.to), static_cast<off_t>(*piece), SYNC_FILE_RANGE_WRITE);
    }
    run = {run.from + *piece, run.size - *piece, run.to + *piece};
    done_ += *piece;
  }
  return size - run.size;
}

/// 0 where the file ends.
Result<std::uint64_t> FileCopying::copyPiece(FileRef from, const CopiedRun& run) {
  if (inKernel_) {
    auto piece = copyInKernel(from, run);
    if (!piece || *piece > 0) return piece;
    inKernel_ = false;
  }
  return copyByHand(from, run);
}

/// 0 where the kernel does not copy between these files. Some file systems say nothing where they mean that.
Result<std::uint64_t> FileCopying::copyInKernel(FileRef from, const CopiedRun& run) {
  const auto size = static_cast<std::size_t>(std::min(run.size, kernelPiece));
  const ssize_t copied = untilUninterrupted([&] {
    return calls_.copyRange(from.descriptor, static_cast<off_t>(run.from), to_.descriptor, static_cast<off_t>(run.to),
                            size);
  });
  if (copied < 0 && !meansByHand(errno)) return failure(errno, Step::Copy, std::string(to_.path));
  return static_cast<std::uint64_t>(std::max<ssize_t>(copied, 0));
}

Result<std::uint64_t> FileCopying::copyByHand(FileRef from, const CopiedRun& run) {
  if (!buffer_) buffer_ = std::make_unique_for_overwrite<std::uint8_t[]>(bufferPiece);
  const std::span<std::uint8_t> piece(buffer_.get(), static_cast<std::size_t>(std::min(run.size, bufferPiece)));
  TRY(const std::size_t got, readAt(from, run.from, piece, calls_));
  TRY(writeAt(to_, run.to, piece.first(got), calls_));
  return got;
}

Result<void> copyContents(FileRef from, FileRef to, const std::stop_token& stop, FileCalls& calls) {
  const auto goOn = [&stop](std::uint64_t) { return !stop.stop_requested(); };
  FileCopying copying(to, goOn, FileCopying::Writeback::Later, calls);
  TRY(const struct stat before, statusOf(from, calls));
  for (const CopiedRun& run : withoutHoles(from.descriptor, {0, static_cast<std::uint64_t>(before.st_size), 0})) {
    TRY(copying.copy(from, run));
  }
  TRY(const struct stat after, statusOf(from, calls));
  const off_t end = std::min(before.st_size, after.st_size);
  if (untilUninterrupted([&] { return calls.ftruncate(to.descriptor, end); }) != 0) {
    return failure(errno, Step::Resize, std::string(to.path));
  }
  const auto size = static_cast<std::uint64_t>(end);
  // What has been added since; all of a file that does not tell its size. Where nothing is left, the kernel could
  // refuse the place that nothing would be written to.
  copying.goOnByHand();
  TRY(copying.copy(from, {size, largestOffset - size, size}));
  return {};
}

}  // namespace sys
