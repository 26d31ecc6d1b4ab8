#include "SharedFiles/tasks/ApplicationBundle.h"

#include <QDir>
#include <QFileInfo>

#include "SharedFiles/foundation/FilePackage.h"
#include "SharedFiles/settings/PropertyList.h"
#include "SharedFiles/tasks/QVTaskEx.h"

namespace {

bool isPlainFileName(const QString& name) {
  return !name.isEmpty() && name != QLatin1String(".") && name != QLatin1String("..") && !name.contains(u'/') &&
         !name.contains(QChar(0));
}

QString executableNamedBy(const QString& information) {
  const auto keys = PropertyList::readDictionary(information);
  if (!keys) return QString();
  const QVariant name = keys->value(QStringLiteral("CFBundleExecutable"));
  return name.typeId() == QMetaType::QString && isPlainFileName(name.toString()) ? name.toString() : QString();
}

}  // namespace

QString ApplicationBundle::hostPath(const BundleInfo& host) {
  const QString folder = host.executableFolder();
  return folder.isNull() ? QString() : QDir::cleanPath(folder + QStringLiteral("/../lib/lumacheck"));
}

bool ApplicationBundle::exists() const {
  return fileExists(path_);
}

QString ApplicationBundle::executable() const {
  const QString information = path_ + QStringLiteral("/Contents/Info.plist");
  if (fileExists(information)) {
    const QString name = executableNamedBy(information);
    return name.isNull() ? QString() : path_ + QStringLiteral("/Contents/MacOS/") + name;
  }
  const QString appRun = path_ + QStringLiteral("/AppRun");
  return fileExists(appRun) ? appRun : QString();
}

QString ApplicationBundle::pathForResource(const QString& name, const QString& extension) const {
  return path_ + QStringLiteral("/Contents/Resources/") + name + u'.' + extension;
}

bool ApplicationBundle::open(const QStringList& arguments) const {
  const QString file = executable();
  if (file.isNull() || QFileInfo(file).isDir() || !isExecutableFileAtPath(file)) return false;
  QVTaskEx::runTaskAndReturn(QFileInfo(file).absoluteFilePath(), arguments);
  return true;
}
