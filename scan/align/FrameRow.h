#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "diagnosis/Signal.h"
#include "movie/atoms/MovieError.h"

namespace scan {

/// The size of a thumbnail, whatever the picture's shape: each of its samples is the mean over an area, in the codes of
/// the file.
constexpr int thumbnailWidth = 160, thumbnailHeight = 90;

/// A frame as it is compared.
struct Thumbnail {
  diagnosis::Signal signal;  ///< thumbnailWidth x thumbnailHeight, in the Y'PbPr that both sides are compared in
  std::uint64_t digest = 0;  ///< of all samples of the whole picture, as it is coded; 0 for none
};

/// Frames from one up to another that is no more of them.
struct FrameRange {
  std::size_t first = 0, end = 0;
  std::size_t count() const { return end - first; }
  friend bool operator==(const FrameRange&, const FrameRange&) = default;
};

/// What the numbers of a side are, without a look at its pictures.
struct RowShape {
  std::size_t frames = 0;
  double seconds = 0;     ///< from the beginning of the first frame to the end of the last
  double aspect = 1;      ///< width over height, as shown
  std::size_t every = 1;  ///< the row has every so many-th frame of its movie
  std::size_t all = 0;    ///< then: how many frames its movie has in that time
  /// Frames a second, on average; 0 without frames.
  double rate() const { return seconds > 0 ? static_cast<double>(frames) / seconds : 0; }
  /// The same of the movie.
  double movieRate() const { return every > 1 && seconds > 0 ? static_cast<double>(all) / seconds : rate(); }
};

/// The frames of a side in the order in which they are shown, numbered from 0. Used by one thread at a time; copies
/// may be used on others.
class FrameRow {
 public:
  virtual ~FrameRow() = default;
  virtual std::unique_ptr<FrameRow> copy() const = 0;

  virtual RowShape shape() const = 0;
  /// When a frame comes on screen, in seconds from the movie's beginning; never falls. Of shape().frames: when the last
  /// one goes.
  virtual double timeOf(std::size_t frame) const = 0;
  /// Frames that can be had without decoding others first, ascending.
  virtual std::vector<std::size_t> syncFrames() const = 0;
  /// Quickest for frames in a row.
  virtual movie::Result<Thumbnail> thumbnail(std::size_t frame) = 0;
};

/// The last frame that begins at or before a time, give or take rounding; the first for a time before all. The row has
/// frames.
std::size_t frameAt(const FrameRow& row, double time);

/// The frame whose beginning is nearest, counted on at the average rate beyond both ends, where no frame is.
std::int64_t nearestFrame(const FrameRow& row, double time);

}  // namespace scan
