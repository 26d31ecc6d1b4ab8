#pragma once

#include <memory>
#include <vector>

#include "diagnosis/Tags.h"
#include "movie/Movie.h"
#include "scan/align/FrameRow.h"

namespace scan {

/// The frames of a movie's first video track, as they come on screen: after its edit list, turned as it is shown.
class MovieRow final : public FrameRow {
 public:
  /// Works on a copy of the movie; decodes its first picture. Error: no video track, or that picture cannot be had.
  static movie::Result<std::unique_ptr<MovieRow>> of(const movie::Movie& movie);

  /// What the movie says of its colours, and its first picture.
  const diagnosis::SideTags& tags() const { return tags_; }
  /// Thumbnails are in the Y'PbPr of this matrix from now on: an ITU-T H.273 index.
  void compareIn(std::uint16_t matrix) { matrix_ = matrix; }
  /// When a frame comes on screen, exactly; of shape().frames: when the last one goes.
  movie::MovieTime movieTimeOf(std::size_t frame) const;

  std::unique_ptr<FrameRow> copy() const override;
  RowShape shape() const override;
  double timeOf(std::size_t frame) const override;
  std::vector<std::size_t> syncFrames() const override { return sync_; }
  movie::Result<Thumbnail> thumbnail(std::size_t frame) override;

 private:
  MovieRow() = default;
  void readFrames();

  std::unique_ptr<movie::Movie> movie_;
  std::vector<std::int64_t> starts_;  ///< of the frames, in microseconds; behind them the end of the last one
  std::vector<std::size_t> sync_;
  double aspect_ = 1;
  diagnosis::SideTags tags_;
  std::uint16_t matrix_ = 1;
};

}  // namespace scan
