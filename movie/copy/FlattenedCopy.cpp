#include "movie/copy/FlattenedCopy.h"

#include <cerrno>
#include <ctime>
#include <vector>

#include <pthread.h>
#include <signal.h>
#include <sys/stat.h>

#include "movie/copy/FlattenedLayout.h"
#include "movie/copy/ReplacementFile.h"

namespace movie {

namespace {

/// Turns the signal of a file that grows beyond its limit into the error that the write gives as well.
class FileSizeSignalBlocked {
 public:
  FileSizeSignalBlocked() {
    sigemptyset(&signal_);
    sigaddset(&signal_, SIGXFSZ);
    ::pthread_sigmask(SIG_BLOCK, &signal_, &before_);
  }
  ~FileSizeSignalBlocked() {
    if (sigismember(&before_, SIGXFSZ) == 1) return;
    const timespec atOnce{};
    while (::sigtimedwait(&signal_, nullptr, &atOnce) == SIGXFSZ || errno == EINTR) {
    }
    ::pthread_sigmask(SIG_SETMASK, &before_, nullptr);
  }
  FileSizeSignalBlocked(const FileSizeSignalBlocked&) = delete;
  FileSizeSignalBlocked& operator=(const FileSizeSignalBlocked&) = delete;

 private:
  sigset_t signal_{};
  sigset_t before_{};
};

/// What shows that a file's content was changed.
struct FileState {
  off_t size = 0;
  timespec changed{};

  friend bool operator==(const FileState& a, const FileState& b) {
    return a.size == b.size && a.changed.tv_sec == b.changed.tv_sec && a.changed.tv_nsec == b.changed.tv_nsec;
  }
};

FileState stateOf(const ReadableFile& file) {
  struct stat status {};
  if (::fstat(file.descriptor(), &status) != 0) return {-1, {}};
  return {status.st_size, status.st_mtim};
}

FileState stateWhenOpened(const MovieFile& movie) {
  const FileStamp& stamp = movie.stamp();
  FileState state{static_cast<off_t>(stamp.size), {}};
  state.changed.tv_sec = static_cast<time_t>(stamp.modifiedSeconds);
  state.changed.tv_nsec = static_cast<long>(stamp.modifiedNanoseconds);
  return state;
}

tl::unexpected<MovieError> changedMeanwhile(const ReadableFile& file) {
  return failed(file.path(), Reason::ChangedSinceOpened);
}

Result<void> fill(ReplacementFile& target, const FlattenedLayout& layout,
                  const std::vector<const ReadableFile*>& sources, const CopyProgress& progress) {
  TRY(target.resize(layout.size));
  const std::vector<CopiedRange> ranges = withoutHoles(sources, layout.copied);
  for (const CopiedRange& range : ranges) {
    TRY(target.reserve(range.to, range.size));
  }
  for (const PlacedBytes& placed : layout.written) {
    TRY(target.write(placed.offset, placed.bytes));
  }
  return copyRanges(sources, ranges, target, progress);
}

}  // namespace

Result<void> writeFlattenedCopy(const MovieFile& movie, ByteView movieAtom, const std::string& path,
                                const CopyProgress& progress, CopyCalls& calls) {
  const FileSizeSignalBlocked blocked;
  TRY(const auto layout, layOutFlattened(movie, movieAtom));

  std::vector<const ReadableFile*> sources{&movie.readable()};
  for (const ReadableFile& file : layout.media) sources.push_back(&file);
  std::vector<FileState> states;
  for (const ReadableFile* const source : sources) {
    states.push_back(stateOf(*source));
    if (states.back().size != static_cast<off_t>(source->size())) return changedMeanwhile(*source);
  }
  if (!(states.front() == stateWhenOpened(movie))) return changedMeanwhile(movie.readable());

  TRY(auto target, ReplacementFile::create(path, calls));
  TRY(fill(target, layout, sources, progress));
  for (std::size_t i = 0; i < sources.size(); ++i) {
    if (!(stateOf(*sources[i]) == states[i])) return changedMeanwhile(*sources[i]);
  }
  return target.publish();
}

}  // namespace movie
