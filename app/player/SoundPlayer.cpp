#include "app/player/SoundPlayer.h"

#include <algorithm>
#include <cmath>
#include <system_error>
#include <utility>

#include "SharedFiles/crash/handler/ThreadCrashStack.h"
#include "app/player/SoundMixer.h"

namespace player {
namespace {

constexpr std::int64_t pieceLength = 1024;  // frames

std::int64_t frameAt(const movie::MovieTime& time, int rate) {
  constexpr double latest = 1e15;  // frames: in range whatever is added
  return std::llround(std::clamp(movie::secondsOf(time) * rate, -latest, latest));
}

}  // namespace

SoundPlayer::SoundPlayer(std::unique_ptr<SoundOutput> output) : output_(std::move(output)) {}

SoundPlayer::~SoundPlayer() {
  stop();
  endThread();
}

void SoundPlayer::endThread() {
  {
    const std::lock_guard lock(mutex_);
    ending_ = true;
  }
  changed_.notify_all();
  if (thread_.joinable()) thread_.join();
  ending_ = false;
}

void SoundPlayer::setMovie(std::unique_ptr<movie::Movie> movie) {
  stop();
  endThread();
  file_ = movie == nullptr ? nullptr : movie->file();
  rate_ = file_ == nullptr ? 0 : SoundMixer::naturalRate(*file_);
  if (rate_ == 0) file_ = nullptr;
  soundProblem_.clear();
  deviceProblem_.clear();
  if (file_ == nullptr) return;
  try {
    thread_ = std::thread([this] { work(); });
  } catch (const std::system_error&) {
    file_ = nullptr;
    soundProblem_ = "the system gives no thread for the sound";
  }
}

void SoundPlayer::start(const movie::MovieTime& at) {
  if (file_ == nullptr) return;
  const std::optional<std::int64_t> played = output_->played();
  bool playing = false;
  {
    const std::lock_guard lock(mutex_);
    playing = running_ && played;
    if (!playing) pulled_ = 0;
    next_ = frameAt(at, rate_) + (playing ? pulled_ - *played : 0);
    ring_.clear();
    ++starts_;
    running_ = true;
  }
  changed_.notify_all();
  if (playing) return;
  const bool open = output_->open(rate_, [this](std::span<float> stereo) { pull(stereo); });
  const std::lock_guard lock(mutex_);
  running_ = open;
  deviceProblem_ = open ? "" : "there is no device to play sound on";
}

void SoundPlayer::stop() {
  output_->stop();
  const std::lock_guard lock(mutex_);
  running_ = false;
  ring_.clear();
}

void SoundPlayer::setVolume(double volume) {
  output_->setVolume(std::isnan(volume) ? 0.0 : std::clamp(volume, 0.0, 1.0));
}

std::optional<double> SoundPlayer::ahead(const movie::MovieTime& of) {
  const std::optional<std::int64_t> played = output_->played();
  const std::lock_guard lock(mutex_);
  if (!running_ || !played || *played <= 0) return std::nullopt;
  const std::int64_t heard = next_ - pulled_ + *played;
  return static_cast<double>(heard) / rate_ - movie::secondsOf(of);
}

std::string SoundPlayer::problem() const {
  const std::lock_guard lock(mutex_);
  return soundProblem_.empty() ? deviceProblem_ : soundProblem_;
}

/// What is not there in time is silence, and time goes on: what comes later is in step.
void SoundPlayer::pull(std::span<float> stereo) {
  {
    const std::lock_guard lock(mutex_);
    const auto wanted = static_cast<std::int64_t>(stereo.size() / 2);
    const std::int64_t from = std::clamp(ringFirst_, next_, next_ + wanted);
    const std::int64_t to = std::clamp(ringFirst_ + heldFrames(), from, next_ + wanted);
    std::fill(stereo.begin(), stereo.end(), 0.0F);
    if (to > from) {
      std::copy(ring_.begin() + 2 * (from - ringFirst_), ring_.begin() + 2 * (to - ringFirst_),
                stereo.begin() + 2 * (from - next_));
    }
    next_ += wanted;
    pulled_ += wanted;
    dropPulled();
  }
  changed_.notify_all();
}

void SoundPlayer::dropPulled() {
  const std::int64_t passed = std::clamp<std::int64_t>(next_ - ringFirst_, 0, heldFrames());
  ring_.erase(ring_.begin(), ring_.begin() + 2 * passed);
  ringFirst_ += passed;
}

bool SoundPlayer::hasWork() const {
  const std::int64_t wanted = std::int64_t{rate_} * 3 / 10;
  return ending_ || (running_ && heldFrames() < wanted);
}

void SoundPlayer::work() {
  const crash::ThreadCrashStack crashStack;
  std::unique_ptr<SoundMixer> mixer;
  std::vector<float> piece(2 * pieceLength);
  std::unique_lock lock(mutex_);
  for (;;) {
    changed_.wait(lock, [this] { return hasWork(); });
    if (ending_) return;
    if (ring_.empty()) ringFirst_ = next_;
    const std::int64_t first = ringFirst_ + heldFrames();
    const std::uint64_t start = starts_;
    lock.unlock();
    if (mixer == nullptr) mixer = std::make_unique<SoundMixer>(file_, rate_);
    mixer->read(first, piece);
    lock.lock();
    soundProblem_ = mixer->problem();
    if (!running_ || start != starts_) continue;
    if (ring_.empty()) ringFirst_ = first;
    ring_.insert(ring_.end(), piece.begin(), piece.end());
    dropPulled();  // what came too late
  }
}

}  // namespace player
