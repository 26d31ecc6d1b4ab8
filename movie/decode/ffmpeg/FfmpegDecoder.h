#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "movie/decode/MovieDecoder.h"
#include "movie/decode/ffmpeg/FramePicture.h"
#include "movie/decode/ffmpeg/LibavHandles.h"
#include "movie/decode/ffmpeg/SampleDecoder.h"

namespace movie {

/// Pictures of one track. The samples are read through the movie file's own tables, and carry their index through the
/// decoder as their time stamp, so a frame says which sample it came from whatever the stream believes about time. Each
/// sample is decoded under its own sample description. Frames that come out too early are kept for as long as pictures
/// are asked for in a row.
class FfmpegDecoder final : public MovieDecoder {
 public:
  /// Error: there is no such track, or it holds no pictures.
  static Result<std::unique_ptr<MovieDecoder>> make(std::shared_ptr<const MovieFile> file, std::size_t track);

  Result<Picture> picture(const PictureRequest& request) override;
  Result<std::optional<Picture>> pictureInRow(const RowRequest& request) override;

 private:
  /// A frame with the sample that it is of.
  struct Held {
    LibavPointer<AVFrame> frame;
    std::uint64_t sample = 0;
    std::int64_t time = 0;  ///< of presentation
  };
  enum class Manner { Alone, InRow };
  /// What is looked for.
  struct Search {
    PresentedSample target;
    Manner manner = Manner::Alone;
    std::optional<std::int64_t> nextTime = std::nullopt;  ///< as RowRequest's
    std::function<bool()> givenUp = nullptr;              ///< as RowRequest's
  };
  /// Decoding from one start on.
  struct Run {
    std::uint64_t start = 0;
    bool proven = false;  ///< it gives what a full decode gives, or there is no better start
    std::uint64_t bytesLeft = 0;
    std::uint64_t sentFrom = start;                                      ///< since here no sample was jumped over
    std::uint64_t next = start;                                          ///< the next sample to send
    bool drained = false;                                                ///< the decoder has been given everything
    bool startIsKey = false;                                             ///< the start gave a frame that needs no other
    std::int64_t passedTime = std::numeric_limits<std::int64_t>::min();  ///< nothing up to here comes out any more
    std::vector<std::uint64_t> skipped = {};                             ///< samples that were left out of decoding
    int error = 0;                                                       ///< libav's last
  };
  enum class Outcome {
    Found,     ///< current_ is what the target shows
    Unproven,  ///< from this start that cannot be told
    GivenUp,
    TooShallow  ///< the decoder has to be told first that pictures are reordered further
  };
  enum class Start { OneOfMany, NoneBetter };

  FfmpegDecoder(std::shared_ptr<const MovieFile> file, std::size_t track)
      : file_(std::move(file)), track_(track), table_(file_->sampleTable(track)) {}

  Result<bool> find(const Search& search);
  Result<Picture> pictureOfCurrent(const PictureRequest& request, Scaling scaling) const;
  tl::unexpected<MovieError> failure(Clause why) const { return failed(file_->path(), std::move(why)); }
  Result<void> useDescriptionOf(std::uint64_t sample);
  bool inDescriptionInUse(std::uint64_t sample) const;
  std::uint64_t startAtOrBefore(std::uint64_t from, const PresentedSample& target) const;
  std::vector<std::uint64_t> startsFor(const PresentedSample& target) const;
  int reorderDepthAt(std::uint64_t sample, std::int64_t presentationTime) const;
  void forget();
  Result<Outcome> startFor(const Search& search);
  Result<Outcome> decodeFrom(std::uint64_t start, Start kind, const Search& search);
  Result<void> restart(std::uint64_t start, Start kind, const PresentedSample& target);
  bool canGoOnTo(const PresentedSample& target) const;
  bool isSkipped(std::uint64_t sample) const;
  bool isOverdue(const PresentedSample& target) const;
  Result<Outcome> advance(const Search& search);
  bool hasAllFor(const Search& search) const;
  bool tooShallowForNext();
  Result<void> sendNext(const Search& search);
  Result<std::size_t> readPacket(std::uint64_t sample);
  bool mayPassOver(std::uint64_t sample, const Search& search) const;
  int receiveFrames();
  bool takeUp(const PresentedSample& target);
  Result<Outcome> takeNearest(const PresentedSample& target);
  bool isProof(const Held& held) const;

  std::shared_ptr<const MovieFile> file_;
  std::size_t track_;
  const SampleTable& table_;
  std::unique_ptr<SampleDecoder> decoder_;  ///< of the description in use
  std::size_t description_ = 0;             ///< its place among the track's; only with a decoder
  std::uint64_t firstSample_ = 0;           ///< where the run of samples begins that it was put to use for

  int depth_ = 0;           ///< how far pictures are reordered, as far as known
  std::optional<Run> run_;  ///< that the next picture in a row may go on with
  std::deque<Held> ahead_;  ///< frames that came out and were not asked for yet
  Held current_;            ///< the last one passed or given
  /// The sample that current_ was given for: its own, or one that has no frame.
  std::optional<std::uint64_t> given_;
};

}  // namespace movie
