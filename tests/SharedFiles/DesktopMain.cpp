#include <QApplication>

#include <gtest/gtest.h>

#include "SharedFiles/foundation/MainThread.h"

/// Every test of the program runs in one application without a screen.
int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  testing::InitGoogleTest(&argc, argv);
  const QApplication application(argc, argv);
  QApplication::setQuitOnLastWindowClosed(false);
  const MainThread mainThread;
  return RUN_ALL_TESTS();
}
