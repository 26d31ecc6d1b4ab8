#include "scan/follow/ReadAhead.h"

#include <utility>

namespace scan {
namespace {

constexpr std::size_t mostAhead = 16;

}  // namespace

Signature signatureOf(const Thumbnail& thumbnail, const Looks& looks) {
  return signatureOf(lumaOf(thumbnail.signal), looks.part, looks.exponent);
}

movie::Result<ReadFrame> readFrame(FrameRow& row, std::size_t number, const Looks& looks) {
  TRY(Thumbnail thumbnail, row.thumbnail(number));
  const Signature signature = signatureOf(thumbnail, looks);
  return ReadFrame{number, row.timeOf(number), std::move(thumbnail), signature};
}

ReadAhead::ReadAhead(std::unique_ptr<FrameRow> row, const Looks& looks, std::size_t first, std::size_t end)
    : row_(std::move(row)), looks_(looks), next_(first), end_(end), thread_([this] { read(); }) {}

ReadAhead::~ReadAhead() {
  {
    const std::lock_guard lock(mutex_);
    stopped_ = true;
  }
  changed_.notify_all();
  thread_.join();
}

void ReadAhead::read() {
  for (; next_ < end_; ++next_) {
    movie::Result<ReadFrame> frame = readFrame(*row_, next_, looks_);
    const bool isLast = !frame;
    if (!put(std::move(frame))) return;
    if (isLast) break;
  }
  const std::lock_guard lock(mutex_);
  ended_ = true;
  changed_.notify_all();
}

/// Waits for room. False once it is to stop.
bool ReadAhead::put(movie::Result<ReadFrame> frame) {
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [&] { return stopped_ || frames_.size() < mostAhead; });
  if (stopped_) return false;
  frames_.push_back(std::move(frame));
  changed_.notify_all();
  return true;
}

std::optional<movie::Result<ReadFrame>> ReadAhead::next() {
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [&] { return ended_ || !frames_.empty(); });
  if (frames_.empty()) return std::nullopt;
  movie::Result<ReadFrame> frame = std::move(frames_.front());
  frames_.pop_front();
  changed_.notify_all();
  return frame;
}

}  // namespace scan
