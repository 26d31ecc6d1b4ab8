#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "movie/atoms/MovieAtoms.h"

namespace movie {

/// One chunk as media data.
struct Chunk {
  std::uint64_t index = 0;        ///< 0-based, within its track
  std::uint64_t offset = 0;       ///< from the start of the file that it lies in
  std::uint64_t size = 0;         ///< bytes; 0 when no sample falls into it
  std::uint64_t firstSample = 0;  ///< 0-based, within its track
  std::size_t description = 0;    ///< 0-based, among its track's sample descriptions
};

/// The chunks of one track as the movie atom's bytes give them, which must outlive this.
class TrackChunks {
 public:
  explicit TrackChunks(const TrackAtoms& track);

  /// Every row of the table of chunk offsets, in its order, also those that no sample falls into. Stops at the first
  /// error that `visit` returns and gives it back. Error of its own: the table of samples in chunks is not in order.
  Result<void> visit(const std::function<Result<void>(const Chunk&)>& visit) const;

  /// The other file that a description's data lies in; null for the movie's own.
  const DataReference* externalReference(std::size_t description) const;

 private:
  /// How many bytes the samples of a sound description of one-byte samples really have: such tables count the frames of
  /// uncompressed sound, or of what a packet holds, as samples of 1. Source: QTFF "Sound sample description".
  struct SoundPacking {
    std::uint64_t samplesPerPacket = 1;
    std::uint64_t bytesPerPacket = 1;
  };

  static SoundPacking packingOf(ByteView description);
  std::uint64_t samplesSize(std::uint64_t first, std::uint64_t count, std::size_t description) const;

  SampleTableAtoms tables_;
  std::vector<std::optional<DataReference>> elsewhere_;
  std::vector<SoundPacking> packings_;  ///< per description of a sound track
  std::uint64_t sampleCount_ = 0;
};

}  // namespace movie
