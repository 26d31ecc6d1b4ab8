#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "movie/decode/PictureStream.h"
#include "movie/decode/ffmpeg/DecodingTrack.h"
#include "movie/decode/ffmpeg/LibavHandles.h"

namespace movie {

/// Pictures in a row of one track: one decoder that keeps running, and the frames that it gave too early.
class FfmpegPictureStream final : public PictureStream {
 public:
  static Result<std::unique_ptr<PictureStream>> make(std::shared_ptr<const MovieFile> file, std::size_t track);

  Result<std::optional<Picture>> picture(const StreamRequest& request) override;

 private:
  /// A frame with the sample that it is of.
  struct Held {
    LibavPointer<AVFrame> frame;
    std::uint64_t sample = 0;
    std::int64_t time = 0;  ///< of presentation
  };
  enum class Outcome { Found, Missing, GivenUp, TooShallow };

  explicit FfmpegPictureStream(std::unique_ptr<DecodingTrack> track) : track_(std::move(track)) {}

  SampleDecoder& decoder() const { return track_->decoder(); }
  Result<void> useDescriptionOf(std::uint64_t sample);
  void forget();
  Result<Outcome> bringUp(const StreamRequest& request);
  Result<Outcome> startFor(const StreamRequest& request);
  Result<void> restart(std::uint64_t start, const PresentedSample& target);
  bool canGoOnTo(const PresentedSample& target) const;
  bool isSkipped(std::uint64_t sample) const;
  bool isOverdue(const PresentedSample& target) const;
  bool isAhead(std::uint64_t sample) const;
  Result<Outcome> advance(const StreamRequest& request);
  Result<bool> sendNext(const StreamRequest& request);
  bool mayPassOver(std::uint64_t sample, const StreamRequest& request) const;
  int receiveFrames();
  bool takeUp(const PresentedSample& target);
  bool takeNearest(const PresentedSample& target);
  bool isProof(const Held& held) const;

  std::unique_ptr<DecodingTrack> track_;
  int depth_ = 0;  ///< how far pictures are reordered, as far as known

  bool running_ = false;        ///< there is a start, and the decoder is somewhere after it
  bool drained_ = false;        ///< it has been given everything
  bool proven_ = false;         ///< the start is one that gives what a full decode gives
  bool startIsKey_ = false;     ///< it gave a frame that needs no other
  std::uint64_t start_ = 0;     ///< where decoding began
  std::uint64_t sentFrom_ = 0;  ///< since here no sample was jumped over
  std::uint64_t next_ = 0;      ///< the next sample to send
  std::uint64_t bytesLeft_ = 0;
  std::int64_t passedTime_ = 0;         ///< nothing presented up to here comes out any more
  std::vector<std::uint64_t> skipped_;  ///< samples that were left out of decoding
  int error_ = 0;                       ///< libav's last

  std::deque<Held> ahead_;  ///< frames that came out and were not asked for yet
  Held current_;            ///< the last one passed or given
  /// The sample that current_ was given for: its own, or one that has no frame.
  std::optional<std::uint64_t> given_;
};

}  // namespace movie
