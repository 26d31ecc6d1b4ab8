#include "SharedFiles/settings/SharedSettings.h"

#include <QVariantMap>

#include "SharedFiles/foundation/QVLocalPaths.h"
#include "SharedFiles/settings/PropertyList.h"

QVariant SharedSettings::value(const QString& key, const PathPlatform& paths) {
  const QString folder = QVLocalPaths::prefsDirectory(true, paths);
  if (folder.isNull()) return {};
  return PropertyList::readDictionary(folder + QStringLiteral("/com.quorvane.global.plist"))
      .value_or(QVariantMap())
      .value(key);
}

bool SharedSettings::isOn(const QString& key, const PathPlatform& paths) {
  const QVariant found = value(key, paths);
  switch (found.typeId()) {
    case QMetaType::QString:
      return found.toString() == QLatin1String("1");
    case QMetaType::Bool:
      return found.toBool();
    case QMetaType::LongLong:
      return found.toLongLong() == 1;
    case QMetaType::Double:
      return found.toDouble() == 1.0;
    default:
      return false;
  }
}
