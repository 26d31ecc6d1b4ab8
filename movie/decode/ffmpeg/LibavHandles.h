#pragma once

#include <algorithm>
#include <memory>

#include "movie/atoms/ByteOrder.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/mem.h>
}

namespace movie {

/// Owners of libav's objects; null where an allocation failed.
struct LibavDeleter {
  void operator()(AVCodecContext* context) const { avcodec_free_context(&context); }
  void operator()(AVCodecParameters* parameters) const { avcodec_parameters_free(&parameters); }
  void operator()(AVFrame* frame) const { av_frame_free(&frame); }
  void operator()(AVPacket* packet) const { av_packet_free(&packet); }
};

template <typename T>
using LibavPointer = std::unique_ptr<T, LibavDeleter>;

/// Gives a decoder's context or parameters a copy of what it is set up with. False without memory.
template <typename T>
bool copySetup(T& to, ByteView setup) {
  if (setup.empty()) return true;
  to.extradata = static_cast<std::uint8_t*>(av_mallocz(setup.size() + AV_INPUT_BUFFER_PADDING_SIZE));
  if (to.extradata == nullptr) return false;
  std::copy(setup.begin(), setup.end(), to.extradata);
  to.extradata_size = static_cast<int>(setup.size());
  return true;
}

}  // namespace movie
