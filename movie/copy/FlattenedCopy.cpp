#include "movie/copy/FlattenedCopy.h"

#include <utility>
#include <vector>

#include <signal.h>

#include "movie/copy/FlattenedLayout.h"
#include "system/FileCopying.h"
#include "system/ReplacementFile.h"
#include "system/SignalsHeld.h"

namespace movie {

namespace {

/// What makes a new file, or reads what goes into it.
template <typename T>
Result<T> making(sys::Result<T> result) {
  return fromSystem(std::move(result), Access::Create);
}

using Sources = std::vector<const ReadableFile*>;

Result<void> checkUnchanged(const Sources& sources) {
  for (const ReadableFile* const source : sources) {
    if (!source->isAsOpened()) return failed(source->path(), Reason::ChangedSinceOpened);
  }
  return {};
}

/// The part of the ranges that takes space.
std::vector<CopiedRange> withoutHoles(const Sources& sources, const std::vector<CopiedRange>& ranges) {
  std::vector<CopiedRange> filled;
  for (const CopiedRange& range : ranges) {
    const int file = sources[range.source]->descriptor();
    for (const sys::CopiedRun& run : sys::withoutHoles(file, {range.from, range.size, range.to})) {
      filled.push_back({range.source, run.from, run.size, run.to});
    }
  }
  return filled;
}

Result<void> copyRanges(const Sources& sources, const std::vector<CopiedRange>& ranges,
                        const sys::ReplacementFile& target, const CopyProgress& progress) {
  std::uint64_t all = 0;
  for (const CopiedRange& range : ranges) all += range.size;
  const auto report = [&](std::uint64_t done) { return !progress || progress(done, all); };
  sys::FileCopying copying(target.ref(), report, sys::FileCopying::Writeback::AtOnce, target.calls());
  for (const CopiedRange& range : ranges) {
    const ReadableFile& source = *sources[range.source];
    TRY(const auto copied, making(copying.copy(source.ref(), {range.from, range.size, range.to})));
    if (copied < range.size) return failed(source.path(), Reason::BecameShorterWhileRead);
  }
  return report(all) ? Result<void>() : failed(target.path(), Reason::Cancelled);
}

Result<void> fill(sys::ReplacementFile& target, const FlattenedLayout& layout, const Sources& sources,
                  const CopyProgress& progress) {
  TRY(making(target.resize(layout.size)));
  const std::vector<CopiedRange> ranges = withoutHoles(sources, layout.copied);
  for (const CopiedRange& range : ranges) {
    TRY(making(target.reserve(range.to, range.size)));
  }
  for (const PlacedBytes& placed : layout.written) {
    TRY(making(target.write(placed.offset, placed.bytes)));
  }
  return copyRanges(sources, ranges, target, progress);
}

}  // namespace

Result<void> writeFlattenedCopy(const MovieFile& movie, ByteView movieAtom, const std::string& path,
                                const CopyProgress& progress, sys::FileCalls& calls) {
  const sys::SignalsHeld held({SIGXFSZ});
  TRY(const auto layout, layOutFlattened(movie, movieAtom));

  Sources sources{&movie.readable()};
  for (const ReadableFile& file : layout.media) sources.push_back(&file);
  TRY(checkUnchanged(sources));
  TRY(auto target, making(sys::ReplacementFile::create(path, calls)));
  TRY(fill(target, layout, sources, progress));
  TRY(checkUnchanged(sources));
  return making(target.publish());
}

}  // namespace movie
