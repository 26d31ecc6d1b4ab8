#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "movie/atoms/MovieError.h"
#include "movie/decode/ffmpeg/CodecHeader.h"
#include "movie/decode/ffmpeg/FrameMemory.h"
#include "movie/decode/ffmpeg/FramePicture.h"
#include "movie/decode/ffmpeg/LibavHandles.h"

namespace movie {

/// libav's decoder for the samples of one sample description. Errors are clauses.
class SampleDecoder {
 public:
  /// Error: the description cannot be understood, nothing decodes its codec, or the samples are encrypted.
  static tl::expected<std::unique_ptr<SampleDecoder>, Clause> make(FourCC majorBrand,
                                                                   const ImageDescription& description);

  bool intraOnly() const { return intraOnly_; }
  /// Whether it gives no frame after a start that it cannot decode from, and starts without a key frame where the
  /// stream says that it can; others give a spoiled frame without a word.
  bool knowsItsOwnStart() const;
  /// Whether it has to know beforehand how far pictures are reordered.
  bool needsReorderDepth() const;
  /// Whether a frame that is not referred to can be left out without a trace.
  bool unreferencedAreNotNeeded() const;
  /// How many samples more it may take before the frame of one comes out; only after restart().
  int delay() const;
  FrameOrigin frameOrigin() const;
  std::size_t sampleLimit() const { return sampleLimit_; }  ///< bytes; no sample of such pictures is larger

  /// Ready to decode from a sample that needs no earlier one. `reorderDepth` in pictures.
  tl::expected<void, Clause> restart(int reorderDepth);
  /// Whether frames that the decoder knows to be spoiled come out all the same.
  void setSpoiledFrames(bool wanted);

  /// Room for the next sample, `size` bytes above 0; what comes out for it bears that stamp. Null without memory.
  AVPacket* packet(std::size_t size, std::int64_t stamp);
  enum class Wanted { Always, IfReferred };
  /// Decodes what packet() gave, or drains the decoder. libav's code, below 0 for an error.
  int send(Wanted wanted);
  int drain();
  /// The next frame that is finished. `status` is libav's; null for any but 0.
  LibavPointer<AVFrame> receive(int& status);

 private:
  SampleDecoder(CodecHeader header, const AVCodec* codec);

  CodecHeader header_;
  const AVCodec* codec_;
  bool intraOnly_ = false;
  std::size_t sampleLimit_ = 0;
  std::int64_t pixelLimit_ = 0;  ///< no stream of that description holds larger pictures
  int openDepth_ = -1;           ///< the reorder depth the decoder was opened for; -1 while it is closed
  FrameMemory memory_;
  LibavPointer<AVCodecContext> context_;
  LibavPointer<AVPacket> packet_;
};

/// Whether samples of that type are encrypted: ISO/IEC 14496-12, 8.12, and the scheme before it. The headers in them
/// are often left readable, so that a decoder would make pictures of noise without a word.
bool isEncrypted(FourCC codec);

/// libav's words for one of its error codes.
std::string libavText(int error);

}  // namespace movie
