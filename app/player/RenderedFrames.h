#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>

#include "movie/EditList.h"
#include "movie/atoms/MovieError.h"
#include "movie/atoms/MovieTime.h"
#include "movie/render/RgbFrame.h"

namespace player {

/// A picture as a view shows it.
struct ShownFrame {
  movie::RgbFrame image;  ///< in sRGB, under the colours of the movie's image description; empty when it failed
  movie::MovieTime time;  ///< when it comes on screen
  std::uint64_t sample = 0;
  std::optional<movie::MovieError> error;  ///< why there is no image
};

struct PictureSize {
  int width = 0, height = 0;  ///< 0 x 0: the movie's own
  friend bool operator==(const PictureSize&, const PictureSize&) = default;
};

/// The rendered frames of a movie around its playhead, by the microsecond they come on screen. A plain container: its
/// owner locks.
class RenderedFrames {
 public:
  struct Entry {
    std::int64_t end = 0;  ///< when it leaves the screen
    PictureSize size;      ///< that was asked for
    std::shared_ptr<const ShownFrame> frame;
  };
  using Map = std::map<std::int64_t, Entry>;

  /// More than this is not kept, but for a few however large they are.
  static constexpr std::size_t mostBytes = std::size_t{96} << 20;
  static constexpr std::size_t mostFrames = 400, fewestFrames = 8;

  void clear();
  /// Takes the place of a frame with the same start.
  void put(const movie::FrameSpan& span, PictureSize size, std::shared_ptr<const ShownFrame> frame);
  std::shared_ptr<const ShownFrame> at(std::int64_t start) const;
  bool holds(std::int64_t start) const { return frames_.count(start) != 0; }
  bool holds(std::int64_t start, PictureSize size) const;
  /// The latest to come on screen at or before a position, in the direction of play; null without one.
  std::shared_ptr<const ShownFrame> latestBy(std::int64_t position, bool forward) const;
  /// How many come on screen after `low` and not after `high`.
  std::size_t countBetween(std::int64_t low, std::int64_t high) const;

  /// Lets go of what lies behind a moving playhead, but for the latest there, and of what is farthest away where there
  /// is too much. True when anything went.
  bool trim(std::int64_t position, double rate);

  const Map& all() const { return frames_; }
  std::size_t bytes() const { return bytes_; }

 private:
  Map::iterator erase(Map::iterator place);

  Map frames_;
  std::size_t bytes_ = 0;
};

}  // namespace player
