#pragma once

#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "app/player/SoundOutput.h"
#include "movie/Movie.h"

namespace player {

/// Plays the sound of one movie beside its pictures, at their normal speed. A thread of its own decodes 0.3 s ahead of
/// what is heard. What goes wrong is heard as silence and told by problem().
///
/// The device keeps its own time. A caller that follows another clock asks now and then how far ahead() the sound is,
/// and starts it again once that is beyond toleratedDrift, which then costs no more than a short gap.
///
/// Every member is called on one thread, the output's. None waits for sound to be decoded, but setMovie() and the
/// destructor wait for the piece in work.
class SoundPlayer {
 public:
  static constexpr double toleratedDrift = 0.06;  ///< seconds

  explicit SoundPlayer(std::unique_ptr<SoundOutput> output);
  ~SoundPlayer();
  SoundPlayer(const SoundPlayer&) = delete;
  SoundPlayer& operator=(const SoundPlayer&) = delete;

  /// Takes another movie, stopped; null for none. The sound is that of all its enabled sound tracks.
  void setMovie(std::unique_ptr<movie::Movie> movie);

  /// Lets the sound be heard from that time on, now. While it plays already, the device goes on and what it holds is
  /// counted in, so that the sound is in step as soon as the new place is heard. Does nothing without sound tracks.
  void start(const movie::MovieTime& at);
  void stop();
  /// 0 to 1; values outside count as the nearer end.
  void setVolume(double volume);

  /// How many seconds what is heard now lies after a movie time; below 0 it is late. None while nothing is heard: it is
  /// stopped, there is no device, or the device has not begun yet.
  std::optional<double> ahead(const movie::MovieTime& of);

  /// Why there is silence, or less than there should be; empty for none. One sentence or clause.
  std::string problem() const;

 private:
  void work();
  bool hasWork() const;
  std::int64_t heldFrames() const { return static_cast<std::int64_t>(ring_.size() / 2); }
  void dropPulled();
  void pull(std::span<float> stereo);
  void endThread();

  std::unique_ptr<SoundOutput> output_;
  std::shared_ptr<const movie::MovieFile> file_;  ///< null for no sound
  int rate_ = 0;                                  ///< of the output, frames a second
  std::thread thread_;

  mutable std::mutex mutex_;  ///< guards what follows
  std::condition_variable changed_;
  bool ending_ = false;
  bool running_ = false;
  std::uint64_t starts_ = 0;
  std::int64_t next_ = 0;    ///< the movie's frame that is pulled next
  std::int64_t pulled_ = 0;  ///< frames since the output was opened
  std::int64_t ringFirst_ = 0;
  std::vector<float> ring_;  ///< the movie's frames from ringFirst_ on
  std::string soundProblem_, deviceProblem_;
};

}  // namespace player
