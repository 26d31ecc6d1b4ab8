#include "scan/align/SampledRow.h"

#include <algorithm>
#include <utility>

namespace scan {

SampledRow::SampledRow(FrameRow& row, const FrameRange& part, std::size_t every)
    : row_(&row), part_(part), every_(every), count_((part.count() + every - 1) / every) {}

std::size_t SampledRow::wholeFrame(std::size_t frame) const {
  return std::min(part_.end, part_.first + frame * every_);
}

std::unique_ptr<FrameRow> SampledRow::copy() const {
  std::unique_ptr<FrameRow> whole = row_->copy();
  auto result = std::make_unique<SampledRow>(*whole, part_, every_);
  result->own_ = std::move(whole);
  return result;
}

RowShape SampledRow::shape() const {
  return {count_, row_->timeOf(part_.end) - row_->timeOf(part_.first), row_->shape().aspect, every_, part_.count()};
}

double SampledRow::timeOf(std::size_t frame) const {
  return row_->timeOf(wholeFrame(frame));
}

std::vector<std::size_t> SampledRow::syncFrames() const {
  std::vector<std::size_t> result;
  for (const std::size_t frame : row_->syncFrames()) {
    const bool isIn = frame >= part_.first && frame < part_.end && (frame - part_.first) % every_ == 0;
    if (isIn) result.push_back((frame - part_.first) / every_);
  }
  return result;
}

movie::Result<Thumbnail> SampledRow::thumbnail(std::size_t frame) {
  return row_->thumbnail(wholeFrame(frame));
}

}  // namespace scan
