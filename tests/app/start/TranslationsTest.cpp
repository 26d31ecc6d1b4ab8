// The window in German, and which language it takes.

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QProcess>
#include <QPushButton>
#include <QRegularExpression>
#include <QScreen>
#include <QSet>
#include <QTest>
#include <QTimer>
#include <QToolButton>
#include <QXmlStreamReader>
#include <chrono>
#include <thread>

#include <gmock/gmock.h>

#include "SharedFiles/settings/PropertyList.h"
#include "app/KeyTable.h"
#include "app/dialogs/BusySheet.h"
#include "app/dialogs/FlattenedSave.h"
#include "app/messages/MovieReasons.h"
#include "app/scan/ScanStrip.h"
#include "app/start/Translations.h"
#include "app/verdict/VerdictStrip.h"
#include "app/widgets/ResultsView.h"
#include "tests/SharedFiles/QtPrinters.h"
#include "tests/SharedFiles/alerts/AlertFixture.h"
#include "tests/app/ShownTexts.h"
#include "tests/app/WindowFixture.h"

namespace {

using testing::ElementsAre;

Translations::Folders built() {
  return {.own = LUMACHECK_TRANSLATIONS, .qt = Translations::Folders::standard({}).qt};
}

QString fileMenu() {
  return QCoreApplication::translate("MenuBar", "&File");
}

TEST(Translations, TakeTheFirstLanguageThatThereIsAndNoneAfterEnglish) {
  struct Row {
    QStringList languages;
    QString taken, fileMenu;
  };
  const Row rows[] = {
      {{"de"}, "de", "&Datei"},
      {{"de-DE"}, "de-DE", "&Datei"},
      {{"de-Latn-AT", "de-AT", "de"}, "de-Latn-AT", "&Datei"},
      {{"fr-FR", "fr", "de"}, "de", "&Datei"},
      {{"C"}, {}, "&File"},
      {{"en"}, {}, "&File"},
      {{"en-GB", "de"}, {}, "&File"},
      {{"fr-FR", "en-US", "de"}, {}, "&File"},
      {{"xx"}, {}, "&File"},
      {{"enm", "de"}, "de", "&Datei"},
      {{""}, {}, "&File"},
      {{}, {}, "&File"},
      {{"../de"}, {}, "&File"},
  };
  for (const Row& row : rows) {
    const Translations translations(row.languages, built());
    EXPECT_EQ(translations.language(), row.taken) << row.languages.join(' ').toStdString();
    EXPECT_EQ(fileMenu(), row.fileMenu) << row.languages.join(' ').toStdString();
  }
  EXPECT_EQ(fileMenu(), "&File");
}

TEST(Translations, LeaveTheWindowEnglishWhereThereIsNoFileOrABrokenOne) {
  const QTemporaryDir folder;
  EXPECT_EQ(Translations({"de"}, {folder.filePath("none"), folder.path()}).language(), "");
  QFile broken(folder.filePath("lumacheck_de.qm"));
  ASSERT_TRUE(broken.open(QIODevice::WriteOnly));
  broken.write(QByteArray(1000, 'x'));
  broken.close();
  const Translations translations({"de"}, {folder.path(), folder.path()});
  EXPECT_EQ(translations.language(), "");
  EXPECT_EQ(fileMenu(), "&File");
}

TEST(Translations, LieBesideTheProgram) {
  EXPECT_EQ(QDir::cleanPath(Translations::Folders::standard("/opt/x/bin").own), "/opt/x/share/lumacheck/translations");
  const QString window = QFileInfo(LUMACHECK_WINDOW).path();
  EXPECT_TRUE(QFile::exists(Translations::Folders::standard(window).own + "/lumacheck_de.qm"));
}

/// The texts of the sources that are others in German.
QSet<QString> englishTexts() {
  QFile file(LUMACHECK_GERMAN);
  EXPECT_TRUE(file.open(QIODevice::ReadOnly));
  QXmlStreamReader xml(&file);
  QSet<QString> texts;
  QString source;
  while (!xml.atEnd()) {
    if (xml.readNext() != QXmlStreamReader::StartElement) continue;
    if (xml.name() == u"source") source = xml.readElementText();
    if (xml.name() == u"translation" && xml.readElementText() != source) texts << source;
  }
  EXPECT_FALSE(xml.hasError());
  return texts;
}

class German : public WindowFixture {
 protected:
  German() {
    makeController();
    launch();
  }
  QList<QMenu*> menus() { return interface().window().menuBar()->findChildren<QMenu*>(QRegularExpression("Menu$")); }
  static QString mnemonicOf(const QString& text) {
    static const QRegularExpression mnemonic("&([^&])");
    return mnemonic.match(text).captured(1).toLower();
  }
  /// Whatever shows a text has the room that it asks for.
  static void expectRoom(const QWidget& window) {
    for (const QWidget* control : window.findChildren<QWidget*>()) {
      const bool shows = qobject_cast<const QAbstractButton*>(control) || qobject_cast<const QLabel*>(control);
      if (!shows || !control->isVisibleTo(&window)) continue;
      QString text;
      for (const char* name : {"accessibleName", "text"}) text += ' ' + control->property(name).toString();
      const bool isFolded = control->hasHeightForWidth();
      const int height = isFolded ? control->heightForWidth(control->width()) : control->sizeHint().height();
      EXPECT_GE(control->width(), isFolded ? control->minimumSizeHint().width() : control->sizeHint().width())
          << text.toStdString();
      EXPECT_GE(control->height(), height) << text.toStdString();
      EXPECT_TRUE(window.rect().contains(QRect(control->mapTo(&window, QPoint()), control->size())))
          << text.toStdString();
    }
    for (const auto* field : window.findChildren<QLineEdit*>()) {
      EXPECT_GT(field->width(), field->fontMetrics().horizontalAdvance(field->placeholderText()) + 12)
          << field->placeholderText().toStdString();
    }
  }

