// Where the window's controls stand: how far from its edges, and from each other.

#include <QCheckBox>
#include <QFontMetrics>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <set>

#include "app/widgets/PathField.h"
#include "app/widgets/ResultsView.h"
#include "app/widgets/TransportBar.h"
#include "tests/app/WindowFixture.h"

namespace {

class WindowLayout : public WindowFixture {
 protected:
  WindowLayout() { launch(); }

  QRect placeOf(const QWidget* control) {
    return {control->mapTo(&interface().window(), QPoint(0, 0)), control->size()};
  }
  int across(const QWidget* left, const QWidget* right) { return placeOf(right).left() - placeOf(left).right() - 1; }
  int down(const QWidget* upper, const QWidget* lower) { return placeOf(lower).top() - placeOf(upper).bottom() - 1; }
  const QLabel* nameOf(const SideInterface& side) {
    for (const QLabel* label : interface().window().findChildren<QLabel*>()) {
      if (label->buddy() == side.filenameText) return label;
    }
    return nullptr;
  }
};

TEST_F(WindowLayout, KeepsOneSpaceBetweenNeighbours) {
  std::set<int> spaces{
      across(interface().checkBtn, interface().scanBtn), across(interface().scanBtn, interface().syncBtn),
      across(interface().saveBtn, interface().saveAsBtn), down(interface().linkLabel, interface().linkBtn)};
  for (const SideInterface* side : {&interface().source, &interface().dest}) {
    ASSERT_NE(nameOf(*side), nullptr);
    spaces.insert({across(nameOf(*side), side->filenameText), across(side->filenameText, side->browseBtn),
                   down(side->filenameText, side->movieView), down(side->movieView, side->transport)});
  }
  EXPECT_EQ(spaces, std::set<int>{8});
}

TEST_F(WindowLayout, KeepsOneMarginAroundTheWindowAndBetweenItsParts) {
  const QWidget *const source = sourceView().parentWidget(), *const dest = destView().parentWidget();
  const QWidget *const link = interface().linkBtn->parentWidget(), *const bottom = interface().checkBtn->parentWidget();
  const QRect window = interface().window().rect();
  const std::set<int> margins{placeOf(source).left(),
                              placeOf(bottom).left(),
                              window.right() - placeOf(dest).right(),
                              window.right() - placeOf(bottom).right(),
                              across(source, link),
                              across(link, dest),
                              down(source, bottom),
                              down(dest, bottom)};
  EXPECT_EQ(margins, std::set<int>{12});
}

TEST_F(WindowLayout, GivesBothPathsTheSameRoomHoweverLongTheWordsBeforeThem) {
  EXPECT_EQ(interface().source.filenameText->width(), interface().dest.filenameText->width());
  const auto wordOf = [this](const SideInterface& side) {
    return nameOf(side)->fontMetrics().horizontalAdvance(nameOf(side)->text());
  };
  EXPECT_NE(wordOf(interface().source), wordOf(interface().dest));
}

TEST_F(WindowLayout, SetsTheSwapButtonApartFromTheLink) {
  EXPECT_GT(down(interface().linkBtn, interface().swapBtn), down(interface().linkLabel, interface().linkBtn));
}

}  // namespace
