#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "movie/atoms/AtomReader.h"
#include "movie/atoms/SampleTable.h"

namespace movie {

/// Where one sample lies.
struct SampleLocation {
  std::uint64_t offset = 0;     ///< from the start of the file that its data reference names
  std::uint64_t size = 0;       ///< bytes
  std::size_t description = 0;  ///< 0-based, among the track's sample descriptions

  /// The samples of its description around it that lie one behind the other, this one among them.
  struct Neighbours {
    std::uint64_t first = 0, count = 0;  ///< 0-based
    std::uint64_t offset = 0;            ///< of the first one
  } neighbours{};
};

/// The rows of a table behind version, flags and a count. The count is held to the rows that are there.
class TableRows {
 public:
  TableRows(const std::optional<ByteView>& body, std::size_t rowSize);
  std::size_t count() const { return count_; }
  std::uint32_t at(std::size_t row, std::size_t column = 0) const { return read32(rows_, row * rowSize_ + column * 4); }

 private:
  std::size_t rowSize_;
  ByteView rows_;
  std::size_t count_ = 0;
};

/// Samples that follow each other under one sample description.
struct DescriptionRun {
  std::uint64_t first = 0;      ///< the first of them, 0-based
  std::size_t description = 0;  ///< 0-based, among the track's sample descriptions

  friend bool operator==(const DescriptionRun&, const DescriptionRun&) = default;
};

/// The 0-based place of a sample description that a file gives by a number from 1 on. A number that leads to none of
/// `count` descriptions counts as 1.
inline std::size_t descriptionIndex(std::uint32_t number, std::size_t count) {
  return number == 0 || number > count ? 0 : number - 1;
}

/// The tables of one stbl atom as they lie in the movie atom's bytes, which must outlive this. Nothing is copied or
/// expanded before it is asked for; counts are held to the bytes that are there.
/// Source: QTFF "Sample table atoms"; ISO/IEC 14496-12, 8.6 and 8.7.
struct SampleTableAtoms {
  std::optional<ByteView> timeToSample;       ///< the bodies: stts
  std::optional<ByteView> compositionOffset;  ///< ctts
  std::optional<ByteView> syncSample;         ///< stss
  std::optional<ByteView> partialSync;        ///< stps
  std::optional<ByteView> sampleSize;         ///< stsz, or stz2
  std::optional<ByteView> sampleToChunk;      ///< stsc
  std::optional<ByteView> chunkOffset;        ///< stco, or co64
  bool compactSizes = false;                  ///< sampleSize is a stz2
  bool wideOffsets = false;                   ///< chunkOffset is a co64
  std::size_t descriptionCount = 0;           ///< how many sample descriptions the track has

  /// The first atom of each kind among the children of a stbl.
  static SampleTableAtoms among(ByteView bytes, const AtomList& children);

  /// Of stsz or stz2; of stts where there is neither.
  std::uint64_t sampleCount() const;

  /// The size of all samples, 0 where each has one of its own. None without stsz and stz2.
  std::optional<std::uint32_t> commonSize() const;
  /// None when the tables do not lead to it. Looks up one row.
  std::optional<std::uint64_t> sizeOf(std::uint64_t sample) const;

  std::uint64_t chunkCount() const;
  std::optional<std::uint64_t> chunkOffsetOf(std::uint64_t chunk) const;

  /// stts and ctts laid over each other, sampleCount() samples in all. Where stts ends early its last duration goes on;
  /// where ctts does, the offset is 0. Without stts there are no times. Offsets are signed in either version of ctts,
  /// as writers do it. A duration that is a small negative number, which some writers leave, counts as 1.
  std::vector<TimeRun> timeRuns() const;

  /// stss and stps together; none without stss: every sample is one.
  std::optional<std::vector<SampleRange>> syncSamples() const;

  /// None when the tables do not lead to the sample.
  std::optional<SampleLocation> locationOf(std::uint64_t sample) const;

  /// The run around the sample. None when stsc does not lead to it.
  std::optional<DescriptionRun> descriptionRunOf(std::uint64_t sample) const;

 private:
  struct ChunkRun;
  std::optional<ChunkRun> chunkRunOf(std::uint64_t sample) const;
};

}  // namespace movie
