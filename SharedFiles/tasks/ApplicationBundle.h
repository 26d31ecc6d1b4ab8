#pragma once

#include <QString>
#include <QStringList>
#include <utility>

#include "SharedFiles/foundation/BundleInfo.h"

/// An application as a folder: `Contents/Info.plist`, whose CFBundleExecutable names a file in `Contents/MacOS`, or an
/// AppDir, whose executable is `AppRun`. Immutable; nothing is read before an operation asks. Callable from any thread.
/// Failures are null or false, with a log line only where QVTaskEx writes one.
class ApplicationBundle {
 public:
  /// A relative path is taken from the working folder at every operation.
  explicit ApplicationBundle(QString path) : path_(std::move(path)) {}

  /// The folder of the running program's own bundle: `lib/lumacheck` under the prefix whose `bin` holds the executable.
  /// Its resources lie in `Contents/Resources`. Null when the bundle has no executable.
  static QString hostPath(const BundleInfo& host = BundleInfo::mainBundle());

  const QString& path() const { return path_; }
  bool exists() const;  ///< whether anything stands at the path

  /// The file to start, which need not be there: the one that Info.plist names, else AppRun. Null when the folder has
  /// neither, and for a name in Info.plist that is no plain file name.
  QString executable() const;

  /// pathForResource:ofType: in `Contents/Resources`, whether it is there or not.
  QString pathForResource(const QString& name, const QString& extension) const;

  /// Starts the executable with these arguments and returns at once; false when there is nothing that could be started.
  /// What becomes of the started program is not told.
  bool open(const QStringList& arguments) const;

 private:
  QString path_;
};
