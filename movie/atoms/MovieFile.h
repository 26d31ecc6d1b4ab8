#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "movie/atoms/ImageDescription.h"
#include "movie/atoms/MovieError.h"
#include "movie/atoms/MovieTime.h"
#include "movie/atoms/ReadableFile.h"
#include "movie/atoms/SampleTable.h"
#include "movie/atoms/SampleTableAtoms.h"
#include "movie/atoms/TrackInfo.h"

namespace movie {

struct MovieAtoms;

/// No compressed movie atom is inflated beyond this many bytes. What is built from its tables takes up to ten times as
/// much, and a thousandth of it in the file.
inline constexpr std::size_t maximumInflatedSize = std::size_t{16} << 20;

/// A QuickTime or ISO movie file: its movie atom parsed, its media data left where it is. Any file whose atoms make a
/// movie opens, whatever its extension. Immutable and shared by all copies of a movie; usable from several threads.
///
/// The first movie atom counts; what stands behind it matters only where the movie is fragmented, so that a file cut in
/// its media data still opens when the movie atom comes first.
///
/// Bounds: every size is checked against its parent before use and every count against the bytes left; depth is fixed;
/// the movie atom is read whole, up to maximumMovieAtomSize, mdat never. A compressed movie atom (cmov) is inflated, up
/// to maximumInflatedSize. Movie fragments are counted.
class MovieFile {
  struct Lazy;
  struct Private {};

 public:
  static constexpr std::uint64_t maximumMovieAtomSize = std::uint64_t{512} << 20;

  /// Errors: cannot be opened or read, not a regular file, no movie atom, a malformed one; each with its reason. A
  /// track that lacks atoms does not keep the movie from opening.
  static Result<std::shared_ptr<const MovieFile>> open(const std::string& path);

  MovieFile(Private, ReadableFile file);
  ~MovieFile();
  MovieFile(const MovieFile&) = delete;
  MovieFile& operator=(const MovieFile&) = delete;

  const std::string& path() const { return file_.path(); }
  /// Open for reading as long as this lives; read with pread only.
  int descriptor() const { return file_.descriptor(); }
  const ReadableFile& readable() const { return file_; }
  std::uint64_t size() const { return file_.size(); }
  FourCC majorBrand() const { return majorBrand_; }  ///< 0 without a ftyp before the movie atom
  bool isQuickTime() const { return majorBrand_ == 0 || majorBrand_ == fourCC("qt  "); }
  bool isFragmented() const { return fragmented_; }

  /// The whole movie atom, header included, as it was read at open, whatever becomes of the file; inflated where it was
  /// compressed (isCompressed()).
  ByteView movieAtom() const;
  std::uint64_t movieAtomOffset() const { return movieAtomOffset_; }  ///< in the file, of the compressed one too
  bool isCompressed() const { return compressed_; }
  /// Taken before anything was read.
  const FileStamp& stamp() const { return file_.stamp(); }

  std::int32_t timeScale() const { return timeScale_; }  ///< above 0
  /// In timeScale(); where the movie header has none or the movie is fragmented, at least that of the longest track.
  std::uint64_t duration() const { return duration_; }
  const std::vector<TrackInfo>& tracks() const { return tracks_; }

  /// Parsed at the first request and kept; safe from several threads. `track` indexes tracks(); an empty table for a
  /// track that does not exist.
  const SampleTable& sampleTable(std::size_t track) const;

  /// Which sample description a sample (0-based) has, and since which sample the track has had it without a break. A
  /// sample that the tables do not lead to counts as one of the first description. It costs a walk over the runs of
  /// chunks.
  DescriptionRun descriptionRunOf(std::size_t track, std::uint64_t sample) const;

  /// Where a sample (0-based) lies, wholly inside this file. It costs a walk over the runs of chunks. Error: the tables
  /// do not lead to it, they lead past the end, or its description's data is in another file.
  Result<SampleLocation> locateSample(std::size_t track, std::uint64_t sample) const;

  /// The raw bytes of one sample, at most `limit` of them; a look-up and one read. Safe from several threads.
  Result<Bytes> readSample(std::size_t track, std::uint64_t sample, std::size_t limit) const;
  /// The bytes from a place of the file on, into memory that is there; how many there were.
  Result<std::size_t> read(std::uint64_t offset, std::span<std::uint8_t> bytes) const {
    return file_.read(offset, bytes);
  }

 private:
  Result<void> load();
  Result<void> loadFragments(const MovieAtoms& movie, std::uint64_t begin);
  void settleDurations();

  ReadableFile file_;
  FourCC majorBrand_ = 0;
  bool fragmented_ = false;
  bool compressed_ = false;
  std::uint64_t movieAtomOffset_ = 0;
  std::int32_t timeScale_ = 0;
  std::uint64_t duration_ = 0;
  std::vector<TrackInfo> tracks_;
  std::unique_ptr<Lazy> lazy_;
};

}  // namespace movie
