#include "movie/decode/ffmpeg/SoundMix.h"

#include <algorithm>
#include <cstdint>

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

float unitOf(std::uint8_t sample) {
  return static_cast<float>(static_cast<int>(sample) - 128) / 128.0F;
}
float unitOf(std::int16_t sample) {
  return static_cast<float>(sample) / 32768.0F;
}
float unitOf(std::int32_t sample) {
  return static_cast<float>(sample) / 2147483648.0F;
}
float unitOf(std::int64_t sample) {
  return static_cast<float>(static_cast<double>(sample) / 9223372036854775808.0);
}
float unitOf(float sample) {
  return sample;
}
float unitOf(double sample) {
  return static_cast<float>(sample);
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
  const bool planar = av_sample_fmt_is_planar(format) != 0;
  void (*mixer)(const AVFrame&, bool, const std::vector<ChannelShare>&, float*) = nullptr;
  switch (av_get_packed_sample_fmt(format)) {
    case AV_SAMPLE_FMT_U8:
      mixer = mix<std::uint8_t>;
      break;
    case AV_SAMPLE_FMT_S16:
      mixer = mix<std::int16_t>;
      break;
    case AV_SAMPLE_FMT_S32:
      mixer = mix<std::int32_t>;
      break;
    case AV_SAMPLE_FMT_S64:
      mixer = mix<std::int64_t>;
      break;
    case AV_SAMPLE_FMT_FLT:
      mixer = mix<float>;
      break;
    case AV_SAMPLE_FMT_DBL:
      mixer = mix<double>;
      break;
    default:
      return false;
  }
  const std::size_t before = stereo.size();
  stereo.resize(before + 2 * static_cast<std::size_t>(frame.nb_samples));
  mixer(frame, planar, shares, stereo.data() + before);
  return true;
}

}  // namespace movie
