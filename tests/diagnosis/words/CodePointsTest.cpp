#include <gtest/gtest.h>

#include "diagnosis/words/CodePoints.h"

namespace diagnosis {
namespace {

TEST(CodePoints, AreThoseOfTheStandard) {
  EXPECT_EQ(primariesName(1), "BT.709");
  EXPECT_EQ(primariesName(12), "P3-D65");
  EXPECT_EQ(transferFunctionName(13), "sRGB");
  EXPECT_EQ(transferFunctionName(18), "HLG");
  EXPECT_EQ(matrixName(0), "identity");
  EXPECT_EQ(matrixName(6), "SMPTE 170M");
  EXPECT_EQ(matrixName(2), "unspecified");
  EXPECT_EQ(primariesName(0), "reserved");
  EXPECT_EQ(primariesName(23), "reserved");
  EXPECT_EQ(transferFunctionName(65535), "reserved");
}

}  // namespace
}  // namespace diagnosis
