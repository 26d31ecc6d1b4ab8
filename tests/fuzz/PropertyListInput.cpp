#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <cmath>

#include "SharedFiles/settings/PropertyList.h"
#include "SharedFiles/settings/UserDefaults.h"
#include "tests/fuzz/FuzzInputs.h"

namespace fuzz {

namespace {

constexpr int deepest = 70;

bool same(const QVariant& left, const QVariant& right, int depth = 0) {
  if (left.typeId() != right.typeId() || depth > deepest) return false;
  if (left.typeId() == QMetaType::Double) {
    const double a = left.toDouble(), b = right.toDouble();
    return a == b || (std::isnan(a) && std::isnan(b));
  }
  if (left.typeId() == QMetaType::QVariantList) {
    const QVariantList a = left.toList(), b = right.toList();
    if (a.size() != b.size()) return false;
    for (qsizetype i = 0; i < a.size(); ++i) {
      if (!same(a[i], b[i], depth + 1)) return false;
    }
    return true;
  }
  if (left.typeId() == QMetaType::QVariantMap) {
    const QVariantMap a = left.toMap(), b = right.toMap();
    if (a.keys() != b.keys()) return false;
    for (auto entry = a.begin(); entry != a.end(); ++entry) {
      if (!same(entry.value(), b.value(entry.key()), depth + 1)) return false;
    }
    return true;
  }
  return left == right;
}

/// One value has one text. The library's binary form holds equal parts once or twice, as it finds them in memory.
bool isXml(const QByteArray& bytes) {
  return bytes.startsWith("<?xml");
}

/// Keeps the Library in a folder of the test's own.
class ScratchPlatform final : public LinuxPathPlatform {
 public:
  ScratchPlatform() : LinuxPathPlatform(1000, BundleInfo::mainBundle()) {}
  QStringList searchPaths(SearchPathDirectory, SearchPathDomain) const override { return {folder_.path()}; }
  QString homeDirectory() const override { return folder_.path(); }

 private:
  QTemporaryDir folder_;
};

/// The same file as user defaults: what is a dictionary is kept when a value joins it, anything else is set aside.
std::string tryDefaults(const QByteArray& xml, const std::optional<QVariant>& value) {
  static const ScratchPlatform platform;
  UserDefaults defaults(platform, BundleInfo::mainBundle());
  const QString path = defaults.path();
  const QDir folder = QFileInfo(path).dir();
  folder.mkpath(".");
  for (const QString& name : folder.entryList(QDir::Files)) QFile::remove(folder.filePath(name));
  QFile file(path);
  if (!file.open(QIODevice::WriteOnly) || file.write(xml) != xml.size()) return "the test cannot write";
  file.close();

  const bool dictionary = value && value->typeId() == QMetaType::QVariantMap;
  QVariantMap expected = dictionary ? value->toMap() : QVariantMap();
  for (auto entry = expected.begin(); entry != expected.end(); ++entry) {
    if (!same(defaults.objectForKey(entry.key()), entry.value())) return "a default is not what the file says";
    defaults.stringForKey(entry.key());
    defaults.integerForKey(entry.key());
    defaults.valueForKeyPath(entry.key() + ".a");
  }
  const bool writable = PropertyList::toBytes(expected).has_value();
  const bool stored = defaults.setObject(QStringLiteral("stored"), QStringLiteral("lastSourceFile"));
  if (stored != writable) return "a value was " + std::string(stored ? "" : "not ") + "stored";
  if (!stored) return {};
  expected.insert("lastSourceFile", "stored");
  const auto after = PropertyList::readDictionary(path);
  if (!after || !same(*after, expected)) return "storing a default changed others";
  const bool aside = !dictionary && folder.entryList(QDir::Files).size() < 2;
  return aside ? "what could not be read was overwritten" : "";
}

}  // namespace

std::string tryPropertyList(ByteView input) {
  const QByteArray xml(reinterpret_cast<const char*>(input.data()), static_cast<qsizetype>(input.size()));
  const auto value = PropertyList::fromBytes(xml);
  if (value) {
    if (const auto written = PropertyList::toBytes(*value)) {
      const auto again = PropertyList::fromBytes(*written);
      if (!again) return "what was written cannot be read";
      if (!same(*again, *value)) return "what was written reads as something else";
      const auto twice = PropertyList::toBytes(*again);
      if (!twice) return "what was read cannot be written again";
      if (isXml(*written) && *twice != *written) return "written again, it is another text";
      const auto last = PropertyList::fromBytes(*twice);
      if (!last || !same(*last, *value)) return "written again, it reads as something else";
    }
  }
  // A round through the disk costs a hundred times as much.
  return input.size() % 64 == 0 ? tryDefaults(xml, value) : "";
}

}  // namespace fuzz
