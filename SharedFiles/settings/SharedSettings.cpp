#include "SharedFiles/settings/SharedSettings.h"

#include "SharedFiles/settings/UserDefaults.h"

QVariant SharedSettings::value(const QString& key, const PathPlatform& paths) {
  return UserDefaults(paths, "com.quorvane.global").objectForKey(key);
}

bool SharedSettings::isOn(const QString& key, const PathPlatform& paths) {
  const QVariant found = value(key, paths);
  const bool number =
      found.typeId() == QMetaType::Bool || found.typeId() == QMetaType::LongLong || found.typeId() == QMetaType::Double;
  return number ? found.toDouble() == 1 : found.typeId() == QMetaType::QString && found.toString() == u"1";
}
