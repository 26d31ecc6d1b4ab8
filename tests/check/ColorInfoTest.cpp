#include <array>
#include <cstddef>
#include <cstring>
#include <string>
#include <tuple>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

#include "check/ColorInfo.h"
#include "tests/check/CapturedLog.h"

namespace {

using check::ColorInfo;
using check::test::CapturedLog;

constexpr ColorInfo broadcast{
    .colorParamType = movie::fourCC("nclc"), .primaries = 1, .transferFunction = 2, .matrix = 6};

}  // namespace

TEST(ColorInfo, IsTheTenBytesOfTheProperty) {
  static_assert(sizeof(ColorInfo) == 10 && std::has_unique_object_representations_v<ColorInfo>);
  static_assert(offsetof(ColorInfo, colorParamType) == 0 && offsetof(ColorInfo, primaries) == 4);
  static_assert(offsetof(ColorInfo, transferFunction) == 6 && offsetof(ColorInfo, matrix) == 8);
  std::array<unsigned char, 3 * sizeof(ColorInfo)> bytes{};
  const std::array<ColorInfo, 3> records{broadcast, ColorInfo{}, broadcast};
  std::memcpy(bytes.data(), records.data(), bytes.size());
  const auto fields = [&](std::size_t from) {
    std::uint32_t type = 0;
    std::array<std::uint16_t, 3> rest{};
    std::memcpy(&type, bytes.data() + from, sizeof type);
    std::memcpy(rest.data(), bytes.data() + from + sizeof type, sizeof rest);
    return std::tuple(type, rest[0], rest[1], rest[2]);
  };
  EXPECT_EQ(fields(0), std::tuple(movie::fourCC("nclc"), 1, 2, 6));
  EXPECT_EQ(fields(10), std::tuple(0U, 0, 0, 0));
  EXPECT_EQ(fields(20), fields(0));
}

TEST(ColorInfo, ComparesAsItsBytesDo) {
  std::array<unsigned char, sizeof(ColorInfo)> bytes{};
  std::memcpy(bytes.data(), &broadcast, bytes.size());
  for (unsigned char& byte : bytes) {
    byte ^= 1U;
    ColorInfo changed;
    std::memcpy(&changed, bytes.data(), bytes.size());
    EXPECT_EQ(check::colorInfoCompare(broadcast, changed), -1) << &byte - bytes.data();
    byte ^= 1U;
  }
  ColorInfo same;
  std::memcpy(&same, bytes.data(), bytes.size());
  EXPECT_EQ(check::colorInfoCompare(broadcast, same), 0);
}

TEST(ColorInfo, ZeroesARecordAndReturnsIt) {
  ColorInfo info = broadcast;
  EXPECT_EQ(check::zeroColorInfo(&info), &info);
  EXPECT_EQ(std::uint32_t{info.colorParamType}, 0U);
  EXPECT_EQ(info.primaries, 0U);
  EXPECT_EQ(info.transferFunction, 0U);
  EXPECT_EQ(info.matrix, 0U);
}

TEST(ColorInfo, IsSetWhenAnyFieldIs) {
  EXPECT_FALSE(check::isColorInfoSet({}));
  EXPECT_TRUE(check::isColorInfoSet({.colorParamType = 1}));
  EXPECT_TRUE(check::isColorInfoSet({.primaries = 1}));
  EXPECT_TRUE(check::isColorInfoSet({.transferFunction = 1}));
  EXPECT_TRUE(check::isColorInfoSet({.matrix = 1}));
}

TEST(ColorInfo, ComparesAllFourFields) {
  EXPECT_EQ(check::colorInfoCompare(broadcast, broadcast), 0);
  EXPECT_EQ(check::colorInfoCompare({}, {}), 0);
  std::vector<ColorInfo> different(4, broadcast);
  different[0].colorParamType = 0;
  different[1].primaries = 5;
  different[2].transferFunction = 1;
  different[3].matrix = 1;
  for (const ColorInfo& info : different) {
    EXPECT_EQ(check::colorInfoCompare(broadcast, info), -1);
    EXPECT_EQ(check::colorInfoCompare(info, broadcast), -1);
  }
}

TEST(ColorInfo, LogsBothRecordsBeforeComparing) {
  const CapturedLog log;
  ColorInfo dest = broadcast;
  dest.matrix = 65535;
  dest.colorParamType = 0xFFFFFFFF;
  EXPECT_EQ(check::colorInfoCompare(broadcast, dest), -1);
  EXPECT_EQ(log.texts(),
            (std::vector<std::string>{"source colorparamtype: 1852009571", "source matrix: 6", "source primaries: 1",
                                      "source transferfunction: 2", "dest colorparamtype: -1", "dest matrix: 65535",
                                      "dest primaries: 1", "dest transferfunction: 2"}));
}

TEST(ColorInfo, LogsRecordsThatMatchToo) {
  const CapturedLog log;
  EXPECT_EQ(check::colorInfoCompare({}, {}), 0);
  EXPECT_EQ(log.texts().size(), 8U);
}
