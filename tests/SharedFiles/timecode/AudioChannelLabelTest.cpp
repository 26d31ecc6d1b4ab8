#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "SharedFiles/timecode/QVQuickTime.h"

namespace {

std::string label(std::uint32_t code) {
  return QVQuickTime::friendlyAudioChannelLabel({.channelLabel = code, .channelFlags = 7, .coordinates = {1, 2, 3}})
      .toStdString();
}

}  // namespace

TEST(AudioChannelLabel, HasATextForEveryKnownCode) {
  const std::vector<std::pair<std::uint32_t, const char*>> rows = {
      {1, "Left"},
      {2, "Right"},
      {3, "Center"},
      {4, "LFE"},
      {5, "Left Surround"},
      {6, "Right Surround"},
      {7, "Left Center"},
      {8, "Right Center"},
      {9, "Center Surround"},
      {10, "Left Surround Direct"},
      {11, "Right Surround Direct"},
      {12, "Top Center Surround"},
      {13, "Vertical Height Left"},
      {14, "Vertical Height Center"},
      {15, "Vertical Height Right"},
      {16, "Top Back Left"},
      {17, "Top Back Center"},
      {18, "Top Back Right"},
      {33, "Rear Surround Left"},
      {34, "Rear Surround Right"},
      {35, "Left Wide"},
      {36, "Right Wide"},
      {37, "LFE2"},
      {38, "Left Total"},
      {39, "Right Total"},
      {40, "Hearing Impaired"},
      {41, "Narration"},
      {42, "Mono"},
      {43, "Dialogue Centric Mix"},
      {44, "Center Surround Direct"},
      {45, "Haptic"},
      {301, "Headphones Left"},
      {302, "Headphones Right"},
      {304, "Click Track"},
      {305, "Foreign Language"},
      {400, "Discrete"},
  };
  for (const auto& [code, name] : rows) EXPECT_EQ(label(code), name) << code;
  for (std::uint32_t n = 0; n < 16; ++n) EXPECT_EQ(label(65536 + n), "Discrete " + std::to_string(n));
}

TEST(AudioChannelLabel, IsUnknownForEveryOtherCode) {
  for (const std::uint32_t code : {0U, 19U, 32U, 46U, 300U, 303U, 306U, 399U, 401U, 65535U, 65552U, 0xFFFFFFFFU})
    EXPECT_EQ(label(code), "Unknown") << code;
}
