// Every text of the window can be translated, but for those that are the same in every language.

#include <QAction>
#include <QCheckBox>
#include <QFile>
#include <QLabel>
#include <QPushButton>
#include <QRegularExpression>
#include <QSet>
#include <QTest>
#include <QTimer>
#include <QTranslator>
#include <atomic>
#include <chrono>
#include <thread>

#include <gmock/gmock.h>

#include "app/dialogs/BusySheet.h"
#include "app/dialogs/FlattenedSave.h"
#include "app/messages/MovieReasons.h"
#include "app/scan/ScanStrip.h"
#include "app/widgets/MessageLine.h"
#include "app/widgets/ResultsView.h"
#include "app/widgets/TransportBar.h"
#include "tests/SharedFiles/QtPrinters.h"
#include "tests/SharedFiles/alerts/AlertFixture.h"
#include "tests/app/ShownTexts.h"
#include "tests/app/WindowFixture.h"

namespace {

constexpr QChar opening(u'⟦'), closing(u'⟧');

/// Puts every text in brackets.
class Bracketing : public QTranslator {
 public:
  QString translate(const char* /*context*/, const char* text, const char* /*comment*/, int /*n*/) const override {
    return opening + QString::fromUtf8(text) + closing;
  }
  bool isEmpty() const override { return false; }
};

/// Nothing to translate in it: a name, a number, a letter on a key, a path.
bool isSameInEveryLanguage(const QString& text) {
  static const QSet<QString> names{"Lumacheck", "Qt", "FFmpeg libavcodec", "FFmpeg libavformat", "FFmpeg libavutil",
                                   "Little CMS", "libplist", "elfutils libdw", "OpenSSL", "zlib",
                                   // Licences
                                   "LGPL-3.0", "LGPL-3.0-or-later", "GPL-2.0-or-later", "MIT", "LGPL-2.1-or-later",
                                   "Apache-2.0", "Zlib"};
  static const QRegularExpression version("^(Lumacheck )?[0-9][0-9a-z.+~-]*$"), key("^[A-Z,.]$"), letter("\\pL");
  return names.contains(text) || version.match(text).hasMatch() || key.match(text).hasMatch() ||
         !letter.match(text).hasMatch() || QFile::exists(text);
}

class Texts : public WindowFixture {
 protected:
  Texts() {
    QCoreApplication::installTranslator(&bracketing_);
    makeController();
    launch();
  }
  ~Texts() override { QCoreApplication::removeTranslator(&bracketing_); }

  static void expectAllTranslatable() {
    for (const auto& [text, where] : shownTexts()) {
      EXPECT_TRUE(text.contains(opening) || isSameInEveryLanguage(text)) << where << ": " << text.toStdString();
    }
  }
  QList<QString> visibleDialogs() {
    QList<QString> names;
    for (const auto* dialog : interface().window().findChildren<QDialog*>()) {
      if (dialog->isVisible()) names << dialog->objectName();
    }
    return names;
  }

  /// Looks at the sheet that comes up, before and after its Cancel is clicked.
  void cancelSheet() {
    watch_.callOnTimeout([this] {
      const auto* const sheet = qobject_cast<QDialog*>(QApplication::activeModalWidget());
      if (sheet == nullptr || sheets_ > 0) return;
      ++sheets_;
      expectAllTranslatable();
      sheet->findChild<QPushButton*>()->click();
      expectAllTranslatable();
    });
    watch_.start(10);
  }

