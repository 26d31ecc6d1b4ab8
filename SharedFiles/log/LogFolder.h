#pragma once

#include <QString>
#include <QStringList>
#include <optional>

#include "SharedFiles/foundation/PathPlatform.h"

/// The generations of one application's log: 1 is the current one, 5 the oldest. For the superuser the current file
/// lies in the machine-wide Library, while the folder that is made and rotated stays the user's.
class LogFolder {
 public:
  static constexpr int generations = 5;

  LogFolder(const PathPlatform& platform, QString name);

  const QString& path() const { return path_; }
  QString generation(int number) const;
  QString currentFile() const;

  /// The generations that exist, newest first.
  QStringList availableLogs() const;

  /// Moves every generation one up, drops the oldest, be it a folder, and leaves an empty current file. The text that
  /// tells what failed, with its line break, or nothing; after a failure nothing further was done.
  std::optional<QString> startGeneration() const;

 private:
  std::optional<QString> rotate() const;

  const PathPlatform& platform_;
  QString name_, path_;
};
