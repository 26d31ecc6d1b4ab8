#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QTest>

#include "app/widgets/ResultsView.h"
#include "tests/app/WindowFixture.h"

namespace {

class EditMenu : public WindowFixture {
 protected:
  EditMenu() {
    launch();
    QApplication::clipboard()->setText("clip");
  }
  QLineEdit& field() { return *interface().source.filenameText; }
  void write(const char* text) {
    field().setFocus();
    field().selectAll();
    QTest::keyClicks(&field(), text);
  }
  /// What the menu offers once it is open.
  QStringList offered() {
    QStringList names;
    auto* const menu = interface().window().menuBar()->findChild<QMenu*>("editMenu");
    menu->popup(QPoint(0, 0));
    for (const char* name : {"undo", "redo", "cut", "copy", "paste", "selectAll"}) {
      if (menuAction(name).isEnabled()) names << name;
    }
    menu->hide();
    return names;
  }
};

TEST_F(EditMenu, EditsTheFieldInFocus) {
  write("abc");
  choose("selectAll");
  EXPECT_EQ(field().selectedText(), "abc");
  choose("copy");
  EXPECT_EQ(QApplication::clipboard()->text(), "abc");
  choose("cut");
  EXPECT_EQ(field().text(), "");
  choose("paste");
  choose("paste");
  EXPECT_EQ(field().text(), "abcabc");
  choose("undo");
  EXPECT_EQ(field().text(), "abc");
  choose("redo");
  EXPECT_EQ(field().text(), "abcabc");
}

TEST_F(EditMenu, OffersWhatIsPossible) {
  sourceView().setFocus();
  EXPECT_EQ(offered(), QStringList());
  field().setFocus();
  EXPECT_EQ(offered(), QStringList{"paste"});
  write("abc");
  EXPECT_EQ(offered(), (QStringList{"undo", "paste", "selectAll"}));
  field().selectAll();
  EXPECT_EQ(offered(), (QStringList{"undo", "cut", "copy", "paste", "selectAll"}));
  QApplication::clipboard()->clear();
  field().undo();
  field().deselect();
  EXPECT_EQ(offered(), QStringList{"redo"});
}

TEST_F(EditMenu, ReadsTheResultsAndChangesNothing) {
  controller().outputText("abc");
  interface().resultsView->setFocus();
  EXPECT_EQ(offered(), QStringList{"selectAll"});
  choose("selectAll");
  EXPECT_EQ(offered(), (QStringList{"copy", "selectAll"}));
  for (const char* name : {"undo", "redo", "cut", "paste"}) {
    menuAction(name).setEnabled(true);
    menuAction(name).trigger();
    EXPECT_EQ(interface().resultsView->toPlainText(), "abc") << name;
  }
  choose("copy");
  EXPECT_EQ(QApplication::clipboard()->text(), "abc");
}

TEST_F(EditMenu, KnowsTheTextWhenTheMenusHaveTheFocus) {
  write("abc");
  interface().window().menuBar()->setFocus(Qt::MenuBarFocusReason);
  ASSERT_EQ(interface().window().focusWidget(), interface().window().menuBar());
  menuAction("selectAll").trigger();
  EXPECT_EQ(field().selectedText(), "abc");
}

TEST_F(EditMenu, LeavesItsKeysToTheText) {
  write("abc");
  QTest::keyClick(&field(), Qt::Key_A, Qt::ControlModifier);
  EXPECT_EQ(field().selectedText(), "abc");
  QTest::keyClick(&field(), Qt::Key_X, Qt::ControlModifier);
  EXPECT_EQ(field().text(), "");
  QTest::keyClick(&field(), Qt::Key_V, Qt::ControlModifier);
  EXPECT_EQ(field().text(), "abc");
  QTest::keyClick(&field(), Qt::Key_Z, Qt::ControlModifier);
  EXPECT_EQ(field().text(), "");
}

}  // namespace
