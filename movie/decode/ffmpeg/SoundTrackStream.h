#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "movie/atoms/MovieFile.h"
#include "movie/decode/SoundStream.h"
#include "movie/decode/ffmpeg/SoundDecoder.h"

namespace movie {

/// The sound of one track, found through the movie file's own tables. A track has one sample for every frame
/// (uncompressed sound and what is counted like it), which is read in runs, or one for every packet.
///
/// Older files give 1 as the size of a sample, whatever a frame takes. The places of samples within a chunk are wrong
/// then, but where a chunk begins is right, and so runs are counted from there.
class SoundTrackStream final : public SoundStream {
 public:
  static Result<std::unique_ptr<SoundStream>> make(std::shared_ptr<const MovieFile> file, std::size_t track);

  int rate() const override { return rate_; }
  std::int64_t frameCount() const override { return frameCount_; }
  Result<void> read(std::int64_t first, std::span<float> stereo) override;

 private:
  SoundTrackStream(std::shared_ptr<const MovieFile> file, std::size_t track);

  Result<void> settleRate();
  Result<void> useDescription(std::size_t description);
  void seek(std::int64_t frame);
  Result<void> decodeMore();
  Result<void> decodeRun();
  Result<void> decodePackets(std::uint64_t offset, std::uint64_t count);
  Result<void> decodePacket();
  Result<Bytes> readPacket(std::uint64_t sample, std::size_t& description) const;
  Result<void> decode(ByteView packet);
  std::int64_t copyBlock(std::int64_t first, std::span<float> stereo) const;
  std::int64_t frameOf(std::int64_t mediaTime) const;
  std::int64_t blockEnd() const { return blockStart_ + static_cast<std::int64_t>(block_.size() / 2); }
  tl::unexpected<MovieError> failure(Clause why) const;

  std::shared_ptr<const MovieFile> file_;
  std::size_t track_;
  const TrackInfo& info_;
  const SampleTable& table_;
  std::unique_ptr<SoundDecoder> decoder_;  ///< of the description that was needed last
  std::size_t description_ = 0;            ///< its place among the track's; only with a decoder
  bool frameByFrame_ = false;              ///< one sample is one frame
  int rate_ = 0;
  std::int64_t frameCount_ = 0;

  std::uint64_t nextSample_ = 0;  ///< to decode
  std::int64_t expected_ = 0;     ///< the frame at which the next read continues
  std::int64_t blockStart_ = 0;   ///< the frames that were decoded last: the first one's number
  std::vector<float> block_;
};

}  // namespace movie
