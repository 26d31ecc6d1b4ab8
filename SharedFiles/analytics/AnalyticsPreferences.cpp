#include "SharedFiles/analytics/AnalyticsPreferences.h"

#include <QDir>
#include <mutex>

#include "SharedFiles/foundation/QVLocalPaths.h"
#include "SharedFiles/settings/PropertyList.h"

namespace {

/// Guards the file from being read and rewritten by two threads at once.
std::mutex changing;

}  // namespace

QString AnalyticsPreferences::path() const {
  return QVLocalPaths::prefsDirectory(true, platform_) + QStringLiteral("/com.quorvane.qc.plist");
}

QVariantMap AnalyticsPreferences::read() const {
  return PropertyList::readDictionary(path()).value_or(QVariantMap());
}

bool AnalyticsPreferences::set(const QVariantMap& values) const {
  const std::lock_guard guard(changing);
  QVariantMap all = read();
  all.insert(values);
  return QDir().mkpath(QVLocalPaths::prefsDirectory(true, platform_)) && PropertyList::write(all, path());
}
