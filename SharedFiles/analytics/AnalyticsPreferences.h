#pragma once

#include "SharedFiles/settings/UserDefaults.h"

/// com.quorvane.qc.plist in the user's preferences folder, which all of the maker's applications share: the decision on
/// analytics and the installation's identifier.
class AnalyticsPreferences : public UserDefaults {
 public:
  static constexpr char decisionKey[] = "logQC";              ///< boolean; absent until the user decides
  static constexpr char identifierKey[] = "uid";              ///< 12 characters
  static constexpr char identifierDateKey[] = "uidAssigned";  ///< when the identifier was made

  explicit AnalyticsPreferences(const PathPlatform& platform) : UserDefaults(platform, "com.quorvane.qc") {}
};
