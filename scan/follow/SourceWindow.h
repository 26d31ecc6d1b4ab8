#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <optional>

#include "scan/follow/ReadAhead.h"

namespace scan {

/// Frames of a row around a place that moves on: those behind it are kept for a while. A thread reads ahead.
class SourceWindow {
 public:
  /// Which frames are read.
  enum class Reading {
    All,    ///< by a thread, ahead
    Asked,  ///< those that are asked for alone, at once: for places that are far apart
  };
  /// `kept`: how many frames stay of those before the last one that was asked for.
  SourceWindow(const FrameRow& row, const Looks& looks, std::size_t kept, Reading reading);

  /// Has the frames from `first` up to `end` read, as far as the row has them; a place far from the last one is gone
  /// to. What is read already is quick. False once the row cannot be read on, which failure() tells of.
  bool reach(std::int64_t first, std::int64_t end);
  /// A frame that was read and is still kept; else null.
  const ReadFrame* frame(std::int64_t number) const;
  /// Signatures are of other looks from now on.
  void lookAgain(const Looks& looks);
  const std::optional<movie::MovieError>& failure() const { return failure_; }
  std::size_t failedAt() const { return failedAt_; }

 private:
  void goTo(std::size_t first);
  bool readAsked(std::size_t from, std::size_t to);
  bool take(movie::Result<ReadFrame> read);

  const FrameRow& row_;
  Looks looks_;
  std::size_t kept_;
  Reading reading_;
  std::unique_ptr<ReadAhead> reader_;
  std::unique_ptr<FrameRow> own_;  ///< that is read without a thread
  std::deque<ReadFrame> frames_;   ///< ascending
  std::size_t next_ = 0;           ///< that the reader will give
  std::optional<movie::MovieError> failure_;
  std::size_t failedAt_ = 0;
};

}  // namespace scan
