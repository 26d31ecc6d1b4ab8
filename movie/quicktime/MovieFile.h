#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "movie/quicktime/ImageDescription.h"
#include "movie/quicktime/MovieError.h"
#include "movie/quicktime/MovieTime.h"
#include "movie/quicktime/SampleTable.h"

namespace movie {

inline constexpr FourCC videoMedia = fourCC("vide");
inline constexpr FourCC soundMedia = fourCC("soun");
inline constexpr FourCC timecodeMedia = fourCC("tmcd");

/// One entry of an edit list. Source: QTFF "Edit list atoms"; ISO/IEC 14496-12, 8.6.6.
struct EditListEntry {
  std::uint64_t segmentDuration = 0;  ///< in the movie's time scale
  std::int64_t mediaTime = 0;         ///< in the media's time scale; -1 is an empty edit
  std::int32_t mediaRate = 0x10000;   ///< 16.16; 0 is a dwell
};

/// Row-major 3 x 3 as in tkhd and mvhd: a b u c d v x y w; u, v, w are 2.30, the rest 16.16.
using TransformMatrix = std::array<std::int32_t, 9>;

/// A track as the file holds it. Immutable.
struct TrackInfo {
  std::uint32_t id = 0;
  bool enabled = true;
  FourCC mediaType = 0;                 ///< the handler's subtype: 'vide', 'soun', 'tmcd' ...
  std::uint64_t duration = 0;           ///< tkhd, in the movie's time scale
  std::int32_t mediaTimeScale = 0;      ///< units per second
  std::uint64_t mediaDuration = 0;      ///< mdhd, in the media's time scale; a fragmented one counts its fragments
  std::uint32_t width = 0, height = 0;  ///< tkhd, 16.16
  TransformMatrix matrix{0x10000, 0, 0, 0, 0x10000, 0, 0, 0, 0x40000000};
  std::vector<EditListEntry> edits;     ///< empty: the media from its beginning
  std::vector<Bytes> sampleDescriptions;  ///< whole stsd entries, size and type included
  std::uint64_t sampleCount = 0;
  /// Where each chunk's external file would be is never followed: true when the first sample description's data reference
  /// points to another file.
  bool external = false;
};

/// A QuickTime or ISO movie file: its movie atom parsed, its media data left where it is. Any file whose atoms make a movie
/// opens, whatever its extension. Immutable and shared by all copies of a movie; usable from several threads.
///
/// Bounds: every size is checked against its parent before use and every count against the bytes left; depth is limited;
/// the movie atom is read whole, mdat never. A compressed movie atom (cmov) is inflated. Movie fragments are counted.
class MovieFile {
 public:
  /// Errors: cannot be opened or read, not a regular file, no movie atom, a malformed one; each with its reason.
  static Result<std::shared_ptr<const MovieFile>> open(const std::string& path);

  ~MovieFile();
  MovieFile(const MovieFile&) = delete;
  MovieFile& operator=(const MovieFile&) = delete;

  const std::string& path() const { return path_; }
  int descriptor() const { return fd_; }       ///< open for reading as long as this lives; read with pread only
  std::uint64_t size() const { return size_; }
  FourCC majorBrand() const { return majorBrand_; }  ///< 0 without ftyp
  bool isQuickTime() const { return majorBrand_ == 0 || majorBrand_ == fourCC("qt  "); }
  bool isFragmented() const { return fragmented_; }

  std::int32_t timeScale() const { return timeScale_; }
  std::uint64_t duration() const { return duration_; }  ///< in timeScale(); of the longest track where mvhd has none
  const std::vector<TrackInfo>& tracks() const { return tracks_; }

  /// Parsed at the first request and kept; safe from several threads. `track` indexes tracks().
  const SampleTable& sampleTable(std::size_t track) const;

  /// The raw bytes of one sample (0-based) of a self-contained track, at most `limit` of them. For small ones: a timecode.
  Result<Bytes> readSample(std::size_t track, std::uint64_t sample, std::size_t limit) const;

 private:
  MovieFile() = default;
  struct Parser;
  struct Lazy;

  std::string path_;
  int fd_ = -1;
  std::uint64_t size_ = 0;
  FourCC majorBrand_ = 0;
  bool fragmented_ = false;
  std::int32_t timeScale_ = 0;
  std::uint64_t duration_ = 0;
  std::vector<TrackInfo> tracks_;
  std::unique_ptr<Lazy> lazy_;
};

}  // namespace movie
