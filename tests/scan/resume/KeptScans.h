#pragma once

#include <cmath>

#include <gtest/gtest.h>

#include "scan/resume/ResumeBytes.h"

namespace scan::test {

inline ResumeSubject keptSubject() {
  return {.source = {.bytes = 5000, .modified = 1'700'000'000'123'456'789, .frames = 1000},
          .dest = {.bytes = 7000, .modified = -5, .frames = 900},
          .first = 100,
          .end = 900,
          .every = 2,
          .align = true};
}

inline Beginning keptBeginning() {
  Beginning beginning;
  beginning.result = Beginning::Result::Found;
  beginning.lines = {{1, 4.5}, {25.0 / 24, -3}};
  beginning.placement = {.mirroredX = true, .source = {0.1, 0, 0.9, 1}, .dest = {0, 0.125, 1, 0.875}};
  beginning.exponent = 2;
  beginning.isProbed = true;
  return beginning;
}

/// A frame that differs from the next, and is not measured now and then.
inline FrameMatch keptFrame(int number) {
  FrameMatch match;
  match.source = number % 7 == 3 ? -1 : number;
  match.line = static_cast<std::uint16_t>(number % 2);
  match.identical = number % 3 == 0;
  match.blended = number % 5 == 0;
  match.flat = number % 11 == 0;
  match.distance = 0.5F + static_cast<float>(number);
  if (number % 4 != 0) match.logExponent = -0.25F * static_cast<float>(number % 9);
  match.spread = 0.125F;
  match.weight = static_cast<float>(number);
  match.level = -1.5F;
  return match;
}

inline std::vector<FrameMatch> keptFrames(int first, int end) {
  std::vector<FrameMatch> frames;
  for (int i = first; i < end; ++i) frames.push_back(keptFrame(i));
  return frames;
}

inline Standing keptStanding(std::size_t frames) {
  return {.bearing = {.course = {{1, 4.5}, 1.5},
                      .line = 1,
                      .centre = -3,
                      .aside = 5,
                      .nearer = 1.5F,
                      .usual = {0.75F, 60},
                      .settledBefore = frames},
          .state = {.source = 77, .away = -2, .none = false}};
}

inline void expectFrames(const std::vector<FrameMatch>& found, const std::vector<FrameMatch>& wanted) {
  ASSERT_EQ(found.size(), wanted.size());
  for (std::size_t i = 0; i < found.size(); ++i) {
    const FrameMatch &one = found[i], &other = wanted[i];
    EXPECT_EQ(one.source, other.source) << i;
    EXPECT_EQ(one.line, other.line) << i;
    EXPECT_EQ(one.identical, other.identical) << i;
    EXPECT_EQ(one.blended, other.blended) << i;
    EXPECT_EQ(one.flat, other.flat) << i;
    EXPECT_EQ(one.distance, other.distance) << i;
    EXPECT_EQ(std::isnan(one.logExponent), std::isnan(other.logExponent)) << i;
    if (!std::isnan(one.logExponent)) {
      EXPECT_EQ(one.logExponent, other.logExponent) << i;
    }
    EXPECT_EQ(one.spread, other.spread) << i;
    EXPECT_EQ(one.weight, other.weight) << i;
    EXPECT_EQ(one.level, other.level) << i;
  }
}

}  // namespace scan::test
