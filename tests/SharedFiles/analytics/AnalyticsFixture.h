#pragma once

#include <QFile>
#include <QStringList>
#include <QTimeZone>
#include <atomic>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

#include <unistd.h>

#include "SharedFiles/analytics/AnalyticsController.h"
#include "SharedFiles/settings/PropertyList.h"
#include "tests/SharedFiles/alerts/AlertFixture.h"
#include "tests/check/CapturedLog.h"

inline BundleInfo analyticsBundle() {
  return BundleInfo({{"CFBundleIdentifier", "com.quorvane.Test"}, {"CFBundleVersion", "3.1"}}, "/opt/test/bin/Test");
}

/// Notes the pages that are opened.
struct NotedWorkspace final : Workspace {
  bool openFile(const QString&) override { return false; }
  bool openURL(const QString& address) override {
    opened.append(address);
    return true;
  }
  QStringList opened;
};

/// A controller with a clock, a system and a network of the test's own, in a home of its own.
class Analytics : public Alerts {
 protected:
  Analytics() { environment_.clear("XDG_CACHE_HOME"); }

  AnalyticsServices services() {
    return {.paths = paths_,
            .defaults = *defaults_,
            .bundle = bundle_,
            .workspace = workspace_,
            .now = [this] { return QDateTime::fromMSecsSinceEpoch(now_, Qt::UTC); },
            .osVersion = [this] { return osVersion_; },
            .random = [this] { return random_++; },
            .makeConnection = makeConnection_,
            .endpoint = endpoint_,
            .moreInfo = "https://maker.example/more",
            .promptDelay = promptDelay_};
  }
  /// As a start of the program does.
  AnalyticsController& launch() {
    controller_.reset();
    defaults_ = std::make_unique<UserDefaults>(paths_, bundle_);
    controller_ = std::make_unique<AnalyticsController>(services());
    return *controller_;
  }
  AnalyticsController& launchWith(int launches, const QVariant& decision = {}) {
    defaults_->setObject(launches - 1, "launchCount");
    if (decision.isValid()) AnalyticsPreferences(paths_).setObjects({{"logQC", decision}});
    return launch();
  }
  void finish() { controller_->opQueue().waitUntilAllOperationsAreFinished(); }

  QVariantMap stored() const {
    return PropertyList::readDictionary(AnalyticsPreferences(paths_).path()).value_or(QVariantMap());
  }
  QString cacheFile() const { return home_.filePath(".cache/Quorvane/QC/com.quorvane.Test"); }
  QVariantList storedCache() const { return PropertyList::read(cacheFile()).value_or(QVariant()).toList(); }
  static QVariantMap event(const QString& name, qint64 date = 0) { return {{"event", name}, {"date", date}}; }

  /// What the controller posts unless a test brings a network of its own.
  std::vector<UrlRequest> posted() const {
    const std::lock_guard guard(postedMutex_);
    return posted_;
  }

  static constexpr qint64 startOfTest = 1'700'000'000'500;  // with half a second

  LinuxPathPlatform paths_{::getuid(), BundleInfo::mainBundle()};
  BundleInfo bundle_ = analyticsBundle();
  NotedWorkspace workspace_;
  std::atomic<qint64> now_ = startOfTest;
  std::atomic<std::uint32_t> random_ = 0;
  QString osVersion_ = "12.4.0";
  QUrl endpoint_{"https://analytics.example/appdata/qc/qc.php"};
  std::chrono::milliseconds promptDelay_{20};
  mutable std::mutex postedMutex_;
  std::vector<UrlRequest> posted_;
  MakeUrlConnection makeConnection_ = [this](UrlRequest request, UrlConnectionDelegate&) {
    const std::lock_guard guard(postedMutex_);
    posted_.push_back(std::move(request));
    return std::make_shared<UrlConnection>();
  };
  std::unique_ptr<UserDefaults> defaults_ = std::make_unique<UserDefaults>(paths_, bundle_);
  std::unique_ptr<AnalyticsController> controller_;
};
