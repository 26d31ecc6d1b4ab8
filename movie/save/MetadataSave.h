#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "movie/atoms/MovieEdit.h"
#include "movie/atoms/MovieFile.h"
#include "movie/save/SavePlacement.h"
#include "movie/save/WritableFile.h"

namespace movie {

/// How a save ended that was begun and not undone.
struct SaveOutcome {
  SavePlace place = SavePlace::Unchanged;  ///< of the new movie atom, as far as it came
  /// The write that makes the new metadata count failed: the file holds the old or the new, and is whole with either.
  /// Load it again to see. `place` is then where the new would be.
  bool uncertain = false;
  /// The movie atom stood before the media data and now stands behind them: a reader over a network has to load the
  /// whole movie before it starts. A flattened copy puts that right.
  bool mediaNowPrecedeMovie = false;
  std::uint64_t names = 1;  ///< hard links: the file was changed under all of them
  /// Whole sentences for the log, for all of the above and for what went wrong once the save stood.
  std::vector<std::string> notes;
};

/// Whether saveMetadata() would begin, now; the error's reason says why not. Nothing is changed. Where nothing is
/// edited yet, the answer counts for edits that need room.
Result<void> canUpdate(const MovieFile& movie, const std::vector<SampleDescriptionEdit>& edits,
                       sys::FileCalls& calls = sys::systemCalls());

/// Puts edited sample descriptions into the movie's file, in place. Media data are neither moved nor written, so the
/// cost is that of the movie atom. `movie` and all that was opened of the file go on reading their samples; for
/// anything newer the file has to be opened again.
///
/// At every moment the file is a whole movie with the old or the new metadata; the system or the machine may stop at
/// any of them. What that leaves behind the movie, the next save takes away. This holds for disks that write sectors of
/// 512 bytes whole and keep what fsync told of.
///
/// Signals that would end the program wait for the end, in this thread. Error: a refusal, or a failure after which the
/// file has its old metadata.
Result<SaveOutcome> saveMetadata(const MovieFile& movie, const std::vector<SampleDescriptionEdit>& edits,
                                 sys::FileCalls& calls = sys::systemCalls());

}  // namespace movie
