#pragma once

#include <cstdint>
#include <span>

#include "movie/atoms/MovieError.h"

namespace movie {

/// The sound of one track as two sides, left and right. Its frames are counted from the beginning of the media, before
/// any edit list: frame n is heard n / rate() seconds after media time 0.
///
/// One channel is heard on both sides, two are left and right. Of more, each side gets its own channel and its share of
/// the others, scaled so that full scale on all of them is full scale again:
///   3  L R C                 4  two pairs        5  L R C Ls Rs     6  L R C LFE Ls Rs
///   7  L R C LFE Ls Rs Cs    8  L R C LFE Ls Rs Lrs Rrs             others: left and right by turns
/// A channel in the middle and one behind is at -3 dB, the low-frequency one is left out.
///
/// Used by one thread at a time; different streams of one file may be used on different threads.
class SoundStream {
 public:
  virtual ~SoundStream() = default;

  virtual int rate() const = 0;                 ///< frames a second, above 0
  virtual std::int64_t frameCount() const = 0;  ///< of the media, rounded up

  /// Fills `stereo`, two floats a frame, with the frames from `first` on; full scale is -1 to 1, and what the media has
  /// above that stays. Silence stands for what lies outside of the media or cannot be decoded. Reading on where the
  /// last read ended is quick, anything else starts afresh. Error: the first thing that could not be read or decoded;
  /// the frames are filled all the same, and reading on may succeed.
  virtual Result<void> read(std::int64_t first, std::span<float> stereo) = 0;
};

}  // namespace movie
