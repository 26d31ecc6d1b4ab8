#include <QAction>
#include <QCheckBox>
#include <QFile>
#include <QFileDialog>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QRegularExpression>
#include <QSet>
#include <QTest>
#include <QTimer>

#include <gmock/gmock.h>

#include "app/widgets/ResultsView.h"
#include "tests/SharedFiles/QtPrinters.h"
#include "tests/SharedFiles/alerts/AlertFixture.h"
#include "tests/app/WindowFixture.h"

namespace {

using ::testing::ElementsAre;

class Menus : public WindowFixture {
 protected:
  Menus() {
    launch();
    source_ = copyOf(plainMovie(), "source.mov");
    dest_ = copyOf(retaggedMovie(), "dest.mov");
    load(source_, dest_);
    QObject::connect(&answers_, &QTimer::timeout, [this] {
      for (AlertPanel* panel : shownPanels()) {
        alerts_ << panel->accessibleName();
        panel->defaultButton()->click();
      }
    });
    answers_.start(10);
  }
  /// Of which nothing that a test saves reaches the others' movie.
  QString copyOf(const QString& movie, const char* name) {
    const QString copy = home_.filePath(QLatin1String(name));
    EXPECT_TRUE(QFile::copy(movie, copy));
    EXPECT_TRUE(QFile::setPermissions(copy, QFile::ReadOwner | QFile::WriteOwner));
    return copy;
  }
  QList<QMenu*> menus() { return interface().window().menuBar()->findChildren<QMenu*>(QRegularExpression("Menu$")); }
  /// The title of the file panel that is up, which is then dismissed.
  QString panelTitle() {
    for (auto* const panel : interface().window().findChildren<QFileDialog*>()) {
      if (!panel->isVisible()) continue;
      static_cast<QDialog*>(panel)->done(QDialog::Rejected);
      return panel->windowTitle();
    }
    return {};
  }
  static QString mnemonicOf(const QString& text) {
    static const QRegularExpression mnemonic("&([^&])");
    return mnemonic.match(text).captured(1).toLower();
  }

