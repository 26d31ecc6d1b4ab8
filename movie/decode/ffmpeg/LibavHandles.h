#pragma once

#include <memory>

struct AVCodecContext;
struct AVCodecParameters;
struct AVFrame;
struct AVPacket;

namespace movie {

/// Owners of libav's objects; null where an allocation failed.
struct LibavDeleter {
  void operator()(AVCodecContext* context) const;
  void operator()(AVCodecParameters* parameters) const;
  void operator()(AVFrame* frame) const;
  void operator()(AVPacket* packet) const;
};

template <typename T>
using LibavPointer = std::unique_ptr<T, LibavDeleter>;

}  // namespace movie
