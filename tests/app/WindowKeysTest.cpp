#include <QAction>
#include <QCheckBox>
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSet>
#include <QSlider>
#include <QTest>

#include "app/widgets/ResultsView.h"
#include "app/widgets/TransportBar.h"
#include "tests/app/WindowFixture.h"

namespace {

class WindowKeys : public WindowFixture {
 protected:
  WindowKeys() {
    launch();
    load(plainMovie(), retaggedMovie());
  }
  QString timecode() { return interface().source.timecodeText->text(); }
  /// Whether the control takes the key before the window's shortcuts get it.
  bool keeps(QWidget& control, Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
    control.setFocus();
    QKeyEvent event(QEvent::ShortcutOverride, key, modifiers, QKeySequence(key).toString());
    return interface().window().performKeyEquivalent(event);
  }
};

TEST_F(WindowKeys, MoveTheMovie) {
  struct Row {
    Qt::Key key;
    Qt::KeyboardModifiers modifiers;
    const char* timecode;
  };
  const Row rows[] = {
      {Qt::Key_Right, Qt::NoModifier, "01:00:00:01"},    {Qt::Key_Period, Qt::NoModifier, "01:00:00:02"},
      {Qt::Key_Left, Qt::NoModifier, "01:00:00:01"},     {Qt::Key_Comma, Qt::NoModifier, "01:00:00:00"},
      {Qt::Key_Left, Qt::NoModifier, "01:00:00:00"},     {Qt::Key_Right, Qt::ShiftModifier, "01:00:01:00"},
      {Qt::Key_Right, Qt::ShiftModifier, "01:00:01:24"}, {Qt::Key_Left, Qt::ShiftModifier, "01:00:00:24"},
      {Qt::Key_End, Qt::NoModifier, "01:00:01:24"},      {Qt::Key_Home, Qt::NoModifier, "01:00:00:00"}};
  sourceView().setFocus();
  for (const Row& row : rows) {
    QTest::keyClick(&sourceView(), row.key, row.modifiers);
    EXPECT_EQ(timecode().toStdString(), row.timecode) << QKeySequence(row.key).toString().toStdString();
  }
}

TEST_F(WindowKeys, PlayAndStop) {
  sourceView().setFocus();
  const auto rate = [&] { return sourceView().movie()->rate(); };
  QTest::keyClick(&sourceView(), Qt::Key_Space);
  EXPECT_EQ(rate(), 1);
  QTest::keyClick(&sourceView(), Qt::Key_Space);
  EXPECT_EQ(rate(), 0);
  QTest::keyClick(&sourceView(), Qt::Key_L);
  EXPECT_EQ(rate(), 1);
  QTest::keyClick(&sourceView(), Qt::Key_L);
  EXPECT_EQ(rate(), 2);
  QTest::keyClick(&sourceView(), Qt::Key_K);
  EXPECT_EQ(rate(), 0);
  QTest::keyClick(&sourceView(), Qt::Key_End);
  QTest::keyClick(&sourceView(), Qt::Key_J);
  EXPECT_EQ(rate(), -1);
  QTest::keyClick(&sourceView(), Qt::Key_L);
  EXPECT_EQ(rate(), 1);
}

TEST_F(WindowKeys, ActOnTheSideThatHasTheFocus) {
  QTest::mouseClick(interface().linkBtn, Qt::LeftButton);
  destView().setFocus();
  QTest::keyClick(&destView(), Qt::Key_Right);
  EXPECT_EQ(timecode(), "01:00:00:00");
  EXPECT_EQ(interface().dest.timecodeText->text(), "01:00:00:01");
  interface().checkBtn->setFocus();
  QTest::keyClick(interface().checkBtn, Qt::Key_Right);
  EXPECT_EQ(interface().dest.timecodeText->text(), "01:00:00:02");
}

TEST_F(WindowKeys, ActOnTheSideOfWhicheverControlHasTheFocus) {
  for (const auto& [side, other] :
       {std::pair(&interface().source, &interface().dest), std::pair(&interface().dest, &interface().source)}) {
    const TransportBar& bar = *side->transport;
    for (QWidget* control : {static_cast<QWidget*>(side->movieView), static_cast<QWidget*>(side->filenameText),
                             static_cast<QWidget*>(side->browseBtn), static_cast<QWidget*>(side->timecodeText),
                             static_cast<QWidget*>(bar.playButton), static_cast<QWidget*>(bar.scrubber)}) {
      other->movieView->setFocus();
      control->setFocus();
      EXPECT_EQ(&interface().activeView(), side->movieView) << control->accessibleName().toStdString();
      interface().checkBtn->setFocus();
      EXPECT_EQ(&interface().activeView(), side->movieView) << control->accessibleName().toStdString();
    }
  }
}

TEST_F(WindowKeys, ActOnTheSideWhoseTransportWasClicked) {
  QTest::mouseClick(interface().linkBtn, Qt::LeftButton);
  const TransportBar& bar = *interface().dest.transport;
  for (QWidget* control : {static_cast<QWidget*>(bar.stepBackButton), static_cast<QWidget*>(bar.muteButton),
                           static_cast<QWidget*>(bar.volumeSlider), static_cast<QWidget*>(bar.scrubber)}) {
    sourceView().setFocus();
    QTest::mouseClick(control, Qt::LeftButton);
    EXPECT_EQ(&interface().activeView(), &destView()) << control->accessibleName().toStdString();
  }
  QTest::mouseClick(bar.playButton, Qt::LeftButton);
  QTest::keyClick(interface().window().focusWidget(), Qt::Key_Space);
  EXPECT_EQ(destView().movie()->rate(), 0);
  EXPECT_EQ(sourceView().movie()->rate(), 0);
}

TEST_F(WindowKeys, StayInATextThatIsEdited) {
  QLineEdit& field = *interface().source.filenameText;
  field.setText("abc");
  field.setFocus();
  field.setCursorPosition(1);
  QTest::keyClick(&field, Qt::Key_Right);
  EXPECT_EQ(field.cursorPosition(), 2);
  QTest::keyClick(&field, Qt::Key_Left);
  EXPECT_EQ(field.cursorPosition(), 1);
  QTest::keyClicks(&field, "jkl ,.");
  EXPECT_EQ(field.text(), "ajkl ,.bc");
  EXPECT_EQ(timecode(), "01:00:00:00");
  EXPECT_EQ(sourceView().movie()->rate(), 0);
}

TEST_F(WindowKeys, StayInTheResults) {
  controller().outputText("abc");
  ResultsView& results = *interface().resultsView;
  results.setFocus();
  results.moveCursor(QTextCursor::Start);
  QTest::keyClick(&results, Qt::Key_Right);
  EXPECT_EQ(results.textCursor().position(), 1);
  EXPECT_EQ(timecode(), "01:00:00:00");
}

TEST_F(WindowKeys, AreOfferedToTheControlInFocusFirst) {
  QLineEdit& field = *interface().source.filenameText;
  field.setText("abc");
  field.setCursorPosition(1);
  EXPECT_TRUE(keeps(field, Qt::Key_Right));
  EXPECT_EQ(field.cursorPosition(), 1) << "the press is still to come";
  EXPECT_TRUE(keeps(field, Qt::Key_A, Qt::ControlModifier));
  EXPECT_TRUE(keeps(field, Qt::Key_J));
  EXPECT_FALSE(keeps(field, Qt::Key_F11));
  EXPECT_TRUE(keeps(*interface().swapBtn, Qt::Key_Space));
  EXPECT_FALSE(keeps(*interface().swapBtn, Qt::Key_Right));
  EXPECT_TRUE(keeps(*interface().source.transport->volumeSlider, Qt::Key_Right));
  for (const Qt::Key key : {Qt::Key_Right, Qt::Key_Space, Qt::Key_J, Qt::Key_F7}) {
    EXPECT_FALSE(keeps(sourceView(), key)) << QKeySequence(key).toString().toStdString();
  }
  EXPECT_EQ(timecode(), "01:00:00:00");
  EXPECT_EQ(sourceView().movie()->rate(), 0);
}

TEST_F(WindowKeys, MoveTheCursorOnceForEachPress) {
  QLineEdit& field = *interface().source.filenameText;
  field.setText("abcdef");
  field.setFocus();
  field.setCursorPosition(0);
  for (int i = 1; i <= 3; ++i) {
    QTest::keyClick(&field, Qt::Key_Right);
    EXPECT_EQ(field.cursorPosition(), i);
  }
  QTest::keyClick(&field, Qt::Key_A, Qt::ControlModifier);
  EXPECT_EQ(field.selectedText(), "abcdef");
  QTest::keyClick(&field, Qt::Key_F11);
  EXPECT_TRUE(interface().window().isFullScreen());
}

TEST_F(WindowKeys, LeaveTheSpaceBarToButtonsAndArrowsToTheVolume) {
  QPushButton& swap = *interface().swapBtn;
  swap.setFocus();
  QTest::keyClick(&swap, Qt::Key_Space);
  EXPECT_EQ(sourcePath(), retaggedMovie());
  EXPECT_EQ(sourceView().movie()->rate(), 0);
  QSlider& volume = *interface().source.transport->volumeSlider;
  volume.setFocus();
  const double before = sourceView().volume();
  QTest::keyClick(&volume, Qt::Key_Left);
  EXPECT_LT(sourceView().volume(), before);
  EXPECT_EQ(timecode(), "01:00:00:00");
}

TEST_F(WindowKeys, StepFramesWhileTheScrubberHasTheFocus) {
  QSlider& scrubber = *interface().source.transport->scrubber;
  scrubber.setFocus();
  QTest::keyClick(&scrubber, Qt::Key_Right);
  EXPECT_EQ(timecode(), "01:00:00:01");
}

TEST_F(WindowKeys, AreListedUnderF1FromTheSameTable) {
  sourceView().setFocus();
  QTest::keyClick(&sourceView(), Qt::Key_F1);
  auto* const list = interface().window().findChild<QDialog*>("keys");
  ASSERT_NE(list, nullptr);
  QStringList texts;
  for (const QLabel* label : list->findChildren<QLabel*>()) texts << label->text();
  for (const QAction* action : interface().window().actions()) {
    const QString text = action->text().remove('&').remove(QStringLiteral("…"));
    EXPECT_TRUE(texts.contains(text)) << text.toStdString();
  }
  EXPECT_EQ(interface().window().actions().size(), controller().keys().rows().size());
}

TEST_F(WindowKeys, AreListedInBoldAndWhatTheyDoIsNot) {
  controller().keys().show(interface().window());
  QSet<QString> deeds;
  for (const KeyRow& row : controller().keys().rows()) deeds << row.what;
  const auto labels = interface().window().findChild<QDialog*>("keys")->findChildren<QLabel*>();
  EXPECT_EQ(labels.size(), 2 * controller().keys().rows().size());
  for (const QLabel* label : labels) {
    EXPECT_EQ(label->font().bold(), !deeds.contains(label->text())) << label->text().toStdString();
  }
}

TEST_F(WindowKeys, AreListedOnceHoweverOftenTheyAreAskedFor) {
  for (int i = 0; i < 3; ++i) controller().keys().show(interface().window());
  EXPECT_EQ(interface().window().findChildren<QDialog*>("keys").size(), 1);
}

TEST_F(WindowKeys, GoOnWhileHeldOnlyWhereTheyStep) {
  for (const QAction* action : interface().window().actions()) {
    const bool steps = action->text().startsWith("One ");
    EXPECT_EQ(action->autoRepeat(), steps) << action->text().toStdString();
  }
}

TEST_F(WindowKeys, EnterAndLeaveFullScreen) {
  sourceView().setFocus();
  QTest::keyClick(&sourceView(), Qt::Key_F11);
  EXPECT_TRUE(interface().window().isFullScreen());
  QTest::keyClick(&sourceView(), Qt::Key_Escape);
  EXPECT_FALSE(interface().window().isFullScreen());
}

TEST_F(WindowKeys, AreEachGivenOnce) {
  QSet<QKeySequence> seen;
  for (const KeyRow& row : controller().keys().rows()) {
    for (const QKeySequence& key : row.keys) {
      EXPECT_FALSE(seen.contains(key)) << key.toString().toStdString();
      seen << key;
    }
  }
}

TEST_F(WindowKeys, ReachEveryControlByTab) {
  QSet<QWidget*> reached;
  sourceView().setFocus();
  for (int i = 0; i < 60; ++i) {
    reached << interface().window().focusWidget();
    QTest::keyClick(interface().window().focusWidget(), Qt::Key_Tab);
  }
  const TransportBar& bar = *interface().dest.transport;
  const QWidget* const controls[] = {&sourceView(),
                                     &destView(),
                                     interface().source.filenameText,
                                     interface().dest.filenameText,
                                     interface().source.browseBtn,
                                     interface().dest.browseBtn,
                                     interface().linkBtn,
                                     interface().swapBtn,
                                     interface().checkBtn,
                                     interface().scanBtn,
                                     interface().resultsView,
                                     interface().source.timecodeText,
                                     bar.playButton,
                                     bar.stepBackButton,
                                     bar.stepForwardButton,
                                     bar.scrubber,
                                     bar.muteButton,
                                     bar.volumeSlider};
  for (const QWidget* control : controls) {
    EXPECT_TRUE(reached.contains(const_cast<QWidget*>(control))) << control->accessibleName().toStdString();
  }
  for (const QWidget* control : reached) {
    const auto* const button = qobject_cast<const QAbstractButton*>(control);
    EXPECT_FALSE(control->accessibleName().isEmpty() && (button == nullptr || button->text().isEmpty()))
        << control->metaObject()->className();
  }
}

}  // namespace
