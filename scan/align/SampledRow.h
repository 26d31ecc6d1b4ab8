#pragma once

#include <memory>

#include "scan/align/FrameRow.h"

namespace scan {

/// Every so many-th frame of a part of a row, as a row: its first one is the part's first.
class SampledRow final : public FrameRow {
 public:
  /// The row outlives this one. `every`: at least 1. The part lies within the row.
  SampledRow(FrameRow& row, const FrameRange& part, std::size_t every);

  /// Which frame of the whole row a frame of this one is; of shape().frames: the part's end.
  std::size_t wholeFrame(std::size_t frame) const;
  const FrameRow& whole() const { return *row_; }
  std::size_t every() const { return every_; }

  std::unique_ptr<FrameRow> copy() const override;
  RowShape shape() const override;
  double timeOf(std::size_t frame) const override;
  std::vector<std::size_t> syncFrames() const override;
  movie::Result<Thumbnail> thumbnail(std::size_t frame) override;

 private:
  std::unique_ptr<FrameRow> own_;  ///< of a copy
  FrameRow* row_;
  FrameRange part_;
  std::size_t every_, count_;
};

}  // namespace scan
