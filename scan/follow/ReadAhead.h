#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>

#include "scan/align/FrameRow.h"
#include "scan/align/Signature.h"

namespace scan {

/// A frame as it comes from a side, ready to be compared.
struct ReadFrame {
  std::size_t number = 0;
  double time = 0;  ///< in seconds
  Thumbnail thumbnail;
  Signature signature;
};

/// What of a frame its signature is of.
struct Looks {
  diagnosis::Region part;
  double exponent = 1;
};

Signature signatureOf(const Thumbnail& thumbnail, const Looks& looks);

movie::Result<ReadFrame> readFrame(FrameRow& row, std::size_t number, const Looks& looks);

/// The frames of a row one after another, read by a thread of its own a few frames ahead. Used by one other thread.
class ReadAhead {
 public:
  /// From `first` up to `end`.
  ReadAhead(std::unique_ptr<FrameRow> row, const Looks& looks, std::size_t first, std::size_t end);
  /// The frame that is being decoded is waited for.
  ~ReadAhead();
  ReadAhead(const ReadAhead&) = delete;
  ReadAhead& operator=(const ReadAhead&) = delete;

  /// The next frame; waits for it. None at the end, and after an error.
  std::optional<movie::Result<ReadFrame>> next();

 private:
  void read();
  bool put(movie::Result<ReadFrame> frame);

  std::unique_ptr<FrameRow> row_;
  Looks looks_;
  std::size_t next_, end_;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<movie::Result<ReadFrame>> frames_;
  bool ended_ = false, stopped_ = false;
  std::thread thread_;
};

}  // namespace scan
