#pragma once

#include <cstdint>
#include <unordered_map>
#include <vector>

#include "movie/atoms/MovieAtoms.h"
#include "movie/atoms/ReadableFile.h"

namespace movie {

/// Whether a top-level atom is one of those that fragmented movies have.
bool isOfFragments(FourCC type);

/// No single moof is read beyond this many bytes, nor all of them together beyond the other.
inline constexpr std::uint64_t maximumFragmentSize = std::uint64_t{64} << 20;
inline constexpr std::uint64_t maximumFragmentTotal = std::uint64_t{256} << 20;

/// Samples of one size and one description that lie one behind the other.
struct FragmentData {
  std::uint64_t firstSample = 0;  ///< 0-based within the track's fragments
  std::uint64_t count = 0;
  std::uint64_t offset = 0;  ///< of the first one, from the start of the file
  std::uint32_t size = 0;    ///< of each
  std::size_t description = 0;
};

/// The samples that a track has in movie fragments, in file order. Source: ISO/IEC 14496-12, 8.8.
struct TrackFragments {
  std::uint64_t sampleCount = 0;
  std::vector<TimeRun> runs;
  std::vector<SampleRange> sync;  ///< 0-based within the fragments
  std::vector<FragmentData> data;
  std::vector<DescriptionRun> descriptions;  ///< in order; the first one from sample 0 on

  std::optional<SampleLocation> locationOf(std::uint64_t sample) const;
  /// The run around a sample that there is.
  DescriptionRun descriptionRunOf(std::uint64_t sample) const;
};

/// Collects what moof atoms say, one after the other.
class FragmentCollector {
 public:
  explicit FragmentCollector(const MovieAtoms& movie);

  /// Reads one moof. Fragments of a track that the movie does not have are passed over.
  Result<void> add(const ReadableFile& file, const Atom& fragment);

  /// One per track of the movie, in its order.
  std::vector<TrackFragments> take() { return std::move(tracks_); }

 private:
  struct RunDefaults;
  struct Place;

  Result<void> addTrack(ByteView bytes, const Atom& atom, const BytesOrigin& origin, Place& place);
  void addRun(ByteView body, const RunDefaults& defaults, Place& place, TrackFragments& track);

  std::unordered_map<std::uint32_t, std::size_t> indexOfId_;
  std::vector<std::size_t> descriptionCounts_;  ///< per track
  std::unordered_map<std::uint32_t, FragmentDefaults> defaultsOfId_;
  std::vector<TrackFragments> tracks_;
  std::uint64_t total_ = 0;
};

}  // namespace movie
