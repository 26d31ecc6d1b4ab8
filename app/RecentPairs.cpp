#include "app/RecentPairs.h"

#include <QVariantList>
#include <QVariantMap>

#include "SharedFiles/settings/UserDefaults.h"

namespace {

QString defaultsKey() {
  return QStringLiteral("recentPairs");
}
QString sourceKey() {
  return QStringLiteral("source");
}
QString destKey() {
  return QStringLiteral("dest");
}

}  // namespace

QList<MoviePair> RecentPairs::all() const {
  QList<MoviePair> pairs;
  for (const QVariant& each : defaults_.objectForKey(defaultsKey()).toList()) {
    const QVariantMap stored = each.toMap();
    const MoviePair pair{stored.value(sourceKey()).toString(), stored.value(destKey()).toString()};
    if (!pair.source.isEmpty() && !pair.dest.isEmpty()) pairs << pair;
  }
  return pairs.first(qMin(pairs.size(), most));
}

bool RecentPairs::add(const MoviePair& pair) {
  QList<MoviePair> pairs = all();
  pairs.removeAll(pair);
  pairs.prepend(pair);
  QVariantList stored;
  for (const MoviePair& each : pairs.first(qMin(pairs.size(), most))) {
    stored << QVariantMap{{sourceKey(), each.source}, {destKey(), each.dest}};
  }
  return defaults_.setObject(stored, defaultsKey());
}

bool RecentPairs::forgetAll() {
  return defaults_.setObject(QVariant(), defaultsKey());
}
