#include <QHelpEvent>
#include <QTest>
#include <QToolTip>

#include <gtest/gtest.h>

#include "app/widgets/OneLineLabel.h"
#include "tests/SharedFiles/QtPrinters.h"

namespace {

class AOneLineLabel : public testing::Test {
 protected:
  AOneLineLabel() {
    label_.setText("A <b>text</b> of some length");
    label_.show();
  }
  QString tipAt(int width) {
    label_.resize(width, label_.sizeHint().height());
    QHelpEvent help(QEvent::ToolTip, QPoint(2, 2), label_.mapToGlobal(QPoint(2, 2)));
    QCoreApplication::sendEvent(&label_, &help);
    return QToolTip::text();
  }

  OneLineLabel label_;
};

TEST_F(AOneLineLabel, AsksForNoMoreThanALine) {
  EXPECT_EQ(label_.minimumSizeHint(), QSize(1, label_.fontMetrics().height()));
  EXPECT_EQ(label_.sizeHint(), label_.minimumSizeHint());
}

TEST_F(AOneLineLabel, TellsAllOfItselfWhereItHasNoRoom) {
  EXPECT_EQ(tipAt(600), "");
  EXPECT_TRUE(tipAt(60).contains("&lt;b&gt;")) << "as it is: " << tipAt(60).toStdString();
}

TEST_F(AOneLineLabel, ShowsADifferenceOnlyInWhatIsInTheRoom) {
  label_.resize(60, label_.sizeHint().height());
  const QImage before = label_.grab().toImage();
  label_.setText(label_.text() + " and some more");
  EXPECT_EQ(label_.grab().toImage(), before);
  label_.setText("B" + label_.text());
  EXPECT_NE(label_.grab().toImage(), before);
}

}  // namespace
