#include <numeric>

#include <gtest/gtest.h>

#include "tools/manual/TableColumns.h"

namespace manual {
namespace {

double sum(const std::vector<double>& widths) {
  return std::accumulate(widths.begin(), widths.end(), 0.0);
}

TEST(TableColumns, FillTheWidth) {
  TableColumns columns(1000, 20);
  columns.count(0, 50, 90);
  columns.count(1, 80, 3000);
  EXPECT_DOUBLE_EQ(sum(columns.widths()), 1000);
}

TEST(TableColumns, KeepShortTextsOnOneLine) {
  TableColumns columns(1000, 20);
  columns.count(0, 50, 200);
  columns.count(1, 80, 3000);
  EXPECT_DOUBLE_EQ(columns.widths()[0], 220);
}

TEST(TableColumns, LetLongTextsShareWhatIsLeft) {
  TableColumns columns(1000, 0);
  columns.count(0, 100, 500);
  columns.count(1, 100, 900);
  const auto widths = columns.widths();
  EXPECT_DOUBLE_EQ(widths[0], 100 + 800 * 400.0 / 1200);
  EXPECT_DOUBLE_EQ(widths[1], 100 + 800 * 800.0 / 1200);
}

TEST(TableColumns, BreakNoWordWhileThereIsRoom) {
  TableColumns columns(1000, 0);
  columns.count(0, 240, 240);
  columns.count(1, 240, 240);
  columns.count(2, 500, 5000);
  EXPECT_GE(columns.widths()[2], 500);
}

TEST(TableColumns, GiveShortTextsNoLineOfTheirOwnWhereWordsWouldBreak) {
  TableColumns columns(1000, 0);
  columns.count(0, 60, 240);
  columns.count(1, 900, 5000);
  const auto widths = columns.widths();
  EXPECT_GE(widths[1], 900);
  EXPECT_LT(widths[0], 240);
  EXPECT_DOUBLE_EQ(sum(widths), 1000);
}

TEST(TableColumns, TakeTheWidestCellOfAColumn) {
  TableColumns columns(1000, 0);
  columns.count(0, 10, 100);
  columns.count(0, 30, 40);
  columns.count(1, 10, 2000);
  EXPECT_DOUBLE_EQ(columns.widths()[0], 100);
}

}  // namespace
}  // namespace manual
