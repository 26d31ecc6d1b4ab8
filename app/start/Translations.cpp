#include "app/start/Translations.h"

#include <QCoreApplication>
#include <QLibraryInfo>

namespace {

/// What the texts of the sources are written in.
bool isEnglish(const QString& language) {
  return language == QLatin1String("C") || language == QLatin1String("en") || language.startsWith(QLatin1String("en-"));
}

}  // namespace

Translations::Folders Translations::Folders::standard(const QString& programFolder) {
  return {.own = programFolder + QStringLiteral("/../share/lumacheck/translations"),
          .qt = QLibraryInfo::path(QLibraryInfo::TranslationsPath)};
}

Translations::Translations(const QStringList& languages, const Folders& folders) {
  for (const QString& language : languages) {
    if (isEnglish(language) || load(language, folders)) return;
  }
}

/// A loader by QLocale would go on past English, to a language that the user reads less gladly.
bool Translations::load(const QString& language, const Folders& folders) {
  const QString suffix = u'_' + QString(language).replace(u'-', u'_');  // "_de_AT" finds "_de" too
  if (!own_.load(QStringLiteral("lumacheck") + suffix, folders.own)) return false;
  language_ = language;
  QCoreApplication::installTranslator(&own_);
  if (qt_.load(QStringLiteral("qtbase") + suffix, folders.qt)) QCoreApplication::installTranslator(&qt_);
  return true;
}
