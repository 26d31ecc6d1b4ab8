#include <algorithm>
#include <thread>

#include <gtest/gtest.h>

#include "movie/render/IccProfile.h"
#include "tests/movie/render/TestProfiles.h"

namespace movie {
namespace {

using test::greyProfile;
using test::rgbProfile;

TEST(IccProfile, MakesASrgbProfileThatIsTheSameOnEveryRun) {
  const Bytes& profile = sRGBProfile();
  ASSERT_GT(profile.size(), 128U);
  EXPECT_EQ(read32(profile, 0), profile.size());
  EXPECT_EQ(std::string(profile.begin() + 12, profile.begin() + 24), "mntrRGB XYZ ");
  EXPECT_EQ(std::string(profile.begin() + 36, profile.begin() + 40), "acsp");
  EXPECT_EQ(Bytes(profile.begin() + 24, profile.begin() + 36), (Bytes{0x07, 0xD0, 0, 1, 0, 1, 0, 0, 0, 0, 0, 0}));
  EXPECT_TRUE(std::all_of(profile.begin() + 84, profile.begin() + 100, [](std::uint8_t byte) { return byte == 0; }));
}

TEST(IccProfile, DescribesProfilesInUtf8) {
  EXPECT_EQ(profileDescription(sRGBProfile()), "sRGB built-in");
  EXPECT_EQ(profileDescription(rgbProfile(2.2, L"Gr\u00F6\u00DFe \u20AC")),
            "Gr\xC3\xB6\xC3\x9F"
            "e \xE2\x82\xAC");
  EXPECT_EQ(profileDescription({}), "");
  EXPECT_EQ(profileDescription(Bytes(200, 0x41)), "");
}

TEST(IccProfile, RendersOnlyFromRgbProfilesThatOpen) {
  EXPECT_TRUE(isUsableRgbProfile(sRGBProfile()));
  EXPECT_TRUE(isUsableRgbProfile(rgbProfile(1.8)));
  EXPECT_FALSE(isUsableRgbProfile(greyProfile())) << "a grey profile says nothing about R, G and B";
  EXPECT_FALSE(isUsableRgbProfile({}));
  EXPECT_FALSE(isUsableRgbProfile(Bytes(500, 0)));
  EXPECT_EQ(ProfileTransform::forProfile(greyProfile()), nullptr);
}

TEST(IccProfile, RefusesWhatBreaksOffBeforeItsCurves) {
  const Bytes& whole = sRGBProfile();
  for (std::size_t size = 0; size < 200; ++size) EXPECT_FALSE(isUsableRgbProfile(ByteView(whole).first(size))) << size;
}

TEST(IccProfile, SurvivesEveryByteBeingWrong) {
  Bytes profile = sRGBProfile();
  std::size_t refused = 0, longestDescription = 0;
  for (std::size_t at = 0; at < profile.size(); ++at) {
    const std::uint8_t right = profile[at];
    for (const std::uint8_t wrong : Bytes{0x00, 0x7F, 0xFF}) {
      profile[at] = wrong;
      if (!isUsableRgbProfile(profile)) ++refused;
      longestDescription = std::max(longestDescription, profileDescription(profile).size());
    }
    profile[at] = right;
  }
  EXPECT_GT(refused, 0U);
  EXPECT_LE(longestDescription, profile.size());
}

TEST(IccProfile, LeavesSrgbAsItIs) {
  const auto transform = ProfileTransform::forProfile(sRGBProfile());
  ASSERT_TRUE(transform);
  for (unsigned code = 0; code < 256; ++code) {
    const auto value = static_cast<std::uint16_t>(257 * code);
    const std::vector<std::uint16_t> rgb{value, value, value, value, 0, 0};
    std::vector<std::uint8_t> shown(6);
    transform->apply(rgb, shown);
    EXPECT_EQ(shown[0], code);
    EXPECT_EQ(shown[1], code);
    EXPECT_EQ(shown[2], code);
    EXPECT_NEAR(shown[3], static_cast<int>(code), 1);
    EXPECT_LE(shown[4], 1);
  }
}

TEST(IccProfile, KeepsATransformForTheNextFrame) {
  const Bytes profile = rgbProfile(2.4);
  EXPECT_EQ(ProfileTransform::forProfile(profile), ProfileTransform::forProfile(Bytes(profile)));
}

TEST(IccProfile, CanBeUsedFromSeveralThreads) {
  std::vector<std::thread> threads;
  threads.reserve(4);
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([i] {
      for (int round = 0; round < 8; ++round) {
        const Bytes profile = rgbProfile(1.5 + 0.1 * ((i + round) % 6));
        const auto transform = ProfileTransform::forProfile(profile);
        ASSERT_TRUE(transform);
        const std::vector<std::uint16_t> white(3, 65535);
        std::vector<std::uint8_t> shown(3);
        transform->apply(white, shown);
        EXPECT_EQ(shown, (std::vector<std::uint8_t>{255, 255, 255}));
        EXPECT_EQ(profileDescription(sRGBProfile()), "sRGB built-in");
      }
    });
  }
  for (auto& thread : threads) thread.join();
}

}  // namespace
}  // namespace movie
