#pragma once

#include "SharedFiles/support/Workspace.h"

/// The desktop that the user is logged into.
class DesktopWorkspace : public Workspace {
 public:
  bool openFile(const QString& path) override;
  bool openURL(const QString& address) override;

  /// Lives as long as the process.
  static Workspace& standard();
};
