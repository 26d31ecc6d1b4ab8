#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

#include "scan/TimeMap.h"

/// When the frames of a movie come on screen, in microseconds from its beginning; behind them the end of the last one.
class FrameStarts {
 public:
  FrameStarts() = default;
  explicit FrameStarts(std::vector<std::int64_t> micros) : micros_(std::move(micros)) {}
  /// Of all frames of a row.
  static FrameStarts of(const scan::FrameRow& row);

  std::size_t frames() const { return micros_.empty() ? 0 : micros_.size() - 1; }
  /// Held at both ends; of frames(): when the last one goes. 0 without frames.
  std::int64_t startOf(std::size_t frame) const;
  /// The frame on screen; the first and the last one beyond the ends. There are frames.
  std::size_t frameAt(std::int64_t micros) const;

 private:
  std::vector<std::int64_t> micros_;
};

/// Which frame of the source is seen in a frame of the destination, and the other way round. Times are microseconds;
/// those that are given are the beginnings of frames.
class PairMap {
 public:
  /// Of each frame of the destination, from one on, the frame of the source that it shows; below 0 for none.
  struct Shown {
    std::size_t first = 0;
    std::vector<std::int32_t> source;
  };

  PairMap() = default;
  PairMap(FrameStarts source, FrameStarts dest, Shown shown, std::vector<scan::MapPiece> pieces);

  /// Whether the frame of the destination was gone through.
  bool reaches(std::int64_t destTime) const;
  /// None where the destination's frame has no counterpart, or was not gone through.
  std::optional<std::int64_t> sourceOf(std::int64_t destTime) const;
  /// Of several the one nearest to a time of the destination. Of a frame that was left out among others that were not,
  /// where it would be. None where the destination shows nothing of that time.
  std::optional<std::int64_t> destOf(std::int64_t sourceTime, std::int64_t nearDestTime) const;

  const FrameStarts& source() const { return source_; }
  const FrameStarts& dest() const { return dest_; }

 private:
  std::optional<std::int64_t> destOnLine(std::int64_t sourceTime, std::int64_t nearDestTime) const;

  FrameStarts source_, dest_;
  Shown shown_;
  std::vector<scan::MapPiece> pieces_;
  std::vector<std::pair<std::int32_t, std::uint32_t>>
      showing_;  ///< frames of the source, and who shows them; ascending
};
