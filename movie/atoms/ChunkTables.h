#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include "movie/atoms/MovieAtoms.h"

namespace movie {

/// One entry of a dref atom. Source: QTFF "Data reference atoms"; ISO/IEC 14496-12, 8.7.2.
struct DataReference {
  FourCC type = 0;  ///< 'alis', 'url ', 'rsrc' ...
  bool external = false;
  ByteView data;  ///< behind version and flags; a view into the movie atom's bytes
};

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
  TrackChunks(const TrackAtoms& track, std::vector<DataReference> references);

  std::uint64_t chunkCount() const;

  /// Every row of the table of chunk offsets, in its order, also those that no sample falls into. Stops at the first
  /// error that `visit` returns and gives it back. Error of its own: the table of samples in chunks is not in order.
  Result<void> visit(const std::function<Result<void>(const Chunk&)>& visit) const;

  /// The other file that a description's data lies in; null for the movie's own.
  const DataReference* externalReference(std::size_t description) const;

 private:
  struct SoundPacking;
  struct Walk;

  static SoundPacking packingOf(ByteView description);
  std::uint64_t samplesSize(std::uint64_t first, std::uint64_t count, std::size_t description) const;

  SampleTableAtoms tables_;
  std::vector<DataReference> references_;
  std::vector<std::size_t> referenceOf_;  ///< per description: 1-based, 0 where it names none
  std::vector<SoundPacking> packings_;    ///< per description
  std::uint64_t sampleCount_ = 0;
};

/// How many bytes the samples of a sound description of one-byte samples really have: such tables count the frames of
/// uncompressed sound, or of what a packet holds, as samples of 1. Source: QTFF "Sound sample description".
struct TrackChunks::SoundPacking {
  std::uint64_t samplesPerPacket = 1;
  std::uint64_t bytesPerPacket = 1;
};

}  // namespace movie