  const Translations translations_{{"de"}, built()};
};

TEST_F(German, IsSpokenByMenusAndControls) {
  QStringList titles;
  for (const QMenu* menu : menus()) titles << menu->title();
  EXPECT_THAT(titles, ElementsAre("&Datei", "&Bearbeiten", "&Filme", "&Ansicht", "&Hilfe"));
  EXPECT_EQ(interface().checkBtn->text(), "Prüfen");
  EXPECT_EQ(interface().syncBtn->text(), "Metadaten abgleichen");
  EXPECT_TRUE(interface().syncBtn->toolTip().contains("„Sync Metadata“")) << "as the report calls it";
  EXPECT_EQ(interface().source.filenameText->placeholderText(), "Pfad des Quellfilms");
  EXPECT_EQ(interface().dest.filenameText->accessibleName(), "Ziel: Pfad");
  EXPECT_EQ(sourceView().message(), "Quellfilm hier ablegen");
  for (const char* name : {"preferences", "about", "keys"}) choose(name);
  EXPECT_EQ(interface().window().findChild<QDialog*>("keys")->windowTitle(), "Tastenkürzel");
  const QSet<QString> english = englishTexts();
  EXPECT_GT(english.size(), 100);
  for (const auto& [text, where] : shownTexts()) EXPECT_FALSE(english.contains(text)) << where << text.toStdString();
}

TEST_F(German, IsSpokenByTheListOfKeys) {
  QStringList lines;
  for (const KeyRow& row : controller().keys().rows()) lines << row.what;
  EXPECT_TRUE(lines.contains("Ein Bild zurück"));
  EXPECT_TRUE(lines.contains("Quelle öffnen")) << lines.join('\n').toStdString();
  EXPECT_TRUE(lines.contains("Vollbild verlassen"));
}

TEST_F(German, IsSpokenByTheFilePanels) {
  if (!mayShowFilePanels()) return;
  choose("saveAs");
  const auto* const panel = interface().window().findChild<QFileDialog*>();
  ASSERT_NE(panel, nullptr);
  EXPECT_EQ(panel->windowTitle(), "Zielfilm speichern unter");
  EXPECT_THAT(panel->nameFilters(), ElementsAre("Filme (*)"));
}

TEST_F(German, HasAMnemonicOfItsOwnForEveryItem) {
  QSet<QString> titles;
  for (const QMenu* menu : menus()) {
    titles << mnemonicOf(menu->title());
    QSet<QString> mnemonics;
    for (const QAction* action : menu->actions()) {
      if (action->isSeparator()) continue;
      const QString mnemonic = mnemonicOf(action->text());
      EXPECT_FALSE(mnemonic.isEmpty()) << action->text().toStdString();
      EXPECT_FALSE(mnemonics.contains(mnemonic)) << action->text().toStdString();
      mnemonics << mnemonic;
    }
  }
  EXPECT_EQ(titles.size(), menus().size());
  EXPECT_FALSE(titles.contains(QString()));
}

TEST_F(German, HasRoomInTheSmallestWindow) {
  QWidget& window = interface().window();
  for (const QSize size : {QSize(960, 640), QSize(1200, 780)}) {
    window.resize(size);
    runFor(20);
    EXPECT_EQ(window.size(), size);
    EXPECT_LE(window.minimumSizeHint().width(), 960);
    EXPECT_LE(window.minimumSizeHint().height(), 640);
    expectRoom(window);
  }
  const QMenuBar& bar = *interface().window().menuBar();
  for (QAction* action : bar.actions()) {
    EXPECT_TRUE(bar.rect().contains(bar.actionGeometry(action))) << action->text().toStdString();
  }
}

TEST_F(German, HasRoomForAVerdict) {
  QWidget& window = interface().window();
  load(plainMovie(), retaggedMovie());
  interface().linkBtn->setChecked(false);
  interface().checkBtn->click();
  QTimer::singleShot(0, [] { QApplication::activeModalWidget()->close(); });
  interface().syncBtn->click();
  destView().stepFrames(3);
  window.resize(960, 640);
  runFor(20);
  EXPECT_EQ(interface().verdictStrip->view().actions.size(), 3);
  expectRoom(window);
}

TEST_F(German, IsSpokenByAScanAndHasRoomForIt) {
  QWidget& window = interface().window();
  window.resize(960, 640);
  load(plainMovie(), darkerMovie());
  EXPECT_EQ(interface().scanBtn->text(), "Scannen");
  interface().scanBtn->click();
  EXPECT_EQ(interface().scanBtn->text(), "Scan abbrechen");
  runFor(20);
  expectRoom(window);
  ASSERT_TRUE(waitUntil([this] { return !controller().scanRun()->isRunning(); }));
  runFor(20);
  expectRoom(window);
  EXPECT_TRUE(interface().scanStrip->view().headline.startsWith("Scan: Gammaverschiebung: Das Ziel ist dunkler"))
      << interface().scanStrip->view().headline.toStdString();
  EXPECT_TRUE(said().text.contains("wurden in")) << said().text.toStdString();
  const QSet<QString> english = englishTexts();
  for (const auto& [text, where] : shownTexts()) EXPECT_FALSE(english.contains(text)) << where << text.toStdString();
}

TEST_F(German, HasRoomInTheDialogs) {
  for (const char* name : {"preferences", "about", "keys"}) {
    choose(name);
    runFor(20);
    const auto* const dialog = interface().window().findChild<QDialog*>(name);
    expectRoom(*dialog);
    EXPECT_LE(dialog->width(), 960) << name;
    EXPECT_LE(dialog->height(), 640) << name;
  }
}

TEST_F(German, LeavesTheReportAndTheAlertsAsTheyAre) {
  QStringList alerts;
  QTimer answers;
  answers.callOnTimeout([&] {
    for (AlertPanel* panel : shownPanels()) {
      alerts << panel->accessibleName() << panel->accessibleDescription();
      panel->defaultButton()->click();
    }
  });
  answers.start(10);
  load(plainMovie(), darkerMovie());
  choose("check");
  const QString report = interface().resultsView->toPlainText();
  EXPECT_TRUE(report.contains("\n\nSource and destination gamma metadata match.\n\n")) << report.toStdString();
  EXPECT_TRUE(report.contains("(darker)\n\nRecommendation:\n")) << report.toStdString();
  EXPECT_THAT(alerts, ElementsAre());
  choose("sync");
  EXPECT_THAT(alerts, ElementsAre("Metadata sync complete", "Please check the destination preview and save the file."));
}

TEST_F(German, IsSpokenByTheSheets) {
  load(plainMovie(), retaggedMovie());
  QStringList said;
  QTimer watch;
  watch.callOnTimeout([&] {
    const auto* const sheet = qobject_cast<QDialog*>(QApplication::activeModalWidget());
    if (sheet == nullptr || !sheet->findChild<QPushButton*>()->isEnabled()) return;
    expectRoom(*sheet);
    said << sheet->findChild<QLabel*>()->text() << sheet->findChild<QPushButton*>()->text();
    sheet->findChild<QPushButton*>()->click();
    for (const QLabel* label : sheet->findChildren<QLabel*>()) said << label->text();
  });
  watch.start(10);
  const CopyWriter slow = [](movie::Movie& /*movie*/, const std::string& /*path*/,
                             const movie::CopyProgress& progress) -> movie::Result<void> {
    while (progress(1, 2)) std::this_thread::sleep_for(std::chrono::milliseconds(2));
    return {};
  };
  ASSERT_TRUE(writeFlattened(*controller().destQTMov(), home_.filePath("copy.mov"), interface().window(), slow));
  EXPECT_THAT(said, ElementsAre("copy.mov wird gespeichert\u00a0…", "Abbrechen", "Wird abgebrochen\u00a0…"));
  said.clear();
  const auto work = [](const std::stop_token& stop) {
    while (!stop.stop_requested()) std::this_thread::sleep_for(std::chrono::milliseconds(2));
  };
  runUnderBusySheet(interface().window(), "1", {.work = work, .progress = [] { return QString("2"); }});
  EXPECT_THAT(said, ElementsAre("1", "Abbrechen", "Wird abgebrochen\u00a0…", "2"));
}

TEST_F(German, IsSpokenByTheControlsOfAnAlert) {
  AlertPanel panel({"Source frame is too dark", "More", {}, {}, {}}, &interface().window());
  panel.showSuppressionButton(false, [](bool) {});
  EXPECT_EQ(panel.suppressionButton()->text(), "Diese Meldung nicht mehr anzeigen");
  EXPECT_EQ(panel.findChild<QTextEdit*>("messageText")->accessibleName(), "Meldung");
}

TEST_F(German, IsSpokenOfAFrameThatCannotBeHad) {
  EXPECT_EQ(QCoreApplication::translate("QVMovieView", "This frame cannot be shown: %1")
                .arg(MovieReasons::sentenceOf({"/a.mov", {}, 0, movie::Reason::SamplesOverlap})),
            "Dieses Bild kann nicht gezeigt werden: „/a.mov“ lässt sich nicht lesen: die Samples überlappen sich.");
}

TEST_F(German, IsSpokenOfEveryReasonOfTheMovieLayer) {
  constexpr const char* reasons[] = {
#define REASON(name, text) text,
#include "movie/atoms/ReasonList.h"
  };
  for (const QString english : reasons) {
    const bool hasWords = english.contains(QRegularExpression("[a-z]"));
    EXPECT_EQ(QCoreApplication::translate("MovieReasons", english.toUtf8()) != english, hasWords)
        << english.toStdString();
  }
}

/// The program in the surroundings of a user who speaks another language.
class TranslatedProgram : public testing::Test {
 protected:
  void start(const QStringList& languageVariables) {
    QProcessEnvironment surroundings = QProcessEnvironment::systemEnvironment();
    for (const char* name :
         {"LANG", "LANGUAGE", "LC_ALL", "LC_MESSAGES", "XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_CONFIG_HOME"}) {
      surroundings.remove(name);
    }
    surroundings.insert("HOME", home_.path());
    surroundings.insert("XDG_RUNTIME_DIR", home_.path());
    surroundings.insert("QT_QPA_PLATFORM", "offscreen");
    for (const QString& variable : languageVariables) {
      surroundings.insert(variable.section('=', 0, 0), variable.section('=', 1));
    }
    program_.setProcessEnvironment(surroundings);
    program_.start(LUMACHECK_WINDOW, {});
    ASSERT_TRUE(program_.waitForStarted());
    // The launch is recorded once the translation is in place.
    ASSERT_TRUE(QTest::qWaitFor([&] { return stored().contains("launchCount"); }, 20000));
  }
  QVariantMap stored() const { return PropertyList::readDictionary(defaults_).value_or(QVariantMap()); }
  void end() {
    program_.terminate();
    ASSERT_TRUE(program_.waitForFinished(20000));
    EXPECT_EQ(program_.exitCode(), 0);
    QFile::remove(defaults_);
  }
  /// Translations stay mapped.
  QByteArray mappedFiles() const {
    QFile maps(QStringLiteral("/proc/%1/maps").arg(program_.processId()));
    return maps.open(QIODevice::ReadOnly) ? maps.readAll() : QByteArray();
  }

  const QTemporaryDir home_;
  const QString defaults_ = home_.filePath(".local/share/quorvane/Preferences/com.quorvane.Lumacheck.plist");
  QProcess program_;
};

TEST_F(TranslatedProgram, SpeaksTheUsersLanguage) {
  struct Row {
    QStringList variables;
    bool isGerman;
  };
  const Row rows[] = {{{"LANG=de_DE.UTF-8"}, true},
                      {{"LANG=fr_FR.UTF-8", "LANGUAGE=fr:de"}, true},
                      {{}, false},
                      {{"LC_ALL=C"}, false},
                      {{"LANG=en_GB.UTF-8"}, false},
                      {{"LANG=xx_YY.UTF-8"}, false},
                      {{"LANG=en_US.UTF-8", "LANGUAGE=en:de"}, false}};
  for (const Row& row : rows) {
    start(row.variables);
    const QByteArray maps = mappedFiles();
    EXPECT_TRUE(maps.contains("libQt6Widgets"));
    EXPECT_EQ(maps.contains("/lumacheck_de.qm"), row.isGerman) << row.variables.join(' ').toStdString();
    end();
  }
}

}  // namespace
