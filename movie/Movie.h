#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "movie/EditList.h"
#include "movie/atoms/ImageDescription.h"
#include "movie/atoms/MovieError.h"
#include "movie/atoms/MovieFile.h"
#include "movie/atoms/MovieTime.h"
#include "movie/copy/FlattenedCopy.h"
#include "movie/decode/MovieDecoder.h"
#include "movie/render/RgbFrame.h"
#include "movie/save/MetadataSave.h"

namespace movie {

/// A track's media: its numbers, and its sample descriptions, which a movie can replace in memory.
class Media {
 public:
  FourCC type() const { return info_->mediaType; }
  std::int64_t sampleCount() const { return static_cast<std::int64_t>(info_->sampleCount); }
  std::int32_t timeScale() const { return info_->mediaTimeScale; }
  MovieTime duration() const;

  /// 1-based, as the toolbox counts. None when there is no such description.
  std::size_t sampleDescriptionCount() const { return info_->sampleDescriptions.size(); }
  std::optional<ImageDescription> imageDescription(std::size_t index) const;  ///< video media only
  std::optional<Bytes> sampleDescription(std::size_t index) const;            ///< as stored or as last set
  /// Replaces a sample description in this movie only; the file stays as it is. False when there is no such
  /// description.
  bool setSampleDescription(std::size_t index, const ImageDescription& description);

 private:
  friend class Track;
  explicit Media(const TrackInfo& info) : info_(&info) {}
  const TrackInfo* info_;
  std::vector<std::optional<Bytes>> edited_;
};

class Track {
 public:
  std::uint32_t id() const { return info_->id; }
  FourCC mediaType() const { return info_->mediaType; }
  Media& media() { return media_; }
  const Media& media() const { return media_; }
  const TrackInfo& info() const { return *info_; }

 private:
  friend class Movie;
  Track(const TrackInfo& info, std::size_t index) : info_(&info), index_(index), media_(info) {}
  void rebind(const TrackInfo& info) { media_.info_ = info_ = &info; }
  void forgetEdits() { media_.edited_.clear(); }
  const TrackInfo* info_;
  std::size_t index_;
  Media media_;
};

/// The start of a movie's timecode, as its first timecode track gives it.
struct TimecodeStart {
  std::int32_t frameNumber = 0;  ///< of the first frame
  std::uint32_t flags = 0;       ///< bit 0: drop frame
};

/// How frameImageAtTime renders.
enum class FrameStyle {
  Measurement,  ///< video-range RGB, stretched to the size asked for (renderMeasurementFrame)
  Display       ///< as an sRGB display shows it under the colours of the image description (renderDisplayFrame)
};

struct FrameImageRequest {
  /// In pixels, as shown; 0 x 0 keeps the size of the clean aperture.
  int width = 320, height = 240;
  FrameStyle style = FrameStyle::Measurement;
};

struct PlayedFrameRequest {
  int width = 0, height = 0;  ///< as FrameImageRequest's
  /// The frame that will be asked for next, where that is known.
  std::optional<FrameSpan> next = std::nullopt;
  /// Asked before every sample that is decoded; true ends the work. May be empty.
  std::function<bool()> givenUp = nullptr;
  bool digested = false;  ///< with Picture::digest; of a picture only
};

/// An opened movie: shared, immutable file below; its own playhead and its own edits of sample descriptions above. Used
/// by one thread at a time; copies are independent and may be used on other threads. An empty movie has no tracks.
class Movie {
 public:
  /// Whether the file's atoms make a movie, whatever its name says.
  static bool canInitWithFile(const std::string& path);
  static Result<std::unique_ptr<Movie>> movieWithFile(const std::string& path);
  static std::unique_ptr<Movie> movie();

  ~Movie();
  std::unique_ptr<Movie> copy() const;

  const std::string& path() const;                                        ///< empty for an empty movie
  const std::shared_ptr<const MovieFile>& file() const { return file_; }  ///< null for an empty movie
  /// Whether the path leads to the very file that is open: not once another file took its name. False for an empty
  /// movie.
  bool standsAtItsPath() const;

  /// Whether there are edited sample descriptions that the file has not.
  bool hasUnsavedChanges() const { return !edits().empty(); }

