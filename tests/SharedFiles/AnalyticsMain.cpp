#include <QApplication>
#include <chrono>
#include <cstdio>
#include <cstring>

#include <gtest/gtest.h>

#include "SharedFiles/MainThread.h"
#include "tests/SharedFiles/AnalyticsFixture.h"

namespace {

/// Records events until it is killed.
int recordEvents() {
  const LinuxPathPlatform paths(::getuid(), BundleInfo::mainBundle());
  UserDefaults defaults(paths, analyticsBundle());
  NotedWorkspace workspace;
  qint64 now = 0;
  AnalyticsController controller({.paths = paths,
                                  .defaults = defaults,
                                  .bundle = analyticsBundle(),
                                  .workspace = workspace,
                                  .now = [] { return QDateTime::currentDateTimeUtc(); },
                                  .osVersion = {},
                                  .random = {},
                                  .makeConnection = {},
                                  .endpoint = {},
                                  .moreInfo = {}});
  controller.enableQCLogging();
  for (;;) {
    controller.logQCEvent(QVariantMap{{"event", "one"}, {"date", ++now}});
    controller.writeCacheOnThread();
    if (now == 1) std::puts("begun");
    std::fflush(stdout);
  }
}

}  // namespace

/// Every test of the program runs in one application without a screen. As "--record-events" it is the program that the
/// tests kill.
int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  testing::InitGoogleTest(&argc, argv);
  const QApplication application(argc, argv);
  if (argc > 1 && std::strcmp(argv[1], "--record-events") == 0) return recordEvents();
  QApplication::setQuitOnLastWindowClosed(false);
  const MainThread mainThread;
  return RUN_ALL_TESTS();
}
