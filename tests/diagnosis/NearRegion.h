#pragma once

#include <gtest/gtest.h>

#include "diagnosis/Placement.h"

namespace diagnosis::test {

inline void expectNear(const Region& found, const Region& expected, double by) {
  EXPECT_NEAR(found.left, expected.left, by);
  EXPECT_NEAR(found.top, expected.top, by);
  EXPECT_NEAR(found.right, expected.right, by);
  EXPECT_NEAR(found.bottom, expected.bottom, by);
}

}  // namespace diagnosis::test