  Bracketing bracketing_;
  QTimer watch_;
  int sheets_ = 0;
};

TEST_F(Texts, OfTheWindowCanBeTranslated) {
  expectAllTranslatable();
  EXPECT_GT(shownTexts().size(), 80);
  load(plainMovie(), retaggedMovie());
  sourceView().togglePlaying();  // other texts on the button
  interface().source.transport->muteButton->click();
  EXPECT_THAT(interface().source.transport->playButton->toolTip().toStdString(), testing::HasSubstr("pause"));
  EXPECT_THAT(interface().source.transport->muteButton->toolTip().toStdString(), testing::HasSubstr("sound on"));
  expectAllTranslatable();
}

TEST_F(Texts, OfTheDialogsCanBeTranslated) {
  for (const char* name : {"preferences", "about", "keys"}) choose(name);
  EXPECT_EQ(visibleDialogs().size(), 3);
  expectAllTranslatable();
}

TEST_F(Texts, OfTheFilePanelsCanBeTranslated) {
  if (!mayShowFilePanels()) return;
  for (const char* name : {"openSource", "openDest", "saveAs"}) {
    choose(name);
    const auto panels = interface().window().findChildren<QFileDialog*>();
    ASSERT_EQ(panels.size(), 1);
    EXPECT_TRUE(panels[0]->windowTitle().startsWith(opening)) << name;
    for (const QString& filter : panels[0]->nameFilters())
      EXPECT_TRUE(filter.contains(opening)) << filter.toStdString();
    panels[0]->close();
    runFor(1);  // which deletes it
  }
}

TEST_F(Texts, OfTheSavingSheetCanBeTranslated) {
  load(plainMovie(), retaggedMovie());
  const CopyWriter slow = [](movie::Movie& /*movie*/, const std::string& /*path*/,
                             const movie::CopyProgress& progress) -> movie::Result<void> {
    while (progress(1, 2)) std::this_thread::sleep_for(std::chrono::milliseconds(2));
    return {};
  };
  cancelSheet();
  ASSERT_TRUE(writeFlattened(*controller().destQTMov(), home_.filePath("copy.mov"), interface().window(), slow));
  EXPECT_EQ(sheets_, 1);
}

TEST_F(Texts, OfTheGatheringSheetCanBeTranslated) {
  const auto work = [](const std::stop_token& stop) {
    while (!stop.stop_requested()) std::this_thread::sleep_for(std::chrono::milliseconds(2));
  };
  cancelSheet();
  runUnderBusySheet(interface().window(), "1", {.work = work, .progress = [] { return QString("2"); }});
  EXPECT_EQ(sheets_, 1);
}

TEST_F(Texts, OfAnAlertAreItsOwnButForTheControls) {
  AlertPanel panel({"A message", "And more", {}, "Alternate", {}}, &interface().window());
  panel.showSuppressionButton(false, [](bool) {});
  EXPECT_EQ(panel.defaultButton()->text(), "⟦OK⟧");
  EXPECT_EQ(panel.alternateButton()->text(), "Alternate");
  EXPECT_TRUE(panel.suppressionButton()->text().startsWith(opening));
  EXPECT_EQ(panel.accessibleName(), "A message");
  for (const char* name : {"messageText", "informativeText"}) {
    EXPECT_TRUE(panel.findChild<QTextEdit*>(name)->accessibleName().startsWith(opening)) << name;
  }
}

TEST_F(Texts, OfTheMessageLineCanBeTranslated) {
  load("/nowhere/a.mov", retaggedMovie());
  EXPECT_THAT(sourceView().message().toStdString(), testing::StartsWith("⟦\"a.mov\" cannot be opened:\n⟦there is no"));
  choose("check");
  EXPECT_EQ(said().text, "⟦No frames were compared. ⟦There is no source.⟧⟧");
  expectAllTranslatable();
  load(plainMovie(), retaggedMovie());
  EXPECT_TRUE(said().text.startsWith(opening));
  EXPECT_EQ(interface().messageLine->accessibleName(), "⟦Information⟧: " + interface().messageLine->message().text);
  EXPECT_TRUE(interface().window().windowTitle().startsWith(opening));
  expectAllTranslatable();
}

TEST_F(Texts, OfAScanCanBeTranslated) {
  load(plainMovie(), darkerMovie());
  choose("scan");
  expectAllTranslatable();
  ASSERT_TRUE(waitUntil([this] { return !controller().scanRun()->isRunning(); }));
  EXPECT_TRUE(interface().scanStrip->view().headline.startsWith(opening));
  expectAllTranslatable();
}

TEST_F(Texts, OfAViewCanBeTranslated) {
  EXPECT_EQ(sourceView().message(), "⟦Drop the source movie here⟧");
  EXPECT_EQ(destView().message(), "⟦Drop the destination movie here⟧");
  load(soundMovie(), soundMovie());
  EXPECT_EQ(sourceView().message(), "⟦This movie has no pictures.⟧");
}

TEST_F(Texts, OfTheReportAreTheSameInEveryLanguage) {
  load(plainMovie(), retaggedMovie());
  choose("check");
  const QString report = interface().resultsView->toPlainText();
  EXPECT_TRUE(report.startsWith("Checking files...")) << report.toStdString();
  EXPECT_FALSE(report.contains(opening));
}

}  // namespace
