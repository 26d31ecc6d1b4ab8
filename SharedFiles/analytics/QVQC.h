#pragma once

#include "SharedFiles/analytics/AnalyticsController.h"

/// The usage analytics of the running program.
class QVQC final {
 public:
  QVQC() = delete;

  /// The one controller of the process, made at the first call, which is the main thread's, and never destroyed.
  static AnalyticsController& sharedController();

  /// What that controller is made with: the user's own folders and defaults, the running system, and the maker's hosts.
  static AnalyticsServices services();
};
