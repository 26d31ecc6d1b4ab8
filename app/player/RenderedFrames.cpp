#include "app/player/RenderedFrames.h"

#include <iterator>
#include <utility>

namespace player {

void RenderedFrames::clear() {
  frames_.clear();
  bytes_ = 0;
}

RenderedFrames::Map::iterator RenderedFrames::erase(Map::iterator place) {
  bytes_ -= place->second.frame->image.samples.size();
  return frames_.erase(place);
}

void RenderedFrames::put(const movie::FrameSpan& span, PictureSize size, std::shared_ptr<const ShownFrame> frame) {
  if (const auto old = frames_.find(span.startMicros); old != frames_.end()) erase(old);
  bytes_ += frame->image.samples.size();
  frames_[span.startMicros] = {span.endMicros, size, std::move(frame)};
}

std::shared_ptr<const ShownFrame> RenderedFrames::at(std::int64_t start) const {
  const auto found = frames_.find(start);
  return found == frames_.end() ? nullptr : found->second.frame;
}

bool RenderedFrames::holds(std::int64_t start, PictureSize size) const {
  const auto found = frames_.find(start);
  return found != frames_.end() && found->second.size == size;
}

std::shared_ptr<const ShownFrame> RenderedFrames::latestBy(std::int64_t position, bool forward) const {
  const auto after = frames_.upper_bound(position);
  if (forward) return after == frames_.begin() ? nullptr : std::prev(after)->second.frame;
  return after == frames_.end() ? nullptr : after->second.frame;
}

std::size_t RenderedFrames::countBetween(std::int64_t low, std::int64_t high) const {
  if (high <= low) return 0;
  return static_cast<std::size_t>(std::distance(frames_.upper_bound(low), frames_.upper_bound(high)));
}

bool RenderedFrames::trim(std::int64_t position, double rate) {
  const std::size_t before = frames_.size();
  if (rate > 0) {
    while (frames_.size() > 1 && std::next(frames_.begin())->first <= position) erase(frames_.begin());
  } else if (rate < 0) {
    while (frames_.size() > 1 && std::prev(frames_.end(), 2)->first > position) erase(std::prev(frames_.end()));
  }
  while (frames_.size() > mostFrames || (bytes_ > mostBytes && frames_.size() > fewestFrames)) {
    const auto last = std::prev(frames_.end());
    const bool firstIsFarther = position - frames_.begin()->first > last->first - position;
    erase(firstIsFarther ? frames_.begin() : last);
  }
  return frames_.size() != before;
}

}  // namespace player
