#include "movie/decode/ffmpeg/SoundMix.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <type_traits>

extern "C" {
#include <libavutil/frame.h>
#include <libavutil/samplefmt.h>
}

namespace movie {
namespace {

constexpr float minus3dB = 0.70710678F;
constexpr ChannelShare onLeft{1, 0}, onRight{0, 1};
constexpr ChannelShare fromBehindLeft{minus3dB, 0}, fromBehindRight{0, minus3dB};
constexpr ChannelShare inTheMiddle{minus3dB, minus3dB}, unheard{0, 0}, behindInTheMiddle{0.5F, 0.5F};

std::vector<ChannelShare> plainShares(int channels) {
  switch (channels) {
    case 1:
      return {{1, 1}};
    case 3:
      return {onLeft, onRight, inTheMiddle};
    case 5:
      return {onLeft, onRight, inTheMiddle, fromBehindLeft, fromBehindRight};
    case 6:
      return {onLeft, onRight, inTheMiddle, unheard, fromBehindLeft, fromBehindRight};
    case 7:
      return {onLeft, onRight, inTheMiddle, unheard, fromBehindLeft, fromBehindRight, behindInTheMiddle};
    case 8:
      return {onLeft, onRight, inTheMiddle, unheard, fromBehindLeft, fromBehindRight, fromBehindLeft, fromBehindRight};
    default:
      break;
  }
  std::vector<ChannelShare> shares(static_cast<std::size_t>(channels), onLeft);
  for (std::size_t i = 1; i < shares.size(); i += 2) shares[i] = onRight;
  return shares;
}

/// Full scale as -1 to 1.
template <typename Sample>
float unitOf(Sample sample) {
  if constexpr (std::is_floating_point_v<Sample>) {
    return static_cast<float>(sample);
  } else if constexpr (std::is_unsigned_v<Sample>) {
    return static_cast<float>(sample - 128) / 128.0F;
  } else {
    return static_cast<float>(static_cast<double>(sample) / -static_cast<double>(std::numeric_limits<Sample>::min()));
  }
}

/// One channel after the other: each goes through the frame by its own stride.
template <typename Sample>
void mix(const AVFrame& frame, bool planar, const std::vector<ChannelShare>& shares, float* stereo) {
  const auto count = static_cast<std::size_t>(frame.nb_samples);
  const std::size_t stride = planar ? 1 : shares.size();
  for (std::size_t channel = 0; channel < shares.size(); ++channel) {
    const ChannelShare share = shares[channel];
    if (share.left == 0 && share.right == 0) continue;
    const auto* sample = reinterpret_cast<const Sample*>(frame.extended_data[planar ? channel : 0]);
    if (!planar) sample += channel;
    for (std::size_t i = 0; i < count; ++i) {
      const float value = unitOf(sample[i * stride]);
      stereo[2 * i] += value * share.left;
      stereo[2 * i + 1] += value * share.right;
    }
  }
}

/// Null for what is no format of samples.
decltype(&mix<float>) mixerOf(AVSampleFormat packed) {
  switch (packed) {
    case AV_SAMPLE_FMT_U8:
      return mix<std::uint8_t>;
    case AV_SAMPLE_FMT_S16:
      return mix<std::int16_t>;
    case AV_SAMPLE_FMT_S32:
      return mix<std::int32_t>;
    case AV_SAMPLE_FMT_S64:
      return mix<std::int64_t>;
    case AV_SAMPLE_FMT_FLT:
      return mix<float>;
    case AV_SAMPLE_FMT_DBL:
      return mix<double>;
    default:
      return nullptr;
  }
}

}  // namespace

std::vector<ChannelShare> channelShares(int channels) {
  std::vector<ChannelShare> shares = plainShares(channels);
  float left = 0;
  float right = 0;
  for (const ChannelShare& share : shares) {
    left += share.left;
    right += share.right;
  }
  for (ChannelShare& share : shares) {
    share.left /= std::max(left, 1.0F);
    share.right /= std::max(right, 1.0F);
  }
  return shares;
}

bool appendStereo(const AVFrame& frame, const std::vector<ChannelShare>& shares, std::vector<float>& stereo) {
  const auto format = static_cast<AVSampleFormat>(frame.format);
  const auto mixer = mixerOf(av_get_packed_sample_fmt(format));
  if (mixer == nullptr) return false;
  const std::size_t before = stereo.size();
  stereo.resize(before + 2 * static_cast<std::size_t>(frame.nb_samples));
  mixer(frame, av_sample_fmt_is_planar(format) != 0, shares, stereo.data() + before);
  return true;
}

}  // namespace movie
