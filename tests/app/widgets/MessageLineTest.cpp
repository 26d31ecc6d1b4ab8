#include <QAccessible>
#include <QClipboard>
#include <QImage>
#include <QLineEdit>
#include <QTest>

#include <gmock/gmock.h>

#include "app/widgets/MessageLine.h"
#include "app/widgets/MessageSign.h"
#include "tests/SharedFiles/QtPrinters.h"
#include "tests/app/WindowFixture.h"

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::Not;

const Message shortOne(MessageKind::Success, "Saved \"b.mov\".");
const Message longOne(MessageKind::Failure, QString("It is a long story. ").repeated(40) + "The <end>.");

/// Notes what screen readers would be told.
class HeardLine : public MessageLine {
 public:
  QStringList alerts;

 protected:
  void announce(QAccessibleEvent& event) override {
    if (event.type() != QAccessible::Alert) return;
    const QAccessibleInterface* const object = event.accessibleInterface();
    EXPECT_EQ(object->role(), QAccessible::AlertMessage);
    alerts << object->text(QAccessible::Name);
  }
};

class TheMessageLine : public WindowFixture {
 protected:
  TheMessageLine() { launch(); }
  MessageLine& line() { return *interface().messageLine; }
  QLineEdit& words() { return line().words(); }
  QImage pictureOf(QWidget& widget) {
    runFor(1);
    return widget.grab().toImage();
  }
};

TEST_F(TheMessageLine, IsEmptyAtFirst) {
  EXPECT_EQ(words().text(), "");
  EXPECT_EQ(words().focusPolicy(), Qt::NoFocus);
  EXPECT_TRUE(line().isVisible());
}

TEST_F(TheMessageLine, StaysUntilTheNextMessage) {
  line().tell(shortOne);
  EXPECT_EQ(words().text(), shortOne.text);
  EXPECT_EQ(line().message(), shortOne);
  sourceView().setFocus();
  QTest::keyClick(&sourceView(), Qt::Key_Right);
  EXPECT_EQ(words().text(), shortOne.text);
  line().tell({});
  EXPECT_EQ(words().text(), "");
  EXPECT_EQ(line().toolTip(), "");
  EXPECT_EQ(line().accessibleName(), "");
}

TEST_F(TheMessageLine, TakesNoRoomFromTheRestWhateverItSays) {
  const int height = line().height(), width = interface().window().width();
  line().tell(longOne);
  runFor(20);
  EXPECT_EQ(line().height(), height);
  EXPECT_EQ(interface().window().width(), width);
}

TEST_F(TheMessageLine, IsReadAtOnceByScreenReaders) {
  HeardLine heard;
  heard.tell(shortOne);
  heard.tell({});
  heard.tell(shortOne);  // said again, although it is the same
  EXPECT_THAT(heard.alerts, ElementsAre("Done: Saved \"b.mov\".", "Done: Saved \"b.mov\"."));
  line().tell(shortOne);
  EXPECT_EQ(words().accessibleName(), "Message");
  EXPECT_EQ(words().accessibleDescription(), "Done");
}

TEST_F(TheMessageLine, ShowsTheEndOfALongMessageInTheToolTipAndWhileItHasTheFocus) {
  line().tell(longOne);
  EXPECT_TRUE(line().toolTip().endsWith("The &lt;end&gt;.</qt>")) << line().toolTip().toStdString();
  const QImage cut = pictureOf(words());
  Message other = longOne;
  other.text.replace("The <end>", "Another end");
  line().tell(other);
  EXPECT_EQ(pictureOf(words()), cut) << "the ends are out of sight";
  words().setFocus();
  words().end(false);
  runFor(1);
  const QImage atEnd = pictureOf(words());
  EXPECT_NE(atEnd, cut);
  sourceView().setFocus();
  EXPECT_EQ(pictureOf(words()), cut);
}

TEST_F(TheMessageLine, IsReachedByKeyAndCopied) {
  line().tell(longOne);
  interface().resultsView->setFocus();
  QTest::keyClick(interface().resultsView, Qt::Key_Tab);
  ASSERT_EQ(interface().window().focusWidget(), &words());
  choose("selectAll");
  choose("copy");
  EXPECT_EQ(QApplication::clipboard()->text(), longOne.text);
  QTest::keyClicks(&words(), "x");
  EXPECT_EQ(words().text(), longOne.text);
}

TEST_F(TheMessageLine, TellsTheKindsApartWithoutTheirColours) {
  MessageSign sign;
  sign.setAttribute(Qt::WA_DontShowOnScreen);
  sign.resize(64, 64);
  QList<QImage> shapes{pictureOf(sign).convertToFormat(QImage::Format_Grayscale8)};
  for (const MessageKind kind :
       {MessageKind::Information, MessageKind::Success, MessageKind::Warning, MessageKind::Failure}) {
    sign.setKind(kind);
    QImage shape = pictureOf(sign).convertToFormat(QImage::Format_Grayscale8);
    const uchar ground = shape.constScanLine(0)[0];
    for (int y = 0; y < shape.height(); ++y) {  // ground or not, and no more of it
      for (int x = 0; x < shape.width(); ++x) shape.scanLine(y)[x] = shape.scanLine(y)[x] == ground ? 0 : 1;
    }
    EXPECT_THAT(shapes, Not(Contains(shape)));
    shapes << shape;
  }
}

}  // namespace
