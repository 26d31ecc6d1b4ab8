#pragma once

#include <QString>
#include <QStringList>
#include <QTranslator>

/// The window's texts in the user's language. They are English in the sources, and so is the window wherever there is
/// no translation. The report, the alerts' own texts and the command are English in every language, and so is the log,
/// but for what others call their failures.
class Translations {
 public:
  /// Where things lie. Folders need not exist.
  struct Folders {
    QString own;  ///< lumacheck_<language>.qm
    QString qt;   ///< qtbase_<language>.qm, for Qt's own dialogs and the names of keys
    /// Beside the program, which runs from `programFolder`, and in Qt's own folder.
    static Folders standard(const QString& programFolder);
  };

  /// Installs the translation into the first of the languages that has one, of the texts from English on none.
  /// Languages as QLocale::uiLanguages() gives them ("de-AT"). Before the window is made; on the main thread, while
  /// there is an application object. Its end takes the translation away.
  Translations(const QStringList& languages, const Folders& folders);

  /// The language in force; empty for English.
  const QString& language() const { return language_; }

 private:
  bool load(const QString& language, const Folders& folders);

  QTranslator own_, qt_;
  QString language_;
};
