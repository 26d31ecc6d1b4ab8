#include <QApplication>
#include <chrono>
#include <cstdio>
#include <cstring>

#include <gtest/gtest.h>

#include "SharedFiles/analytics/HttpsConnection.h"
#include "SharedFiles/foundation/MainThread.h"
#include "tests/SharedFiles/analytics/AnalyticsFixture.h"

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

/// Posts events to an address, and quits shortly after, whatever has become of them. As in the program the controller
/// is never destroyed.
int uploadAndQuit(const char* address, const char* certificate) {
  static const LinuxPathPlatform paths(::getuid(), BundleInfo::mainBundle());
  static UserDefaults defaults(paths, analyticsBundle());
  static NotedWorkspace workspace;
  const MainThread mainThread;
  const auto connect = [certificate](UrlRequest request, UrlConnectionDelegate& delegate) {
    return HttpsConnection::start(std::move(request), delegate,
                                  {.authorities = QSslCertificate::fromPath(QString::fromLocal8Bit(certificate))});
  };
  defaults.setObject(9, "launchCount");
  defaults.setObject({}, "lastSubmission");
  static AnalyticsController* const controller =
      std::make_unique<AnalyticsController>(AnalyticsServices{.paths = paths,
                                                              .defaults = defaults,
                                                              .bundle = analyticsBundle(),
                                                              .workspace = workspace,
                                                              .now = [] { return QDateTime::currentDateTimeUtc(); },
                                                              .osVersion = [] { return QStringLiteral("12.4.0"); },
                                                              .random = [] { return 7U; },
                                                              .makeConnection = connect,
                                                              .endpoint = QUrl(QString::fromLocal8Bit(address)),
                                                              .moreInfo = {}})
          .release();
  controller->enableQCLogging();
  controller->setupInitialLogging();
  constexpr int shortly = 700;
  QTimer::singleShot(shortly, qApp, [] { QCoreApplication::quit(); });
  return QApplication::exec();
}

}  // namespace

/// Every test of the program runs in one application without a screen. As "--record-events" and "--upload-and-quit" it
/// is the program that the tests look at.
int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  testing::InitGoogleTest(&argc, argv);
  const QApplication application(argc, argv);
  if (argc > 1 && std::strcmp(argv[1], "--record-events") == 0) return recordEvents();
  if (argc > 3 && std::strcmp(argv[1], "--upload-and-quit") == 0) return uploadAndQuit(argv[2], argv[3]);
  QApplication::setQuitOnLastWindowClosed(false);
  const MainThread mainThread;
  return RUN_ALL_TESTS();
}
