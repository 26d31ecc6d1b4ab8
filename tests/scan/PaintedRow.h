#pragma once

#include <functional>
#include <vector>

#include "diagnosis/Placement.h"
#include "scan/align/FrameRow.h"

namespace scan::test {

/// What a frame of a painted movie shows.
struct Shown {
  double content = 0;   ///< a time of the master: shots of a few seconds, each moving; below 0 they are others
  double exponent = 1;  ///< luma is raised to it
  double mixed = 0;     ///< share of `other`
  double other = 0;     ///< a time of the master, too
  bool coded = false;   ///< with a little noise, as an encoder leaves it
  double noise = 0.012;
  bool black = false;
};

/// How all frames of a painted movie lie in the picture.
struct Laid {
  diagnosis::Region part{};  ///< of the master that is shown
  diagnosis::Region box{};   ///< that it is shown in; bars around it
  bool mirrored = false;
};

/// A movie that is painted frame by frame.
class PaintedRow final : public FrameRow {
 public:
  PaintedRow(std::vector<Shown> frames, double rate, const Laid& laid = {})
      : frames_(std::move(frames)), rate_(rate), laid_(laid) {}

  std::unique_ptr<FrameRow> copy() const override { return std::make_unique<PaintedRow>(*this); }
  RowShape shape() const override { return {frames_.size(), static_cast<double>(frames_.size()) / rate_, 16.0 / 9}; }
  double timeOf(std::size_t frame) const override { return static_cast<double>(frame) / rate_; }
  std::vector<std::size_t> syncFrames() const override;
  movie::Result<Thumbnail> thumbnail(std::size_t frame) override;

  /// From this frame on nothing can be read.
  void breakAt(std::size_t frame) { broken_ = frame; }
  /// Every so many frames one can be had alone.
  void setSyncDistance(std::size_t frames) { sync_ = frames; }

 private:
  std::vector<Shown> frames_;
  double rate_;
  Laid laid_;
  std::size_t broken_ = static_cast<std::size_t>(-1), sync_ = 24;
};

/// Frames of the master between two of its times, at its own rate or another.
std::vector<Shown> master(double begin, double end, double rate = 24);

/// The same where the camera stands still: little of the picture moves.
std::vector<Shown> standing(double begin, double end);

/// One after the other.
std::vector<Shown> joined(std::vector<Shown> first, const std::vector<Shown>& second);
/// With noise, and all raised to an exponent.
std::vector<Shown> exported(std::vector<Shown> frames, double exponent = 1);

}  // namespace scan::test