  QString source_, dest_;
  QStringList alerts_;
  QTimer answers_;
};

TEST_F(Menus, OpenTheSamePanelsAsTheButtons) {
  struct Row {
    const char* action;
    QPushButton* button;
  };
  const Row rows[] = {{"openSource", interface().source.browseBtn},
                      {"openDest", interface().dest.browseBtn},
                      {"saveAs", interface().saveAsBtn}};
  QSet<QString> titles;
  for (const Row& row : rows) {
    QTest::mouseClick(row.button, Qt::LeftButton);
    const QString title = panelTitle();
    choose(row.action);
    EXPECT_EQ(panelTitle(), title) << row.action;
    EXPECT_FALSE(title.isEmpty());
    titles << title;
  }
  EXPECT_EQ(titles.size(), 3);
}

TEST_F(Menus, SwapTheMovies) {
  choose("swap");
  EXPECT_EQ(sourcePath(), dest_);
  EXPECT_EQ(destPath(), source_);
}

TEST_F(Menus, CheckTheMovies) {
  choose("check");
  EXPECT_TRUE(interface().resultsView->toPlainText().startsWith("Checking files..."));
}

TEST_F(Menus, SyncTheMetadata) {
  choose("sync");
  EXPECT_THAT(alerts_, ElementsAre("Metadata sync complete"));
}

TEST_F(Menus, SaveTheDestination) {
  choose("sync");
  choose("save");
  load(source_, dest_);
  choose("check");
  EXPECT_TRUE(interface().resultsView->toPlainText().contains("Destination gamma metadata: 2.20"))
      << interface().resultsView->toPlainText().toStdString();
}

TEST_F(Menus, AskForANameWhereThereIsNoDestination) {
  controller().loadQTMovieWithPath("/nowhere", "dest");
  EXPECT_TRUE(menuAction("save").isEnabled());
  choose("save");
  EXPECT_FALSE(panelTitle().isEmpty());
}

TEST_F(Menus, LinkAndUnlinkAsTheSwitchDoes) {
  QCheckBox& linkBtn = *interface().linkBtn;
  for (const bool on : {false, true}) {
    choose("link");
    EXPECT_EQ(linkBtn.isChecked(), on);
    EXPECT_EQ(menuAction("link").isChecked(), on);
  }
  linkBtn.click();
  EXPECT_FALSE(menuAction("link").isChecked());
  load(plainMovie(), longMovie());
  EXPECT_FALSE(menuAction("link").isEnabled());
  choose("link");
  QTest::keyClick(&sourceView(), Qt::Key_L, Qt::ControlModifier);
  EXPECT_FALSE(linkBtn.isChecked());
  EXPECT_FALSE(menuAction("link").isChecked());
  load(plainMovie(), retaggedMovie());
  EXPECT_TRUE(menuAction("link").isEnabled());
  EXPECT_TRUE(menuAction("link").isChecked());
}

TEST_F(Menus, EnterAndLeaveFullScreen) {
  choose("fullScreen");
  EXPECT_TRUE(interface().window().isFullScreen());
  sourceView().setFocus();
  QTest::keyClick(&sourceView(), Qt::Key_F11);
  EXPECT_FALSE(interface().window().isFullScreen());
}

TEST_F(Menus, BringTheWindowBackFromFullScreenAsItWas) {
  QWidget& window = interface().window();
  for (const Qt::WindowState before : {Qt::WindowNoState, Qt::WindowMaximized}) {
    window.setWindowState(before);
    if (before == Qt::WindowNoState) window.setGeometry(40, 50, 1000, 700);
    runFor(50);
    const QRect place = window.geometry();
    for (const Qt::Key key : {Qt::Key_F11, Qt::Key_Escape}) {
      choose("fullScreen");
      EXPECT_TRUE(window.isFullScreen());
      runFor(50);
      QTest::keyClick(&sourceView(), key);
      EXPECT_EQ(window.windowState() & ~Qt::WindowActive, before);
      EXPECT_TRUE(waitUntil([&] { return window.geometry() == place; })) << before;
    }
  }
  sourceView().setFocus();
  QTest::keyClick(&sourceView(), Qt::Key_Escape);
  EXPECT_TRUE(window.isMaximized()) << "there is no full screen to leave";
}

TEST_F(Menus, ListTheKeys) {
  choose("keys");
  auto* const list = interface().window().findChild<QDialog*>("keys");
  ASSERT_NE(list, nullptr);
  EXPECT_TRUE(list->isVisible());
}

TEST_F(Menus, CloseTheWindow) {
  choose("quit");
  EXPECT_FALSE(interface().window().isVisible());
}

TEST_F(Menus, AnswerToTheirShortcuts) {
  sourceView().setFocus();
  const QList<QPair<const char*, QKeySequence>> rows{{"swap", QKeySequence("Ctrl+Shift+X")},
                                                     {"check", QKeySequence("Ctrl+Return")},
                                                     {"sync", QKeySequence("Ctrl+M")},
                                                     {"openSource", QKeySequence("Ctrl+O")},
                                                     {"openDest", QKeySequence("Ctrl+Shift+O")},
                                                     {"saveAs", QKeySequence("Ctrl+Shift+S")},
                                                     {"save", QKeySequence("Ctrl+S")},
                                                     {"link", QKeySequence("Ctrl+L")},
                                                     {"quit", QKeySequence("Ctrl+Q")}};
  for (const auto& [name, key] : rows) {
    int times = 0;
    const auto counted = QObject::connect(&menuAction(name), &QAction::triggered, [&] { ++times; });
    activate();
    QTest::keyClick(&sourceView(), Qt::Key(key[0].key()), key[0].keyboardModifiers());
    EXPECT_EQ(times, 1) << name;
    QObject::disconnect(counted);
    panelTitle();
  }
}

TEST_F(Menus, ShowThePreferencesByKey) {
  sourceView().setFocus();
  QTest::keyClick(&sourceView(), Qt::Key_Comma, Qt::ControlModifier);
  EXPECT_TRUE(interface().window().findChild<QDialog*>("preferences")->isVisible());
}

TEST_F(Menus, GiveEveryActionANameAndAKey) {
  QSet<QString> names;
  QSet<QKeySequence> shortcuts;
  for (const QMenu* menu : menus()) {
    QSet<QString> mnemonics;
    for (const QAction* action : menu->actions()) {
      if (action->isSeparator()) continue;
      const std::string text = action->text().toStdString();
      EXPECT_FALSE(action->objectName().isEmpty()) << text;
      EXPECT_FALSE(names.contains(action->objectName())) << text;
      names << action->objectName();
      const QString mnemonic = mnemonicOf(action->text());
      EXPECT_FALSE(mnemonic.isEmpty()) << text;
      EXPECT_FALSE(mnemonics.contains(mnemonic)) << text;
      mnemonics << mnemonic;
      for (const QKeySequence& key : action->shortcuts()) {
        EXPECT_FALSE(shortcuts.contains(key)) << text;
        shortcuts << key;
        EXPECT_TRUE(interface().window().actions().contains(action)) << text;
      }
    }
  }
  EXPECT_GE(names.size(), 29);
}

TEST_F(Menus, HaveTitlesWithKeysOfTheirOwn) {
  QSet<QString> mnemonics;
  for (const QMenu* menu : menus()) mnemonics << mnemonicOf(menu->title());
  EXPECT_EQ(mnemonics.size(), menus().size());
  EXPECT_FALSE(mnemonics.contains(QString()));
}

TEST_F(Menus, LeaveTheKeysOfATextAlone) {
  QLineEdit& field = *interface().source.filenameText;
  field.setFocus();
  field.selectAll();
  QTest::keyClicks(&field, "jkl, .");
  EXPECT_EQ(field.text(), "jkl, .");
}

TEST_F(Menus, LeaveRoomForTheMovies) {
  QWidget& window = interface().window();
  window.resize(960, 640);
  runFor(20);
  EXPECT_EQ(window.size(), QSize(960, 640));
  EXPECT_LE(window.minimumSizeHint().height(), 640);
  for (QWidget* control : {static_cast<QWidget*>(interface().saveAsBtn), static_cast<QWidget*>(interface().resultsView),
                           static_cast<QWidget*>(&destView())}) {
    const QRect place(control->mapTo(&window, QPoint()), control->size());
    EXPECT_TRUE(window.rect().contains(place));
    EXPECT_FALSE(place.intersects(interface().window().menuBar()->geometry()));
  }
}

}  // namespace
