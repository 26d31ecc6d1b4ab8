#pragma once

#include <vector>

struct AVFrame;

namespace movie {

/// How much of each channel is heard on a side.
struct ChannelShare {
  float left = 0, right = 0;
};

/// The shares of `channels` channels, as SoundStream.h has them; 1 or more.
std::vector<ChannelShare> channelShares(int channels);

/// Appends the frames of a decoded sound, two floats each. `shares` has one entry a channel of the frame. False for a
/// sample format that is none of libav's for decoded sound; nothing is appended then.
bool appendStereo(const AVFrame& frame, const std::vector<ChannelShare>& shares, std::vector<float>& stereo);

}  // namespace movie
