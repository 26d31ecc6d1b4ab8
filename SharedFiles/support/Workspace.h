#pragma once

#include <QString>

/// Opens files and pages for the user with the programs of his choice. On the main thread. The answers tell whether
/// something was started, not what became of it.
class Workspace {
 public:
  virtual ~Workspace() = default;

  virtual bool openFile(const QString& path);    ///< with its default application
  virtual bool openURL(const QString& address);  ///< in the default browser

  /// The desktop that the user is logged into; lives as long as the process.
  static Workspace& standard();
};
