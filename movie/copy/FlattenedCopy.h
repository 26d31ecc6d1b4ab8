#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "movie/atoms/MovieFile.h"
#include "system/FileCalls.h"

namespace movie {

/// Told after each piece how many bytes there are and how many there will be; false cancels.
using CopyProgress = std::function<bool(std::uint64_t done, std::uint64_t all)>;

/// Writes a self-contained copy of a movie, laid out as layOutFlattened() says, with `movieAtom` (a whole uncompressed
/// moov with the movie's own tracks, its sample descriptions changed or not) in place of its own.
///
/// The copy takes its name when it is complete and on the disk: `path` appears, or is replaced, whole or not at all,
/// and after a failure nothing is left behind; see sys::ReplacementFile for a process that is killed. It may be the
/// movie's own file, which is read through the movie's open descriptor; that movie then goes on with the old file until
/// it is opened again. `progress` counts the bytes taken over from files, holes left out, on the calling thread.
/// SIGXFSZ does not reach the thread meanwhile.
///
/// Errors: a layout that is refused, what cannot be read or written, a source that changed meanwhile, Cancelled. The
/// error's file is the one to blame.
Result<void> writeFlattenedCopy(const MovieFile& movie, ByteView movieAtom, const std::string& path,
                                const CopyProgress& progress = {}, sys::FileCalls& calls = sys::systemCalls());

}  // namespace movie
