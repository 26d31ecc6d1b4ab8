#include <gtest/gtest.h>

#include "cli/ReportText.h"

namespace cli {
namespace {

using check::ReportParagraph;
using check::ReportStyle;

const std::vector<ReportParagraph> paragraphs{{QStringLiteral("plain"), ReportStyle::Normal},
                                              {QStringLiteral("bold\nlines"), ReportStyle::Bold},
                                              {QStringLiteral("red"), ReportStyle::Error},
                                              {QStringLiteral("both \u00e9"), ReportStyle::BoldError}};

TEST(ReportText, SeparatesParagraphsByOneBlankLine) {
  EXPECT_EQ(reportText(paragraphs, TextStyling::Plain), "plain\n\nbold\nlines\n\nred\n\nboth \xc3\xa9\n");
}

TEST(ReportText, StylesParagraphsForATerminal) {
  EXPECT_EQ(reportText(paragraphs, TextStyling::Terminal),
            "plain\n\n\x1b[1mbold\nlines\x1b[0m\n\n\x1b[31mred\x1b[0m\n\n\x1b[1;31mboth \xc3\xa9\x1b[0m\n");
}

TEST(ReportText, IsEmptyWithoutParagraphs) {
  EXPECT_EQ(reportText({}, TextStyling::Plain), "");
}

}  // namespace
}  // namespace cli
