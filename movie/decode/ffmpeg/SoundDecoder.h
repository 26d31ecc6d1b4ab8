#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "movie/atoms/MovieError.h"
#include "movie/atoms/SoundDescription.h"
#include "movie/decode/ffmpeg/LibavHandles.h"
#include "movie/decode/ffmpeg/SoundMix.h"

namespace movie {

/// libav's decoder for the packets of one sound description. Errors are clauses.
class SoundDecoder {
 public:
  /// Error: nothing decodes the codec, its samples are encrypted, or the decoder cannot be opened.
  static tl::expected<std::unique_ptr<SoundDecoder>, Clause> make(const SoundDescription& description);

  /// Packets that all have one length and one size; 0 where they have not. Uncompressed sound has packets of one frame,
  /// of which any number may be decoded at once.
  std::uint32_t framesPerPacket() const { return framesPerPacket_; }
  std::uint32_t bytesPerPacket() const { return bytesPerPacket_; }
  /// How many packets before the first one that is wanted have to be decoded for it to come out right.
  std::uint64_t preroll() const { return preroll_; }
  /// Frames a second: the description's until a packet was decoded, from then on what came out; 0 where neither says.
  int rate() const { return rate_; }

  /// Decodes one packet, or a run of those of uncompressed sound, and appends its frames, two floats each.
  tl::expected<void, Clause> decode(ByteView packet, std::vector<float>& stereo);

 private:
  SoundDecoder() = default;

  LibavPointer<AVCodecContext> context_;
  LibavPointer<AVPacket> packet_;
  LibavPointer<AVFrame> frame_;
  std::vector<ChannelShare> shares_;
  std::uint32_t framesPerPacket_ = 0, bytesPerPacket_ = 0;
  std::uint64_t preroll_ = 0;
  int rate_ = 0;
};

}  // namespace movie
