#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

#include <tl/expected.hpp>

#include "movie/atoms/ByteOrder.h"
#include "scan/follow/Standing.h"

namespace scan {

/// One side of a scan: the same movie where all of it is the same.
struct ResumeSide {
  std::uint64_t bytes = 0;    ///< of its file
  std::int64_t modified = 0;  ///< in nanoseconds since 1970
  std::uint64_t frames = 0;
  friend bool operator==(const ResumeSide&, const ResumeSide&) = default;
};

/// What a scan is of. Only the same one is gone on with.
struct ResumeSubject {
  ResumeSide source, dest;
  std::uint64_t first = 0, end = 0;  ///< frames of the destination
  std::uint64_t every = 1;           ///< one of so many is compared
  bool align = true;
  /// Frames that are compared.
  std::uint64_t frames() const { return (end - first + every - 1) / every; }
  friend bool operator==(const ResumeSubject&, const ResumeSubject&) = default;
};

/// A file that a scan is kept in, as bytes: eight that name it, then groups. A group is the length of what it holds (32
/// bits, big-endian as all numbers), its XXH3 (64 bits), and that. The first one holds the subject, the second the
/// beginning, every other one the frames that became final since the one before, and where one stands after them.
/// Frames are thus added at the end, and what was cut off there or does not fit is as if it had not been written.
constexpr std::string_view resumeMark = "LUMASCAN";

/// A group that holds these bytes, whatever they are.
movie::Bytes resumeGroupOf(movie::ByteView held);
movie::Bytes subjectGroup(const ResumeSubject& subject);
movie::Bytes beginningGroup(const Beginning& beginning);
/// The frames and lines that were not written yet.
movie::Bytes framesGroup(std::span<const FrameMatch> frames, std::span<const TimeLine> lines, const Standing& standing);

enum class ResumeFault {
  Foreign,  ///< not such a file
  Newer,    ///< of another version of this program
};

/// What such a file holds.
struct ResumeContent {
  std::optional<ResumeSubject> subject;  ///< none where not even that was written whole
  std::optional<SavedScan> saved;        ///< none before the beginning was written
  std::size_t whole = 0;                 ///< bytes that are as they were written, from the first on
};

/// Whatever the bytes are, what is given can be gone on with: all numbers are within the subject.
tl::expected<ResumeContent, ResumeFault> resumeContentOf(movie::ByteView bytes);

}  // namespace scan