  /// Whether updateMovieFile() would begin, now; the error's reason says why not. Nothing is changed on disk.
  Result<void> canUpdateMovieFile() const;

  /// Saves the edited sample descriptions in the movie's file, in place: see saveMetadata() for what holds then and for
  /// the errors, after which the movie has its edits still. Otherwise it holds the file as newly opened, and no edits;
  /// where the outcome is uncertain it keeps them. It is so, too, where the file does not open again or another took
  /// its name meanwhile and lacks the edits, which is noted. Copies read their frames as before; they themselves can no
  /// longer save.
  Result<SaveOutcome> updateMovieFile();

  /// Writes this movie, its edited sample descriptions included, as a self-contained copy: see writeFlattenedCopy() for
  /// what holds then, for `progress` and for the errors. The movie keeps its file, its edits and its playhead. Where
  /// the target is the movie's own file it goes on with the new one; an error then can also mean that the new one
  /// stands but cannot be opened again, and the movie goes on with the old one.
  Result<void> writeToFile(const std::string& path, const CopyProgress& progress = {});

  void gotoBeginning();
  MovieTime currentTime() const { return currentTime_; }
  void setCurrentTime(const MovieTime& time) { currentTime_ = time; }
  MovieTime duration() const;
  std::int32_t timeScale() const;

  /// In track order. The pointers live as long as this movie.
  std::vector<Track*> tracksOfMediaType(FourCC mediaType);
  std::vector<const Track*> tracksOfMediaType(FourCC mediaType) const;

  /// From the first timecode track: what it says at media time 0, whatever its edit list. None without such a track or
  /// with a sample description too short to tell. A sample that cannot be read counts as frame 0. Source: QTFF
  /// "Timecode sample description".
  std::optional<TimecodeStart> timecodeStart() const;

  /// The frame of the first video track, enabled or not, that is on screen at a movie time (see EditList.h for which
  /// that is), inside the clean aperture and turned by the track's matrix. The colours are those of the first image
  /// description as this movie has it. Errors: no video track, no sample, or what the decoder says.
  Result<RgbFrame> frameImageAtTime(const MovieTime& time, const FrameImageRequest& request);

  /// The same frame as it is decoded: in its own colours, of the size asked for, turned by the track's matrix.
  Result<Picture> pictureAtTime(const MovieTime& time, int width, int height);

  /// The range that the first picture's own bitstream states, or else its container; decodes that picture. Unspecified
  /// where neither does, and without a picture.
  PictureRange codedRange();

  /// The stay on screen of the frame that frameImageAtTime() shows at a time, of the one before it and of the one after
  /// it. None without a frame.
  std::optional<FrameSpan> frameSpanAt(const MovieTime& time) const;
  std::optional<FrameSpan> frameSpanBefore(const MovieTime& time) const;
  std::optional<FrameSpan> frameSpanAfter(const MovieTime& time) const;
  /// Of the frames that have to be decoded to show the one at a time, the first on screen: a time not after that one.
  MovieTime decodingStartOf(const FrameSpan& span) const;

  /// The frame of a span in Display style, quick for frames in a row: see MovieDecoder. None when it was given up.
  Result<std::optional<RgbFrame>> playedFrame(const FrameSpan& span, const PlayedFrameRequest& request);

  /// The same frame as it is decoded: in its own colours, turned by the track's matrix.
  Result<std::optional<Picture>> playedPicture(const FrameSpan& span, const PlayedFrameRequest& request);

 private:
  Movie() = default;
  const Track* firstTrack(FourCC mediaType) const;
  std::vector<SampleDescriptionEdit> edits() const;
  Result<void> reopen();
  Result<MovieDecoder*> decoder(std::size_t track);
  Result<Picture> pictureAt(const Track& track, const PictureRequest& request);
  Result<Picture> pictureOnScreen(const MovieTime& time, int width, int height);
  Result<std::optional<Picture>> pictureInRow(const FrameSpan& span, const PlayedFrameRequest& request);
  tl::unexpected<MovieError> failure(Reason why) const;

  std::shared_ptr<const MovieFile> file_;
  std::vector<std::unique_ptr<Track>> tracks_;
  MovieTime currentTime_;
  std::unique_ptr<MovieDecoder> decoder_;
  std::size_t decoderTrack_ = 0;
};

}  // namespace movie
