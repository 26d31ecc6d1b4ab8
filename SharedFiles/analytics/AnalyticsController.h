#pragma once

#include <QDateTime>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QVariantList>
#include <QVariantMap>
#include <QWidget>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>

#include "SharedFiles/analytics/AnalyticsPreferences.h"
#include "SharedFiles/analytics/UrlConnection.h"
#include "SharedFiles/foundation/BundleInfo.h"
#include "SharedFiles/support/Workspace.h"
#include "system/SerialQueue.h"

/// The surroundings of an analytics controller, which they outlive. The functions are called from any thread.
struct AnalyticsServices {
  const PathPlatform& paths;
  UserDefaults& defaults;
  BundleInfo bundle;
  Workspace& workspace;
  std::function<QDateTime()> now;
  std::function<QString()> osVersion;     ///< nil when there is none
  std::function<std::uint32_t()> random;  ///< cryptographic
  MakeUrlConnection makeConnection;
  QUrl endpoint;     ///< what events are posted to
  QString moreInfo;  ///< address of the page that "More Info" opens
  std::chrono::milliseconds promptDelay = std::chrono::seconds(5);
};

/// Records anonymous usage events once the user has agreed to it, keeps them in a file between runs and posts them to
/// the maker. Until then nothing is written but the number of launches, and nothing is sent.
///
/// An event is a dictionary of texts and integers: "event", "date" (whole seconds since 1970) and "data". The cache is
/// the property list (caches folder)/Quorvane/QC/(bundle identifier), an array of events; it appears or changes whole
/// or not at all. Made and destroyed on the main thread; members are called there too unless they say any thread.
class AnalyticsController final : public UrlConnectionDelegate {
 public:
  using Services = AnalyticsServices;

  /// Reads the decision and the cache, counts the launch and watches for the end of the application.
  explicit AnalyticsController(Services services);
  ~AnalyticsController() override;  ///< waits for the operation that runs; writes nothing
  AnalyticsController(const AnalyticsController&) = delete;
  AnalyticsController& operator=(const AnalyticsController&) = delete;

  // Consent.

  /// loadQC: takes over a stored decision. Without one, from the third launch on, the user is asked after the delay, on
  /// a sheet of the window if it is still there.
  void loadQC(QWidget* parentWindow);
  /// Logs the events of a start and posts the cache once a day: when the last submission is more than 86,400 seconds
  /// ago or, without one, from the fourth launch on. Only with consent.
  void setupInitialLogging();
  void enableQCLogging() { setQCLogging(true); }
  void disableQCLogging() { setQCLogging(false); }
  /// setQCLogging: stores the decision and applies it. Any thread.
  void setQCLogging(bool log);
  /// toggleQCLogging: the sender is a QCheckBox, a checkable QAction or the like.
  template <typename Checkbox>
  void toggleQCLogging(const Checkbox& sender) {
    setQCLogging(sender.isChecked());
  }
  /// The check box that awakeFromNib() sets; of the same kinds, or null.
  template <typename Checkbox>
  void setQcShouldLogCheckbox(Checkbox* checkbox) {
    showShouldLog_ = [box = QPointer<Checkbox>(checkbox)](bool on) {
      if (box) box->setChecked(on);
    };
  }
  void awakeFromNib() const;
  bool shouldLog() const { return shouldLog_; }  ///< any thread

  // Events. Any thread.

  /// logQCEvent: the event goes to the disk at once, or with the next write when the last is less than a second ago.
  void logQCEvent(const std::optional<QVariantMap>& event);
  void logLoadEvent();         ///< unless one of the last 60 seconds is in the cache
  void logSystemSpecsEvent();  ///< once a version of the operating system
  void writeCache();           ///< queues writeCacheOnThread()
  void writeCacheOnThread();
  QVariantList cache() const;
  std::optional<QDateTime> lastCacheWrite() const;
  const QString& bundleID() const { return bundleID_; }  ///< nil without a bundle
  sys::SerialQueue& opQueue() { return opQueue_; }
  /// generateRandomString: characters of a-z, A-Z and 0-9; of the capitals Z comes before Y. Empty for a length of 0
  /// or below.
  QString generateRandomString(std::int32_t length) const;

  // The upload. Any thread; runs on the queue.

  /// Posts the events of the cache and drops them, whatever becomes of the post.
  void uploadData();
  /// postDictionary:toURL:
  void postDictionary(const QVariantMap& dictionary, const QUrl& url);

  void connectionDidReceiveData(UrlConnection& connection, const QByteArray& data) override;
  void connectionDidFailWithError(UrlConnection& connection, const QString& error) override;
  void connectionDidFinishLoading(UrlConnection& connection) override;
  std::shared_ptr<UrlConnection> connection() const;  ///< the post in flight, or null

  /// willTerminate: drops what is queued, writes the cache and takes no more. Happens by itself when the application
  /// quits.
  void willTerminate();

 private:
  void askForConsent(QWidget* parentWindow);
  bool isUploadDue() const;
  bool wroteCacheWithinASecond() const;
  qint64 secondsSince1970() const;
  QString cacheFolder() const;
  void loadCache();
  QString installationIdentifier();
  void dropSent(qsizetype sent);
  void releaseConnection(const UrlConnection& ended);

  const Services services_;
  AnalyticsPreferences preferences_;
  const QString bundleID_;
  std::atomic<bool> shouldLog_ = false;
  mutable std::mutex fields_;  ///< guards what follows, up to the queue
  QVariantList cache_;
  std::optional<QDateTime> lastCacheWrite_;
  std::shared_ptr<UrlConnection> connection_;
  std::mutex uploading_;  ///< the instance's lock
  std::function<void(bool)> showShouldLog_;
  std::unique_ptr<QObject> context_;  ///< of what is scheduled and observed; null once the application has ended
  sys::SerialQueue opQueue_;
};
