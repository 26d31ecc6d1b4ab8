#include <QCheckBox>
#include <QLabel>
#include <QTextDocument>
#include <optional>

#include <QtTest/qtestspontaneevent.h>

#include "tests/SharedFiles/QtPrinters.h"
#include "tests/SharedFiles/alerts/AlertFixture.h"

namespace {

/// A panel on the screen and what it answered.
class Panels : public Alerts {
 protected:
  AlertPanel& show(const QString& standard, const QString& alternate = {}, const QString& other = {},
                   const QString& informative = "Details") {
    panel_.reset();
    answers.clear();
    panel_ = std::make_unique<AlertPanel>(AlertPanel::Texts{"Message", informative, standard, alternate, other},
                                          window_.get());
    panel_->setAnswered([this](int code) { answers.push_back(code); });
    panel_->showSuppressionButton(false, [](bool) {});
    panel_->begin();
    EXPECT_TRUE(QTest::qWaitForWindowActive(panel_.get()));
    return *panel_;
  }
  std::vector<int> answers;
  std::unique_ptr<AlertPanel> panel_;
};

void closeFromOutside(AlertPanel& panel) {
  QCloseEvent event;
  QSpontaneKeyEvent::setSpontaneous(&event);
  qApp->notify(&panel, &event);  // sendEvent would take the mark off
}

constexpr int none = 99;

struct Keys {
  const char* standard;
  const char* alternate;
  const char* other;
  int escape;  ///< what it answers
  int closed;  ///< by the window manager
};
const Keys keys[] = {
    {"", "", "", 1, 1},
    {"Save", "Don't Save", "", 0, 0},
    {"Save", "", "Later", -1, -1},
    {"Save", "Don't Save", "Cancel", -1, -1},
    {"Save", "Cancel", "Don't Save", 0, 0},
    {"Cancel", "Go on", "", 1, 1},
    {"Allow", "Don't Allow", "More Info", none, 0},
};

TEST_F(Panels, EscapeAndClosingAnswerAsAWellMadeSheetDoes) {
  for (const Keys& row : keys) {
    SCOPED_TRACE(std::string(row.standard) + "/" + row.alternate + "/" + row.other);
    QTest::keyClick(&show(row.standard, row.alternate, row.other), Qt::Key_Escape);
    EXPECT_EQ(answers, row.escape == none ? std::vector<int>() : std::vector<int>{row.escape});
    EXPECT_EQ(panel_->isVisible(), row.escape == none);
    closeFromOutside(show(row.standard, row.alternate, row.other));
    EXPECT_EQ(answers, std::vector<int>{row.closed});
    EXPECT_FALSE(panel_->isVisible());
  }
}

TEST_F(Panels, ReturnPressesTheDefaultButton) {
  for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter}) {
    QTest::keyClick(&show("Save", "Cancel", "Don't Save"), key);
    EXPECT_EQ(answers, std::vector<int>{1});
  }
  // Also out of the text.
  AlertPanel& panel = show("Save", "Cancel");
  auto* const text = panel.findChild<QTextEdit*>("informativeText");
  text->setFocus();
  QTest::keyClick(text, Qt::Key_Return);
  EXPECT_EQ(answers, std::vector<int>{1});
}

TEST_F(Panels, TabVisitsEveryControlAndSpacePressesIt) {
  AlertPanel& panel = show("Save", "Cancel", "Don't Save");
  const std::vector<QWidget*> order = {panel.defaultButton(), panel.alternateButton(), panel.otherButton(),
                                       panel.suppressionButton(), panel.defaultButton()};
  for (QWidget* const control : order) {
    EXPECT_EQ(QApplication::focusWidget(), control) << control->objectName().toStdString();
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
  }
  QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
  QTest::keyClick(QApplication::focusWidget(), Qt::Key_Space);
  EXPECT_EQ(answers, std::vector<int>{-1});
}

TEST_F(Panels, ReturnPressesTheButtonInFocus) {
  AlertPanel& panel = show("Save", "Cancel");
  panel.alternateButton()->setFocus();
  QTest::keyClick(&panel, Qt::Key_Return);
  EXPECT_EQ(answers, std::vector<int>{0});
}

