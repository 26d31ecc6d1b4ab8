#include <limits>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "check/GammaCheck.h"
#include "check/Report.h"
#include "tests/check/CapturedLog.h"

namespace check {
namespace {

const QString pixelsUnshifted = QStringLiteral(
    "No noticeable gamma shift detected on destination movie's pixels. This is either because the source and "
    "destination frames do not match closely enough or because the gamma shift is occurring in metadata.");
const QString noShiftAtAll = QStringLiteral("No noticeable gamma shift was found.");
const QString shiftInMetadata = QStringLiteral(
    "Recommendation:\nThe gamma shift is occurring in metadata so click the Sync Metadata button to resolve this.");
const QString shiftInPixels = QStringLiteral(
    "Recommendation:\nThe gamma shift is occurring within the pixels of the movie, not within metadata. You are "
    "advised to go back to the application that created the destination file and check the input and output settings "
    "to remove the cause of the gamma shift.");
const QString shiftInBoth = QStringLiteral(
    "Recommendation:\nThe gamma shift is occurring within the pixels of the movie and within metadata. You are advised "
    "to go back to the application that created the destination file and check the input and output settings to remove "
    "the cause of the gamma shift. If necessary, return to Lumacheck and sync the gamma metadata.");

std::vector<ReportParagraph> reportOf(double v, bool mismatch) {
  RecordedReport report;
  reportPixels(v, mismatch, report);
  return report.paragraphs();
}

struct ShiftRow {
  double v;
  const char* line;
  PixelShift shift;
  friend void PrintTo(const ShiftRow& row, std::ostream* out) { *out << row.v; }
};

class ShiftedReport : public testing::TestWithParam<ShiftRow> {};

TEST_P(ShiftedReport, SaysTheShiftAndWhereItLies) {
  const ShiftRow row = GetParam();
  const ReportParagraph line{QString::fromLatin1(row.line), ReportStyle::BoldError};
  EXPECT_THAT(reportOf(row.v, false), testing::ElementsAre(line, ReportParagraph{shiftInPixels, ReportStyle::Bold}));
  EXPECT_THAT(reportOf(row.v, true), testing::ElementsAre(line, ReportParagraph{shiftInBoth, ReportStyle::Bold}));
  EXPECT_EQ(pixelShiftOf(row.v), row.shift);
}

INSTANTIATE_TEST_SUITE_P(Values, ShiftedReport,
                         testing::Values(ShiftRow{0.2, "Gamma shift: 0.20 (lighter)", PixelShift::Lighter},
                                         ShiftRow{0.5, "Gamma shift: 0.50 (lighter)", PixelShift::Lighter},
                                         ShiftRow{0.89, "Gamma shift: 0.89 (lighter)", PixelShift::Lighter},
                                         ShiftRow{0.9, "Gamma shift: 0.90 (lighter)", PixelShift::Lighter},
                                         ShiftRow{0.94, "Gamma shift: 0.94 (lighter)", PixelShift::Lighter},
                                         ShiftRow{1.06, "Gamma shift: 1.06 (darker)", PixelShift::Darker},
                                         ShiftRow{1.1, "Gamma shift: 1.10 (darker)", PixelShift::Darker},
                                         ShiftRow{1.25, "Gamma shift: 1.25 (darker)", PixelShift::Darker},
                                         ShiftRow{5.0, "Gamma shift: 5.00 (darker)", PixelShift::Darker}));

struct UnshiftedRow {
  double v;
  PixelShift shift;
  friend void PrintTo(const UnshiftedRow& row, std::ostream* out) { *out << row.v; }
};

class UnshiftedReport : public testing::TestWithParam<UnshiftedRow> {};

TEST_P(UnshiftedReport, SaysThatThePixelsShowNoShift) {
  const UnshiftedRow row = GetParam();
  const ReportParagraph first{pixelsUnshifted, ReportStyle::Bold};
  EXPECT_THAT(reportOf(row.v, false), testing::ElementsAre(first, ReportParagraph{noShiftAtAll, ReportStyle::Bold}));
  EXPECT_THAT(reportOf(row.v, true), testing::ElementsAre(first, ReportParagraph{shiftInMetadata, ReportStyle::Bold}));
  EXPECT_EQ(pixelShiftOf(row.v), row.shift);
}

constexpr double infinite = std::numeric_limits<double>::infinity();
INSTANTIATE_TEST_SUITE_P(
    Values, UnshiftedReport,
    testing::Values(UnshiftedRow{0.95, PixelShift::None}, UnshiftedRow{1.0, PixelShift::None},
                    UnshiftedRow{1.05, PixelShift::None}, UnshiftedRow{0.0, PixelShift::Unmatched},
                    UnshiftedRow{0.19, PixelShift::Unmatched}, UnshiftedRow{5.01, PixelShift::Unmatched},
                    UnshiftedRow{-1.0, PixelShift::Unmatched}, UnshiftedRow{infinite, PixelShift::Unmatched},
                    UnshiftedRow{std::numeric_limits<double>::quiet_NaN(), PixelShift::Unmatched}));

TEST(ReportConsole, GivesEachOperationItsStyle) {
  RecordedReport report;
  report.outputText(QStringLiteral("a"));
  report.outputBoldText(QStringLiteral("b"));
  report.outputErrorText(QStringLiteral("c"));
  report.outputBoldErrorText(QStringLiteral("d"));
  EXPECT_THAT(report.paragraphs(), testing::ElementsAre(ReportParagraph{QStringLiteral("a"), ReportStyle::Normal},
                                                        ReportParagraph{QStringLiteral("b"), ReportStyle::Bold},
                                                        ReportParagraph{QStringLiteral("c"), ReportStyle::Error},
                                                        ReportParagraph{QStringLiteral("d"), ReportStyle::BoldError}));
}

TEST(ReportConsole, ShowsAPerCentSignAsItIs) {
  RecordedReport report;
  report.outputText(QStringLiteral("50% of %@ done"));
  EXPECT_EQ(report.paragraphs().front().text, QStringLiteral("50% of %@ done"));
}

TEST(ReportConsole, WritesEveryTextToTheLog) {
  const test::CapturedLog log;
  RecordedReport report;
  report.outputText(QStringLiteral("  50% done  "));
  report.outputBoldText(QStringLiteral("two\nlines"));
  report.outputErrorText(QStringLiteral("100%%"));
  report.outputBoldErrorText(QStringLiteral("last"));
  EXPECT_THAT(log.texts(), testing::ElementsAre("50% done", "two\nlines", "100%", "last"));
}

TEST(ReportConsole, HoldsNothingAfterClearing) {
  RecordedReport report;
  report.outputText(QStringLiteral("old"));
  report.clearTextView();
  EXPECT_TRUE(report.paragraphs().empty());
}

}  // namespace
}  // namespace check
