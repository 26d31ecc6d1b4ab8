#include "SharedFiles/foundation/BundleInfo.h"

#include <QFile>
#include <memory>
#include <utility>

namespace {

QHash<QString, QString> compiledInformation() {
  return {
      {QStringLiteral("CFBundleIdentifier"), QStringLiteral("com.quorvane.Lumacheck")},
      {QStringLiteral("CFBundleName"), QStringLiteral("Lumacheck")},
      {QStringLiteral("CFBundleVersion"), QStringLiteral(LUMACHECK_VERSION)},
      {QStringLiteral("CFBundleShortVersionString"), QStringLiteral(LUMACHECK_VERSION)},
      {QStringLiteral("QVShortName"), QStringLiteral("lumacheck")},
  };
}

}  // namespace

BundleInfo::BundleInfo(QHash<QString, QString> information, QString executablePath)
    : information_(std::move(information)), executablePath_(std::move(executablePath)) {}

const BundleInfo& BundleInfo::mainBundle() {
  // Never destroyed: the log still reads it while the process exits.
  static const BundleInfo* const bundle =
      std::make_unique<BundleInfo>(compiledInformation(), QFile::symLinkTarget(QStringLiteral("/proc/self/exe")))
          .release();
  return *bundle;
}

QString BundleInfo::objectForInfoDictionaryKey(const QString& key) const {
  return information_.value(key);
}

QString BundleInfo::executableName() const {
  const QString file = executablePath_.section(u'/', -1);
  const qsizetype dot = file.lastIndexOf(u'.');
  return dot > 0 ? file.left(dot) : file;
}

QString BundleInfo::executableFolder() const {
  const qsizetype slash = executablePath_.lastIndexOf(u'/');
  return slash > 0 ? executablePath_.left(slash) : executablePath_.left(slash + 1);
}
