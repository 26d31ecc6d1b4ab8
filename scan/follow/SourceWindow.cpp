#include "scan/follow/SourceWindow.h"

#include <algorithm>
#include <utility>

namespace scan {
namespace {

/// So many frames are rather read than jumped over.
constexpr std::size_t shortWay = 100;

}  // namespace

SourceWindow::SourceWindow(const FrameRow& row, const Looks& looks, std::size_t kept, Reading reading)
    : row_(row), looks_(looks), kept_(kept), reading_(reading) {
  if (reading_ == Reading::Asked) own_ = row_.copy();
}

void SourceWindow::goTo(std::size_t first) {
  reader_.reset();
  frames_.clear();
  reader_ = std::make_unique<ReadAhead>(row_.copy(), looks_, first, row_.shape().frames);
  next_ = first;
}

bool SourceWindow::reach(std::int64_t first, std::int64_t end) {
  const auto count = static_cast<std::int64_t>(row_.shape().frames);
  const auto from = static_cast<std::size_t>(std::clamp<std::int64_t>(first, 0, count));
  const auto to = static_cast<std::size_t>(std::clamp<std::int64_t>(end, 0, count));
  if (from >= to) return true;
  if (failure_) return to <= failedAt_ && frame(static_cast<std::int64_t>(to) - 1) != nullptr;
  if (reading_ == Reading::Asked) return readAsked(from, to);
  const std::size_t begin = frames_.empty() ? next_ : frames_.front().number;
  if (!reader_ || from < begin || from > next_ + shortWay) goTo(from);
  while (next_ < to) {
    std::optional<movie::Result<ReadFrame>> read = reader_->next();
    if (!read) return true;
    if (!take(std::move(*read))) return false;
  }
  return true;
}

/// Those that are kept are not read again, unless one is missing among them: all begins there anew.
bool SourceWindow::readAsked(std::size_t from, std::size_t to) {
  const std::size_t last = frames_.empty() ? 0 : frames_.back().number;
  for (std::size_t number = from; number < std::min(to, last); ++number) {
    if (frame(static_cast<std::int64_t>(number)) != nullptr) continue;
    frames_.clear();
    break;
  }
  next_ = frames_.empty() ? from : std::max(from, frames_.back().number + 1);
  while (next_ < to) {
    if (!take(readFrame(*own_, next_, looks_))) return false;
  }
  return true;
}

/// The frame at next_.
bool SourceWindow::take(movie::Result<ReadFrame> read) {
  if (!read) {
    failure_ = std::move(read.error());
    failedAt_ = next_;
    return false;
  }
  frames_.push_back(std::move(*read));
  ++next_;
  while (frames_.size() > kept_) frames_.pop_front();
  return true;
}

const ReadFrame* SourceWindow::frame(std::int64_t number) const {
  const auto place = std::lower_bound(
      frames_.begin(), frames_.end(), number,
      [](const ReadFrame& each, std::int64_t wanted) { return static_cast<std::int64_t>(each.number) < wanted; });
  const bool isThere = place != frames_.end() && static_cast<std::int64_t>(place->number) == number;
  return isThere ? &*place : nullptr;
}

void SourceWindow::lookAgain(const Looks& looks) {
  looks_ = looks;
  for (ReadFrame& each : frames_) each.signature = signatureOf(each.thumbnail, looks_);
  // What the reader has ready looks as before: it starts anew.
  if (!reader_) return;
  reader_.reset();
  reader_ = std::make_unique<ReadAhead>(row_.copy(), looks_, next_, row_.shape().frames);
}

}  // namespace scan
