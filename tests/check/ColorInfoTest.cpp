#include <string>
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

TEST(ColorInfo, ZeroesARecordAndReturnsIt) {
  ColorInfo info = broadcast;
  EXPECT_EQ(check::zeroColorInfo(&info), &info);
  EXPECT_EQ(info.colorParamType, 0U);
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
