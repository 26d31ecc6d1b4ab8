#pragma once

#include <QString>
#include <QVariant>

#include "SharedFiles/foundation/PathPlatform.h"

/// The settings that all of the maker's applications share: com.quorvane.global.plist in the user's preferences folder.
/// Read anew at every call; callable from any thread.
class SharedSettings final {
 public:
  SharedSettings() = delete;

  /// An invalid value when the file or the key is missing.
  static QVariant value(const QString& key, const PathPlatform& paths);
  /// Whether the value is the string "1", or a number equal to boolean true.
  static bool isOn(const QString& key, const PathPlatform& paths);
};
