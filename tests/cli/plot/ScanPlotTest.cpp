#include <cmath>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cli/plot/ScanPlot.h"
#include "tests/scan/PaintedRow.h"

namespace cli {
namespace {

using diagnosis::CauseKind;
using scan::test::PaintedRow;
using testing::HasSubstr;
using testing::Not;

const ScanClocks counting{[](std::size_t frame) { return "s" + std::to_string(frame); },
                          [](std::size_t frame) { return "d" + std::to_string(frame); }};

scan::Segment segmentWith(const scan::FrameRange& range, const diagnosis::Cause& cause) {
  return {range, cause.exponent, {}, {cause}};
}
scan::MapPiece pieceOf(const scan::FrameRange& range) {
  scan::MapPiece piece;
  piece.dest = range;
  return piece;
}

/// A leader without counterpart, what is the same, a gamma shift after a cut, and black at the end: 240 frames.
scan::ScanResult everything() {
  scan::ScanResult result;
  result.correspondence = scan::Beginning::Result::Found;
  result.scanned = {0, 240};
  for (int i = 0; i < 240; ++i) {
    scan::FrameMatch match;
    if (i >= 48) match.source = i - 48;
    if (i >= 48 && i < 192) match.logExponent = i < 120 ? 0.0F : std::log(1.2F);
    match.spread = 0.01F;
    result.matches.frames.push_back(match);
  }
  result.map.pieces = {pieceOf({48, 120}), pieceOf({120, 240})};
  result.map.unmatched = {{0, 48}};
  result.segments = {segmentWith({48, 120}, {.kind = CauseKind::Same, .confidence = 0.99}),
                     segmentWith({120, 192}, {.kind = CauseKind::Power, .confidence = 0.9, .exponent = 1.2})};
  result.unmeasured = {{.dest = {192, 240}, .why = scan::Unmeasured::Dark}};
  result.worst = scan::WorstFrame{150, 1.2};
  result.finding.causes = {{.kind = CauseKind::Power, .confidence = 0.9, .exponent = 1.2}};
  result.finding.frames = 240;
  return result;
}

std::string plotOf(const scan::ScanResult& result, PlotGround ground = PlotGround::Screen,
                   const std::string& dest = "dest.mov") {
  const PaintedRow row(std::vector<scan::test::Shown>(result.matches.end()), 24);
  return scanPlot(result, {"source.mov", dest, row, counting}, ground);
}

std::size_t countOf(const std::string& text, const std::string& part) {
  std::size_t count = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
  return count;
}

TEST(ScanPlot, SaysWhatWasScannedAndWhatWasFound) {
  const std::string svg = plotOf(everything());
  EXPECT_THAT(svg, HasSubstr(">dest.mov against source.mov</text>"));
  EXPECT_THAT(svg, HasSubstr(">Gamma shift: the destination is "));
  EXPECT_THAT(svg, HasSubstr(">gamma shift, exponent 1.20 (sure by 90 %)</text>"));
  EXPECT_THAT(svg, HasSubstr(">d120 - d192</text>"));
}

TEST(ScanPlot, DrawsTheCurveWhereItWasMeasured) {
  const std::string svg = plotOf(everything());
  const std::size_t end = svg.find("\" class=\"curve\"/>\n</g>");
  ASSERT_NE(end, std::string::npos);
  const std::string path = svg.substr(svg.rfind('"', end - 1) + 1, end - svg.rfind('"', end - 1) - 1);
  EXPECT_EQ(path.substr(0, 8), "M316.23 ") << "the leader takes a fifth of the width";
  EXPECT_EQ(countOf(path, "L"), 143U) << "and so does the black at the end";
}

TEST(ScanPlot, MarksTheWorstFrame) {
  EXPECT_THAT(plotOf(everything()), HasSubstr(">worst: 1.20 at d150</text>"));
  scan::ScanResult calm = everything();
  calm.worst->exponent = 1.002;
  EXPECT_THAT(plotOf(calm), Not(HasSubstr(">worst")));
}

TEST(ScanPlot, MarksCutsAndStretchesWithoutACurve) {
  const std::string svg = plotOf(everything());
  EXPECT_EQ(countOf(svg, "class=\"cut\"/>"), 2U) << "the cut, and the sign that tells what it is";
  EXPECT_THAT(svg, HasSubstr(">cut in the source's time</text>"));
  EXPECT_THAT(svg, HasSubstr(">no counterpart in the source</text>"));
  EXPECT_THAT(svg, HasSubstr(">not measured</text>"));
  EXPECT_THAT(svg, HasSubstr(">black, or of one color</text>"));
}

TEST(ScanPlot, ExplainsOnlyWhatIsThere) {
  scan::ScanResult plain = everything();
  plain.map.pieces = {pieceOf({48, 240})};
  plain.map.unmatched.clear();
  plain.unmeasured.clear();
  const std::string svg = plotOf(plain);
  EXPECT_THAT(svg, Not(HasSubstr("counterpart")));
  EXPECT_THAT(svg, Not(HasSubstr("not measured")));
  EXPECT_THAT(svg, Not(HasSubstr("class=\"cut\"")));
}

TEST(ScanPlot, GoesDarkWithTheScreenOnly) {
  EXPECT_THAT(plotOf(everything(), PlotGround::Screen), HasSubstr("@media (prefers-color-scheme:dark)"));
  EXPECT_THAT(plotOf(everything(), PlotGround::Page), Not(HasSubstr("@media")));
}

TEST(ScanPlot, HoldsAnyName) {
  const std::string svg = plotOf(everything(), PlotGround::Screen, "<a & \x01\xff>.mov");
  EXPECT_THAT(svg, HasSubstr(">&lt;a &amp; \xef\xbf\xbd\xef\xbf\xbd&gt;.mov against source.mov</text>"));
  const std::string longName = std::string(300, 'x') + ".mov";
  EXPECT_THAT(plotOf(everything(), PlotGround::Screen, longName), HasSubstr("xxx\xe2\x80\xa6xxx"));
}

TEST(ScanPlot, ListsTheLongestSegmentsOfMany) {
  scan::ScanResult many = everything();
  many.segments.clear();
  for (std::size_t i = 48; i < 192; i += 3) {
    many.segments.push_back(segmentWith({i, i + 3}, {.kind = CauseKind::Tone, .confidence = 0.9}));
  }
  const std::string svg = plotOf(many);
  EXPECT_EQ(countOf(svg, ">another tone (sure by 90 %)</text>"), 12U);
  EXPECT_THAT(svg, HasSubstr(">and 36 more</text>"));
}

TEST(ScanPlot, DrawsASingleFrameAsADot) {
  scan::ScanResult one = everything();
  one.matches = {100, {one.matches.frames[100]}};
  one.map.pieces = {pieceOf({100, 101})};
  one.map.unmatched.clear();
  one.segments = {segmentWith({100, 101}, {.kind = CauseKind::Same, .confidence = 0.9})};
  one.unmeasured.clear();
  one.worst.reset();
  const std::string svg = plotOf(one);
  EXPECT_THAT(svg, HasSubstr("<circle cx=\"635\""));
  EXPECT_THAT(svg, HasSubstr(">d100</text>"));
}

TEST(ScanPlot, DrawsNoNumberWhereThereIsNone) {
  scan::ScanResult other;
  other.finding.causes = {{.kind = CauseKind::Different, .confidence = 0.9}};
  other.finding.frames = 2;
  const std::string svg = plotOf(other);
  EXPECT_THAT(svg, HasSubstr(">No exponent was measured.</text>"));
  EXPECT_THAT(svg, HasSubstr("do not all show the same picture."));
  EXPECT_THAT(svg, Not(HasSubstr(">Time</text>")));
  EXPECT_THAT(svg, Not(HasSubstr("nan")));
  EXPECT_THAT(svg, Not(HasSubstr("inf")));
}

TEST(ScanPlot, StaysSmallForAWholeMovie) {
  scan::ScanResult movie = everything();
  const scan::FrameMatch frame = movie.matches.frames[150];
  movie.matches.frames.assign(172800, frame);
  EXPECT_LT(plotOf(movie).size(), 200000U);
}

}  // namespace
}  // namespace cli
