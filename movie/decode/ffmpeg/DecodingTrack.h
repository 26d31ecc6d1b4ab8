#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "movie/atoms/MovieError.h"
#include "movie/atoms/MovieFile.h"
#include "movie/decode/ffmpeg/SampleDecoder.h"

namespace movie {

/// What decoding one track takes, in whatever order its pictures are asked for: the decoder of the sample description
/// in use, the places where it can start, and the samples, which are read through the movie file's own tables.
class DecodingTrack {
 public:
  /// Error: there is no such track, or it holds no pictures.
  static Result<std::unique_ptr<DecodingTrack>> make(std::shared_ptr<const MovieFile> file, std::size_t track);

  const MovieFile& file() const { return *file_; }
  const SampleTable& table() const { return table_; }
  /// Of the description in use; only after useDescriptionOf().
  SampleDecoder& decoder() const { return *decoder_; }
  /// Where the run of samples with the description in use begins, around the sample that it was put to use for.
  std::uint64_t firstSample() const { return firstSample_; }

  /// The decoder of another description is given up: it may hold many pictures, and would have to be restarted anyway.
  /// True when it was. Error: the samples lie in another file, or nothing decodes them.
  Result<bool> useDescriptionOf(std::uint64_t sample);
  /// Whether a sample belongs to the run of the description in use, for a sample not before firstSample().
  bool inDescriptionInUse(std::uint64_t sample) const;

  /// The last sample at or before `from` that the tables call a fit start for the target. A picture shown before the
  /// sync sample that it follows may need what lies before that one. Never a sample of another description, which
  /// another decoder is for.
  std::uint64_t startAtOrBefore(std::uint64_t from, const PresentedSample& target) const;
  /// Where to start decoding from, the most promising first, the first sample of the description's run last.
  std::vector<std::uint64_t> startsFor(const PresentedSample& target) const;
  /// How many of the samples decoded before one are presented after it.
  int reorderDepthAt(std::uint64_t sample, std::int64_t presentationTime) const;

  /// Reads a sample into a packet of the decoder's; its size, 0 for none.
  Result<std::size_t> readPacket(std::uint64_t sample);
  tl::unexpected<MovieError> failure(Clause why) const;

 private:
  DecodingTrack(std::shared_ptr<const MovieFile> file, std::size_t track);

  std::shared_ptr<const MovieFile> file_;
  std::size_t track_;
  const SampleTable& table_;
  std::unique_ptr<SampleDecoder> decoder_;  ///< of the description that was needed last
  std::size_t description_ = 0;             ///< its place among the track's; only with a decoder
  std::uint64_t firstSample_ = 0;
};

}  // namespace movie
