#include "SharedFiles/analytics/QVQC.h"

#include <QRandomGenerator>
#include <memory>
#include <utility>

#include "SharedFiles/MakerHosts.h"
#include "SharedFiles/analytics/HttpsConnection.h"
#include "SharedFiles/support/QVOSDetect.h"
#include "SharedFiles/support/Workspace.h"

AnalyticsController& QVQC::sharedController() {
  static AnalyticsController* const controller = std::make_unique<AnalyticsController>(services()).release();
  return *controller;
}

AnalyticsServices QVQC::services() {
  const auto address = [](const char* host, const char* path) {
    return QStringLiteral("https://%1%2").arg(QLatin1String(host), QLatin1String(path));
  };
  return {
      .paths = PathPlatform::standard(),
      .defaults = UserDefaults::standard(),
      .bundle = BundleInfo::mainBundle(),
      .workspace = Workspace::standard(),
      .now = [] { return QDateTime::currentDateTimeUtc(); },
      .osVersion = [] { return QVOSDetect::osxVersion(); },
      .random = [] { return QRandomGenerator::system()->generate(); },
      .makeConnection =
          [](UrlRequest request, UrlConnectionDelegate& delegate) {
            return HttpsConnection::start(std::move(request), delegate, {});
          },
      .endpoint = QUrl(address(makerHosts::analytics, "/appdata/qc/qc.php")),
      .moreInfo = address(makerHosts::web, "/support/posts/app_analytics_and_usage_data"),
  };
}
