#pragma once

#include <QString>
#include <QVariant>
#include <QVariantMap>

#include "SharedFiles/foundation/PathPlatform.h"

/// com.quorvane.qc.plist in the user's preferences folder: the decision on analytics and the installation's identifier.
/// All of the maker's applications share it. A missing, unreadable or malformed file counts as empty. The file appears
/// or changes whole or not at all, and every change keeps the other keys: those of a process wait for each other.
/// Callable from any thread; the folder is looked up at every call.
class AnalyticsPreferences {
 public:
  static constexpr char decisionKey[] = "logQC";              ///< boolean; absent until the user decides
  static constexpr char identifierKey[] = "uid";              ///< 12 characters
  static constexpr char identifierDateKey[] = "uidAssigned";  ///< when the identifier was made

  /// The platform outlives the object.
  explicit AnalyticsPreferences(const PathPlatform& platform) : platform_(platform) {}

  QString path() const;
  QVariantMap read() const;
  /// Sets the values and keeps what else stands there. False when the file could not be written.
  bool set(const QVariantMap& values) const;

 private:
  const PathPlatform& platform_;
};
