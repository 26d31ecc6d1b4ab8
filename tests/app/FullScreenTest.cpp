#include <QAction>
#include <QCheckBox>
#include <QLineEdit>
#include <QMenuBar>
#include <QPushButton>
#include <QTest>

#include <gtest/gtest.h>

#include "app/widgets/MessageLine.h"
#include "app/widgets/TransportBar.h"
#include "tests/SharedFiles/QtPrinters.h"
#include "tests/app/WindowFixture.h"

namespace {

class FullScreen : public WindowFixture {
 protected:
  FullScreen() {
    launch();
    load(plainMovie(), retaggedMovie());
  }
  void enter() {
    choose("fullScreen");
    ASSERT_TRUE(waitUntil([this] { return !interface().checkBtn->isVisible(); }));
    runFor(20);
  }
  void leave() {
    sourceView().setFocus();
    QTest::keyClick(&sourceView(), Qt::Key_Escape);
    ASSERT_TRUE(waitUntil([this] { return interface().checkBtn->isVisible(); }));
    runFor(20);
  }
  QList<QWidget*> besidePictures() {
    MainInterface& all = interface();
    return {all.source.filenameText,
            all.source.browseBtn,
            all.dest.filenameText,
            all.dest.browseBtn,
            all.linkBtn,
            all.swapBtn,
            all.checkBtn,
            all.saveBtn,
            all.resultsView};
  }
};

TEST_F(FullScreen, GivesTheRoomToThePictures) {
  const QSize before = sourceView().size(), window = interface().window().size();
  enter();
  for (const QWidget* each : besidePictures()) EXPECT_FALSE(each->isVisible());
  for (const QWidget* each :
       {static_cast<QWidget*>(interface().source.transport), static_cast<QWidget*>(interface().dest.timecodeText),
        static_cast<QWidget*>(interface().messageLine)}) {
    EXPECT_TRUE(each->isVisible());
  }
  const QSize now = interface().window().size();
  EXPECT_GT(sourceView().width() + destView().width(), now.width() * 95 / 100);
  EXPECT_GT(sourceView().height(), now.height() * 80 / 100);
  EXPECT_GT(sourceView().height() - before.height(), now.height() - window.height());
  leave();
  for (const QWidget* each : besidePictures()) EXPECT_TRUE(each->isVisible());
  EXPECT_TRUE(waitUntil([&] { return sourceView().size() == before; }))
      << sourceView().width() << " x " << sourceView().height();
}

TEST_F(FullScreen, SaysHowItIsLeft) {
  enter();
  EXPECT_EQ(said(), Message(MessageKind::Information, "Esc leaves full screen."));
  leave();
  EXPECT_EQ(said(), Message());
  enter();
  choose("check");
  const Message checked = said();
  leave();
  EXPECT_EQ(said(), checked) << "it is still to be read";
}

TEST_F(FullScreen, LeavesTheKeysToTheMovie) {
  destView().setFocus();
  interface().resultsView->setFocus();
  enter();
  EXPECT_EQ(interface().window().focusWidget(), &destView());
  QTest::keyClick(interface().window().focusWidget(), Qt::Key_Right);
  EXPECT_EQ(interface().dest.timecodeText->text(), "01:00:00:01");
  QTest::keyClick(interface().window().focusWidget(), Qt::Key_Return);
  EXPECT_TRUE(interface().resultsView->toPlainText().startsWith("Checking files..."));
}

}  // namespace
