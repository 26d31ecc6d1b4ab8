#pragma once

#include "SharedFiles/authorization/AuthorizationController.h"

/// The process's privileged file operations; see AuthorizationController.
class QVAuthorization final {
 public:
  QVAuthorization() = delete;

  /// sharedController
  /// sharedController: made on first use, by whichever thread comes first; the first caller says whether dialogs may be
  /// shown. Lives as long as the process.
  static AuthorizationController& sharedController(bool gui = true);
};