TEST_F(Panels, TakenAwayByTheProgramTheyAnswerOther) {
  show("Save", "Cancel").close();
  EXPECT_EQ(answers, std::vector<int>{-1});
  show("Save", "Cancel").hide();
  EXPECT_EQ(answers, std::vector<int>{-1});
  show("Save", "Cancel");
  panel_.reset();
  EXPECT_EQ(answers, std::vector<int>{-1});
  show("Save", "Cancel").orderOut();
  panel_.reset();
  EXPECT_TRUE(answers.empty());
}

TEST_F(Panels, AnswerOnce) {
  AlertPanel& panel = show("Save", "Cancel");
  panel.defaultButton()->click();
  panel.alternateButton()->click();
  panel.close();
  panel_.reset();
  EXPECT_EQ(answers, std::vector<int>{1});
}

TEST_F(Panels, PutTheDefaultButtonRightTheAlternateBesideItAndTheOtherLeft) {
  AlertPanel& panel = show("Save", "Cancel", "Don't Save");
  EXPECT_LT(panel.otherButton()->x(), panel.alternateButton()->x());
  EXPECT_LT(panel.alternateButton()->geometry().right(), panel.defaultButton()->x());
  EXPECT_LT(panel.otherButton()->x(), panel.width() / 4);
  EXPECT_GT(panel.defaultButton()->geometry().right(), panel.width() * 3 / 4);
  EXPECT_TRUE(panel.defaultButton()->isDefault());
  EXPECT_EQ(panel.findChild<QTextEdit*>("messageText")->font().weight(), QFont::Bold);
  EXPECT_FALSE(panel.findChild<QLabel*>("icon")->pixmap().isNull());
}

TEST_F(Panels, NameEveryControl) {
  AlertPanel& panel = show("R&D", "Cancel", "Later");
  EXPECT_EQ(panel.accessibleName(), "Message");
  EXPECT_EQ(panel.accessibleDescription(), "Details");
  EXPECT_EQ(panel.defaultButton()->accessibleName(), "R&D");
  EXPECT_EQ(panel.defaultButton()->text(), "R&&D");
  EXPECT_EQ(panel.suppressionButton()->text(), "Do not show this message again");
  for (const QWidget* widget : panel.findChildren<QWidget*>()) {
    if (widget->focusPolicy() == Qt::NoFocus || !widget->isVisible() || widget->objectName().startsWith("qt_"))
      continue;
    EXPECT_FALSE(widget->accessibleName().isEmpty()) << widget->objectName().toStdString();
  }
}

TEST_F(Panels, LetTheTextBeSelectedAndWrapIt) {
  const QString path = "/Volumes/" + QString("x").repeated(300) + " and more words";
  AlertPanel& panel = show("", {}, {}, path);
  auto* const text = panel.findChild<QTextEdit*>("informativeText");
  text->selectAll();
  EXPECT_EQ(text->textCursor().selectedText(), path);
  EXPECT_TRUE(text->isReadOnly());
  EXPECT_LE(text->document()->idealWidth(), text->width());
  EXPECT_GE(text->height(), text->document()->size().height());
}

TEST_F(Panels, StayOnTheScreenWithAVeryLongText) {
  AlertPanel& panel = show("", {}, {}, QString("A line of the report.\n").repeated(2000));
  EXPECT_LT(panel.height(), panel.screen()->availableGeometry().height());
  EXPECT_NE(panel.findChild<QTextEdit*>("informativeText")->focusPolicy() & Qt::TabFocus, 0);
}

TEST_F(Panels, ComeUpUnderTheParentOrAlone) {
  EXPECT_EQ(show("").windowModality(), Qt::WindowModal);
  AlertPanel alone(AlertPanel::Texts{}, nullptr);
  alone.begin();
  EXPECT_EQ(alone.windowModality(), Qt::ApplicationModal);
  EXPECT_TRUE(alone.isVisible());
  alone.orderOut();
  panel_.reset();
}

}  // namespace
