#pragma once

#include <QString>
#include <QStringList>
#include <functional>
#include <thread>
#include <vector>

#include "SharedFiles/foundation/PathPlatform.h"
#include "SharedFiles/tasks/ApplicationBundle.h"

/// What the updater is found and started with. The paths outlive every call.
struct SoftwareUpdateServices {
  const PathPlatform& paths = PathPlatform::standard();
  QString hostBundle = ApplicationBundle::hostPath();  ///< of the application that is to be updated
  /// Starts a program and does not wait. Callable from any thread.
  std::function<void(const QString& path, const QStringList& arguments)> runTaskAndReturn;
  /// The workspace opens an application that stands there, as the user would, and does not wait.
  std::function<void(const QString& applicationPath)> openApplication;

  static SoftwareUpdateServices standard();
};

/// Finds the maker's updater, an application of its own, has it check for a newer version when the application starts
/// and opens it on demand. The updater does the rest. Failures go to the log.
///
/// An updater inside the host bundle is started from a copy in the temporary folder, which the bundle's group may no
/// longer write to. Everybody may write in that folder: what nobody but the user and the superuser can have put there
/// or can change is started, and nothing else. Nobody is ever asked for administrator rights.
class QVSoftwareUpdate {
 public:
  using Services = SoftwareUpdateServices;

  explicit QVSoftwareUpdate(Services services = Services::standard());
  ~QVSoftwareUpdate();  ///< waits for the start of a check to end
  QVSoftwareUpdate(const QVSoftwareUpdate&) = delete;
  QVSoftwareUpdate& operator=(const QVSoftwareUpdate&) = delete;

  void awakeFromNib() { startup(); }
  /// Runs automaticallyCheckForUpdates() on a thread of its own, unless "SUCheckAtStartup" in the settings that all of
  /// the maker's applications share is the boolean false.
  void startup();
  /// manualUpdateCheck: false where there is no updater that may be opened
  bool manualUpdateCheck() const { return launchSoftwareUpdate(services_); }

  // Callable from any thread, and blocking.

  /// The path of an updater, or nil: in the machine-wide Applications folder, else the copy of the one in the host
  /// bundle, whether it could be made or not.
  static QString updaterPath(const Services& services = Services::standard());
  static bool launchSoftwareUpdate(const Services& services = Services::standard());
  /// Starts the updater with "-checkpath" and the path of the host bundle.
  static void automaticallyCheckForUpdates(const Services& services = Services::standard());

 private:
  const Services services_;
  std::vector<std::thread> checks_;
};
