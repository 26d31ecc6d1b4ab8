#include <gmock/gmock.h>

#include "tools/manual/Pagination.h"

namespace manual {
namespace {

using ::testing::ElementsAre;

Box text(double height) {
  Box box;
  box.height = height;
  box.spaceBefore = 10;
  return box;
}

Box heading(const QString& anchor, int level = 2) {
  Box box = text(20);
  box.keepWithNext = true;
  box.headingLevel = level;
  box.anchor = anchor;
  return box;
}

/// How many boxes each page holds.
std::vector<std::size_t> sizes(const Flow& flow, double height = 100) {
  std::vector<std::size_t> counts;
  for (const Page& page : paginate(flow, height).pages) counts.push_back(page.size());
  return counts;
}

TEST(Pagination, FillsAPageToItsHeightAndNoFurther) {
  EXPECT_THAT(sizes({text(40), text(50)}), ElementsAre(2));
  EXPECT_THAT(sizes({text(40), text(51)}), ElementsAre(1, 1));
}

TEST(Pagination, LeavesNoSpaceOnTopOfAPage) {
  const Flow flow{text(60), text(60)};
  const Pagination made = paginate(flow, 100);
  EXPECT_EQ(made.pages[0][0].top, 0);
  EXPECT_EQ(made.pages[1][0].top, 0);
}

TEST(Pagination, LeavesNoHeadingAtTheFoot) {
  EXPECT_THAT(sizes({text(40), heading("a"), text(40)}), ElementsAre(1, 2));
  EXPECT_THAT(sizes({text(10), heading("a"), heading("b"), text(40)}), ElementsAre(1, 3));
  EXPECT_THAT(sizes({text(10), heading("a"), text(40)}), ElementsAre(3));
}

TEST(Pagination, BreaksWhatIsKeptTogetherOnlyWhenItIsMoreThanAPage) {
  Flow flow;
  for (int i = 0; i < 5; ++i) flow.push_back(heading("a"));
  flow.push_back(text(10));
  const Pagination made = paginate(flow, 100);
  for (const Page& page : made.pages) EXPECT_LE(page.back().top + page.back().box->height, 100);
}

TEST(Pagination, StartsAPageWhereItIsToldTo) {
  Flow flow{text(10), text(10)};
  flow[1].startsPage = true;
  EXPECT_THAT(sizes(flow), ElementsAre(1, 1));
}

TEST(Pagination, RepeatsTheTitlesOfATableThatGoesOn) {
  const auto titles = std::make_shared<Box>(text(20));
  titles->keepWithNext = true;
  Flow flow{*titles};
  for (int i = 0; i < 3; ++i) {
    flow.push_back(text(30));
    flow.back().header = titles;
    flow.back().spaceBefore = 0;
  }
  const Pagination made = paginate(flow, 90);
  ASSERT_EQ(made.pages.size(), 2U);
  EXPECT_EQ(made.pages[1][0].box, titles.get());
  EXPECT_EQ(made.pages[1][1].box, &flow[3]);
  EXPECT_EQ(made.pages[1][1].top, 20);
}

TEST(Pagination, KnowsWhereHeadingsStandAndTheFirstByTheNameOfItsFile) {
  const Flow flow{heading("one.md#first", 1), text(60), heading("one.md#second"), text(40)};
  const Pagination made = paginate(flow, 100);
  const auto anchors = anchorsOf(made);
  EXPECT_EQ(anchors.at("one.md").box, &flow[0]);
  EXPECT_EQ(anchors.at("one.md#first").page, 0);
  EXPECT_EQ(anchors.at("one.md#second").page, 1);
  EXPECT_EQ(anchors.count("one.md#third"), 0U);
}

}  // namespace
}  // namespace manual
