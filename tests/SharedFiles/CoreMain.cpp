#include <QCoreApplication>

#include <gtest/gtest.h>

#include "SharedFiles/foundation/MainThread.h"

/// Every test of the program runs in one application without windows.
int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  const QCoreApplication application(argc, argv);
  const MainThread mainThread;
  return RUN_ALL_TESTS();
}
