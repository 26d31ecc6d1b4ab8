#pragma once

#include <cstddef>
#include <mutex>

struct AVBufferPool;
struct AVBufferRef;
struct AVCodecContext;
struct AVFrame;

namespace movie {

/// Memory for a decoder's pictures in large pages: in small ones, a picture of high definition costs the system a few
/// thousand page faults the first time it is written, which is much of what a single picture costs at all. Laid out as
/// libav does it itself, and zero at first. Small pictures and unusual formats are left to libav.
class FrameMemory {
 public:
  FrameMemory() = default;
  ~FrameMemory();
  FrameMemory(const FrameMemory&) = delete;
  FrameMemory& operator=(const FrameMemory&) = delete;

  /// To be called before the decoder is opened; this must outlive it. Pictures may outlive both.
  void serve(AVCodecContext& context);

 private:
  static int getBuffer(AVCodecContext* context, AVFrame* frame, int flags);
  AVBufferRef* take(std::size_t size);

  std::mutex mutex_;
  AVBufferPool* pool_ = nullptr;
  std::size_t size_ = 0;  ///< of the pool's pieces
};

}  // namespace movie
