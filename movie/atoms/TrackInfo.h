#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "movie/atoms/ByteOrder.h"
#include "movie/atoms/FourCC.h"

namespace movie {

inline constexpr FourCC videoMedia = fourCC("vide");
inline constexpr FourCC soundMedia = fourCC("soun");
inline constexpr FourCC timecodeMedia = fourCC("tmcd");

inline constexpr std::int32_t normalRate = 0x10000;  ///< 16.16: as fast as the media is

/// One entry of an edit list. Source: QTFF "Edit list atoms"; ISO/IEC 14496-12, 8.6.6.
struct EditListEntry {
  /// In the movie's time scale. A last entry of 0 means the rest of the media, as fragmented movies write it, and is
  /// given that rest's duration.
  std::uint64_t segmentDuration = 0;
  std::int64_t mediaTime = 0;           ///< in the media's time scale, at most 2^62; -1 is an empty edit
  std::int32_t mediaRate = normalRate;  ///< 16.16; 0 is a dwell
};

/// Row-major 3 x 3 as in tkhd and mvhd: a b u c d v x y w; u, v, w are 2.30, the rest 16.16.
using TransformMatrix = std::array<std::int32_t, 9>;

/// A track as the file holds it. Durations are at most 2^62.
struct TrackInfo {
  std::uint32_t id = 0;
  bool enabled = true;
  FourCC mediaType = 0;             ///< the handler's subtype: 'vide', 'soun', 'tmcd' ...
  std::uint64_t duration = 0;       ///< tkhd, in the movie's time scale; where unknown, from edits or media
  std::int32_t mediaTimeScale = 0;  ///< units per second, above 0: the movie's where the media has none
  std::uint64_t mediaDuration =
      0;  ///< mdhd, in the media's time scale; where unknown or in fragments, from the samples
  std::uint32_t width = 0, height = 0;  ///< tkhd, 16.16
  TransformMatrix matrix{0x10000, 0, 0, 0, 0x10000, 0, 0, 0, 0x40000000};
  std::vector<EditListEntry> edits;       ///< empty: the media from its beginning
  std::vector<Bytes> sampleDescriptions;  ///< whole stsd entries, size and type included
  std::uint64_t sampleCount = 0;          ///< those in fragments included
  /// Per sample description: its data reference points to another file. Such references are never followed.
  std::vector<bool> external;

  bool isExternal(std::size_t description) const { return description < external.size() && external[description]; }
};

}  // namespace movie
