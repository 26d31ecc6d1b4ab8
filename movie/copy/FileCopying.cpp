#include "movie/copy/FileCopying.h"

#include <algorithm>
#include <cerrno>
#include <optional>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace movie {

namespace {

constexpr std::uint64_t kernelPiece = std::uint64_t{64} << 20;
constexpr std::uint64_t bufferPiece = std::uint64_t{1} << 20;

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
  return std::pair(first, hole < 0 ? end : std::min(end, static_cast<std::uint64_t>(hole)));
}

class RangeCopier {
 public:
  RangeCopier(ReplacementFile& target, const CopyProgress& progress, std::uint64_t all)
      : target_(target), progress_(progress), all_(all) {}

  Result<void> copy(const ReadableFile& source, CopiedRange range) {
    while (range.size > 0) {
      TRY(const auto piece, inKernel_ ? kernelCopy(source, range) : bufferedCopy(source, range));
      // Starts the way to the disk, which the final sync then finds mostly done.
      ::sync_file_range(target_.descriptor(), static_cast<off_t>(range.to), static_cast<off_t>(piece),
                        SYNC_FILE_RANGE_WRITE);
      range.from += piece;
      range.to += piece;
      range.size -= piece;
      done_ += piece;
      if (piece > 0 && !report()) return cancelled();
    }
    return {};
  }

  bool report() const { return !progress_ || progress_(done_, all_); }
  tl::unexpected<MovieError> cancelled() const { return failed(target_.path(), Reason::Cancelled); }

 private:
  /// How much it was; nothing when the rest is to be copied the other way.
  Result<std::uint64_t> kernelCopy(const ReadableFile& source, const CopiedRange& range) {
    const auto size = static_cast<std::size_t>(std::min(range.size, kernelPiece));
    const ssize_t copied = target_.calls().copyRange(source.descriptor(), static_cast<off_t>(range.from),
                                                     target_.descriptor(), static_cast<off_t>(range.to), size);
    if (copied > 0) return static_cast<std::uint64_t>(copied);
    if (copied < 0 && errno == EINTR) return 0;
    switch (copied == 0 ? EINVAL : errno) {  // some file systems say nothing where they mean that they cannot
      case EXDEV:
      case EINVAL:
      case ENOSYS:
      case EOPNOTSUPP:
      case EIO:  // only reading and writing tells which of the two files it is
        inKernel_ = false;
        return 0;
      default:
        return target_.failure(errno);
    }
  }

  Result<std::uint64_t> bufferedCopy(const ReadableFile& source, const CopiedRange& range) {
    buffer_.resize(static_cast<std::size_t>(bufferPiece));
    const auto size = static_cast<std::size_t>(std::min(range.size, bufferPiece));
    TRY(const auto got, source.read(range.from, std::span(buffer_).first(size)));
    if (got == 0) return failed(source.path(), Reason::BecameShorterWhileRead);
    TRY(target_.write(range.to, ByteView(buffer_).first(got)));
    return got;
  }

  ReplacementFile& target_;
  const CopyProgress& progress_;
  std::uint64_t all_;
  std::uint64_t done_ = 0;
  bool inKernel_ = true;
  Bytes buffer_;
};

}  // namespace

std::vector<CopiedRange> withoutHoles(const std::vector<const ReadableFile*>& sources,
                                      const std::vector<CopiedRange>& ranges) {
  std::vector<CopiedRange> filled;
  for (const CopiedRange& range : ranges) {
    const int file = sources[range.source]->descriptor();
    if (!isSparse(file)) {
      filled.push_back(range);
      continue;
    }
    const std::uint64_t end = range.from + range.size;
    for (std::uint64_t at = range.from; at < end;) {
      const auto data = dataFrom(file, at, end);
      if (!data) break;
      filled.push_back({range.source, data->first, data->second - data->first, range.to + (data->first - range.from)});
      at = data->second;
    }
  }
  return filled;
}

Result<void> copyRanges(const std::vector<const ReadableFile*>& sources, const std::vector<CopiedRange>& ranges,
                        ReplacementFile& target, const CopyProgress& progress) {
  std::uint64_t all = 0;
  for (const CopiedRange& range : ranges) all += range.size;
  RangeCopier copier(target, progress, all);
  if (!copier.report()) return copier.cancelled();
  for (const CopiedRange& range : ranges) {
    TRY(copier.copy(*sources[range.source], range));
  }
  return {};
}

}  // namespace movie
