#pragma once

#include <cstdint>
#include <memory>

struct AVFrame;

namespace movie {

/// All samples of a frame in one number, as Picture::digest has it. What is read of the frame besides is told here
/// first, so that its rows come from memory once only.
class FrameDigest {
 public:
  explicit FrameDigest(const AVFrame& frame);
  ~FrameDigest();
  FrameDigest(FrameDigest&&) noexcept;
  FrameDigest& operator=(FrameDigest&&) = delete;

  /// Takes the rows of a plane before `end`, and of the planes before it what has not been taken.
  void reach(int plane, int end);
  /// Takes all the rest. 0 for a frame of an unknown format.
  std::uint64_t value();

 private:
  struct Rows;
  std::unique_ptr<Rows> rows_;
};

}  // namespace movie
