#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <limits>
#include <optional>
#include <vector>

namespace scan {

/// What a frame of the destination may show.
struct Candidates {
  std::int64_t expected = 0;     ///< the frame of the source that the time line leads to; may lie outside of the source
  std::int64_t first = 0;        ///< the source's frame that the first distance is of
  std::vector<float> distances;  ///< from consecutive frames of the source; may be empty
  /// How far it is from the frame before it; unknown for the first.
  float change = std::numeric_limits<float>::infinity();
};

/// What it shows, by the cheapest path.
struct Tracked {
  std::optional<std::int64_t> source;  ///< none: no frame of the source
  float distance = 0;                  ///< from it; the least there was where there is none
};

/// Which frame of the source each frame of the destination shows: the cheapest path (Viterbi) over the frames near a
/// time line and "none of them". A frame costs its distance, at most 10, or 7 for none; a step away from the time line
/// costs 8 and a half more for every frame of it, unless it is the frame before once more that shows one frame of the
/// source once more: a picture that is held, which costs hardly anything. Given after a while: a decision is final once
/// enough frames came after it. Memory: some hundred frames' costs.
class Track {
 public:
  /// What a frame of the destination may show.
  struct State {
    std::int64_t source = 0, away = 0;  ///< a frame, and how far from the expected one; unused for none
    bool none = false;
  };

  /// Decisions are final once so many frames came after them.
  static constexpr std::size_t usuallySettled = 48;
  /// `origin`: what the frame before the first one shows, where that is known.
  explicit Track(std::size_t settledAfter = usuallySettled, std::optional<State> origin = std::nullopt)
      : settledAfter_(settledAfter), origin_(origin) {}

  void add(const Candidates& candidates);
  /// The frames that are decided, in order, each once; the rest of them with `finish`.
  std::vector<Tracked> decided();
  std::vector<Tracked> finish();
  /// Frames that were added and not given yet.
  std::size_t pending() const { return steps_.size(); }
  /// Of the last frame that `decided` gave, where all paths that are left go through it.
  const std::optional<State>& settled() const { return settled_; }

  static constexpr double costOfNone = 7, highestCost = 10;

 private:
  struct Reached : State {
    double cost = 0;     ///< of the cheapest path to it
    float distance = 0;  ///< of this frame alone
    std::size_t from = 0;
  };
  using States = std::vector<Reached>;  ///< of one frame; the last one is "none"
  static double stepCost(const State& from, const State& to, double costOfHolding);
  static void comeFrom(const States& before, States& states, double costOfHolding);
  std::vector<Tracked> traced() const;
  std::optional<State> sharedAt(std::size_t step) const;

  std::size_t settledAfter_;
  std::optional<State> origin_, settled_;
  std::deque<States> steps_;
};

}  // namespace scan
