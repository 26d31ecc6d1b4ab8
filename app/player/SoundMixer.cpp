#include "app/player/SoundMixer.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include "app/player/SoundResampler.h"
#include "movie/SoundTimeline.h"
#include "movie/decode/DecoderModule.h"

namespace player {
namespace {

bool isHeard(const movie::TrackInfo& track) {
  return track.enabled && track.mediaType == movie::soundMedia;
}

/// What is not a number is silent.
float limited(float value) {
  return std::isnan(value) ? 0.0F : std::clamp(value, -1.0F, 1.0F);
}

}  // namespace

/// One track, at the rate of the mix.
class SoundMixer::Voice {
 public:
  Voice(const movie::MovieFile& file, const movie::TrackInfo& track, std::unique_ptr<movie::SoundStream> stream,
        int rate)
      : stream_(std::move(stream)),
        timeline_(track, file.timeScale(), stream_->rate()),
        isAtRate_(stream_->rate() == rate),
        resampler_(stream_->rate(), rate, [this](std::span<float> stereo) { readOn(stereo); }) {}

  /// Error: the first one since it was last asked for.
  movie::Result<void> read(std::int64_t first, std::span<float> stereo) {
    if (first != expected_) at_ = isAtRate_ ? first : resampler_.restart(first);
    expected_ = first + static_cast<std::int64_t>(stereo.size() / 2);
    outcome_ = {};
    if (isAtRate_) {
      readOn(stereo);
    } else {
      resampler_.read(stereo);
    }
    return outcome_;
  }

 private:
  /// Reads at the track's own rate.
  void readOn(std::span<float> stereo) {
    while (!stereo.empty()) {
      const movie::SoundPiece piece = timeline_.at(at_);
      const auto count = static_cast<std::size_t>(
          std::min<std::int64_t>(piece.end - at_, static_cast<std::int64_t>(stereo.size() / 2)));
      const std::span<float> part = stereo.first(2 * count);
      if (!piece.mediaFrame) {
        std::fill(part.begin(), part.end(), 0.0F);
      } else if (auto read = stream_->read(*piece.mediaFrame, part); !read && outcome_) {
        outcome_ = std::move(read);
      }
      at_ += static_cast<std::int64_t>(count);
      stereo = stereo.subspan(2 * count);
    }
  }

  std::unique_ptr<movie::SoundStream> stream_;
  movie::SoundTimeline timeline_;
  bool isAtRate_;
  SoundResampler resampler_;
  std::int64_t expected_ = 0;  ///< the frame of the mix at which the next read continues
  std::int64_t at_ = 0;        ///< the track's own next frame
  movie::Result<void> outcome_;
};

SoundMixer::SoundMixer(const std::shared_ptr<const movie::MovieFile>& file, int rate) {
  const auto backend = movie::decoderBackend();
  if (!backend) {
    problem_ = backend.error().message();
    return;
  }
  for (std::size_t i = 0; i < file->tracks().size(); ++i) {
    const movie::TrackInfo& track = file->tracks()[i];
    if (!isHeard(track)) continue;
    auto stream = (*backend)->makeSoundStream(file, i);
    if (stream) {
      voices_.push_back(std::make_unique<Voice>(*file, track, std::move(*stream), rate));
    } else if (problem_.empty()) {
      problem_ = stream.error().message();
    }
  }
}

SoundMixer::~SoundMixer() = default;

void SoundMixer::read(std::int64_t first, std::span<float> stereo) {
  std::fill(stereo.begin(), stereo.end(), 0.0F);
  one_.resize(stereo.size());
  for (const auto& voice : voices_) {
    if (auto read = voice->read(first, one_); !read && problem_.empty()) problem_ = read.error().message();
    for (std::size_t i = 0; i < stereo.size(); ++i) stereo[i] += one_[i];
  }
  for (float& value : stereo) value = limited(value);
}

int SoundMixer::naturalRate(const movie::MovieFile& file) {
  constexpr std::array rates{8000, 11025, 16000, 22050, 24000, 32000, 44100, 48000, 88200, 96000, 176400, 192000};
  const auto first = std::find_if(file.tracks().begin(), file.tracks().end(), isHeard);
  if (first == file.tracks().end()) return 0;
  const auto rate = std::find(rates.begin(), rates.end(), first->mediaTimeScale);
  return rate == rates.end() ? 48000 : *rate;
}

}  // namespace player
