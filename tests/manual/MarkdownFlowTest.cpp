#include <QBuffer>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QPdfWriter>
#include <QTemporaryDir>

#include <gmock/gmock.h>

#include "tools/manual/MarkdownFlow.h"
#include "tools/manual/Typography.h"

namespace manual {
namespace {

using ::testing::ElementsAre;

class ManualMarkdown : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    static int argc = 1;
    static char name[] = "test_manual_pages";
    static char* argv[] = {name, nullptr};
    application_ = std::make_unique<QGuiApplication>(argc, argv);
  }
  static void TearDownTestSuite() { application_.reset(); }

  void SetUp() override {
    bytes_.open(QIODevice::WriteOnly);
    setUpPage(writer_);
  }

  Flow boxesOf(const QString& markdown) {
    MarkdownFlow flow(writer_, QDir(pictures_.path()));
    flow.append(QStringLiteral("file.md"), markdown);
    problems_ = flow.problems();
    return flow.boxes();
  }

  void drawAll(const Flow& flow) {
    QPainter painter(&writer_);
    for (const Box& box : flow) box.draw(painter);
  }

  static std::unique_ptr<QGuiApplication> application_;
  QTemporaryDir pictures_;
  QBuffer bytes_;
  QPdfWriter writer_{&bytes_};
  QStringList problems_;
};

std::unique_ptr<QGuiApplication> ManualMarkdown::application_;

TEST_F(ManualMarkdown, NamesHeadingsByTheirFileAndWords) {
  const Flow flow = boxesOf("# What it is\n\nText.\n\n## BT.601 and \"more\"\n\nText.\n");
  ASSERT_EQ(flow.size(), 4U);
  EXPECT_EQ(flow[0].anchor, "file.md#what-it-is");
  EXPECT_EQ(flow[0].headingLevel, 1);
  EXPECT_EQ(flow[2].anchor, "file.md#bt601-and-more");
  EXPECT_EQ(flow[2].title, "BT.601 and \"more\"");
}

TEST_F(ManualMarkdown, StartsAPageWithEachFileOnly) {
  const Flow flow = boxesOf("# One\n\n# Two\n");
  EXPECT_TRUE(flow[0].startsPage);
  EXPECT_FALSE(flow[1].startsPage);
}

TEST_F(ManualMarkdown, KeepsHeadingsAndWhatAnnouncesWithWhatFollows) {
  const Flow flow = boxesOf("# One\n\nThese are:\n\n- a\n- b\n\nThe end.\n");
  std::vector<bool> kept;
  for (const Box& box : flow) kept.push_back(box.keepWithNext);
  EXPECT_THAT(kept, ElementsAre(true, true, false, false, false));
}

TEST_F(ManualMarkdown, MakesOneBoxOfLinesOfCode) {
  const Flow flow = boxesOf("Text.\n\n```\none\n\n  two\n```\n\nText.\n");
  ASSERT_EQ(flow.size(), 3U);
  EXPECT_GT(flow[1].height, 2 * flow[0].height);
}

TEST_F(ManualMarkdown, LetsNoRowOfATableStandAlone) {
  const Flow flow = boxesOf("| a | b |\n|---|---|\n| 1 | 2 |\n| 3 | 4 |\n| 5 | 6 |\n| 7 | 8 |\n| 9 | 0 |\n");
  std::vector<bool> kept;
  for (const Box& box : flow) kept.push_back(box.keepWithNext);
  EXPECT_THAT(kept, ElementsAre(true, true, false, false, true, false));
  EXPECT_EQ(flow[0].header, nullptr);
  for (std::size_t i = 1; i < flow.size(); ++i) EXPECT_NE(flow[i].header, nullptr);
}

TEST_F(ManualMarkdown, FitsPicturesIntoTheColumn) {
  QImage wide(4000, 1000, QImage::Format_RGB32), small(400, 200, QImage::Format_RGB32);
  wide.fill(Qt::gray);
  small.fill(Qt::gray);
  ASSERT_TRUE(wide.save(pictures_.filePath("wide.png")) && small.save(pictures_.filePath("small.png")));
  const Flow flow = boxesOf("![One](pictures/wide.png)\n\n![Two](pictures/small.png)\n");
  ASSERT_EQ(flow.size(), 2U);
  EXPECT_TRUE(problems_.isEmpty());
  EXPECT_GT(flow[0].height, textWidth / 4);
  EXPECT_LT(flow[0].height, textWidth / 4 + dots(12));
  EXPECT_LT(flow[1].height, dots(19) + dots(12));
}

TEST_F(ManualMarkdown, TellsOfAPictureThatIsNotThere) {
  EXPECT_TRUE(boxesOf("![One](pictures/none.png)\n").empty());
  EXPECT_EQ(problems_, QStringList{"file.md: there is no picture pictures/none.png"});
}

TEST_F(ManualMarkdown, DrawsLinksFromTheFileTheyStandIn) {
  drawAll(boxesOf("# One\n\nSee [here](#one), [there](other.md#two) and [the web](https://www.quorvane.example/).\n"));
  const QByteArray pdf = bytes_.data();
  for (const char* target : {"/URI (#file.md#one)", "/URI (#other.md#two)", "/URI (https://www.quorvane.example/)"})
    EXPECT_TRUE(pdf.contains(target)) << target;
}

TEST_F(ManualMarkdown, TakesNothingForNothing) {
  EXPECT_TRUE(boxesOf("").empty());
  EXPECT_TRUE(boxesOf("\n\n").empty());
}

}  // namespace
}  // namespace manual
