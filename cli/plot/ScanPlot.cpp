#include "cli/plot/ScanPlot.h"

#include <algorithm>
#include <cmath>

#include "cli/plot/PlotColumns.h"
#include "cli/plot/PlotScale.h"
#include "cli/plot/SvgText.h"
#include "diagnosis/words/FindingText.h"

namespace cli {
namespace {

// On paper, from top to bottom.
constexpr double paperWidth = 1200, left = 100, right = 1170, titleLine = 34, lineHeight = 20, chartHeight = 270;
constexpr double laneHeight = 26, laneGap = 6, timesHeight = 26, margin = 24, swatchWidth = 34;
constexpr std::size_t mostRows = 12;

/// Lines of whole words, so many characters each, and no more lines than that.
std::vector<std::string> wrapped(const std::string& text, std::size_t width, std::size_t most) {
  std::vector<std::string> lines(1);
  std::size_t at = 0;
  while (at < text.size()) {
    const std::size_t end = std::min(text.find(' ', at), text.size());
    const std::string word = text.substr(at, end - at);
    if (!lines.back().empty() && lines.back().size() + 1 + word.size() > width) {
      if (lines.size() == most) {
        lines.back() += " \xe2\x80\xa6";
        break;
      }
      lines.emplace_back();
    }
    lines.back() += (lines.back().empty() ? "" : " ") + word;
    at = end + 1;
  }
  return lines;
}

/// The logarithms of exponents that the axis reaches to: what was measured, with air, and never next to nothing.
PlotAxis exponentAxis(const std::vector<PlotRun>& runs) {
  constexpr double least = 0.12, most = 1.7, air = 1.12;
  double low = 0, high = 0;
  for (const PlotRun& run : runs) {
    for (const PlotColumn& column : run) {
      low = std::min(low, column.low);
      high = std::max(high, column.high);
    }
  }
  return {.low = std::max(-most, std::min(air * low, -least)), .high = std::min(most, std::max(air * high, least))};
}

/// Segments that are worth a line: where there are too many, the longest of those that differ.
std::vector<std::size_t> rowsOf(const std::vector<scan::Segment>& segments) {
  std::vector<std::size_t> rows(segments.size());
  for (std::size_t i = 0; i < rows.size(); ++i) rows[i] = i;
  const auto weight = [&](std::size_t i) {
    const bool differs = fillOf(segments[i].causes.front().kind) != std::string("same");
    return std::pair(differs, segments[i].dest.count());
  };
  std::stable_sort(rows.begin(), rows.end(), [&](std::size_t a, std::size_t b) { return weight(a) > weight(b); });
  rows.resize(std::min(rows.size(), mostRows));
  std::sort(rows.begin(), rows.end());
  return rows;
}

class Drawing {
 public:
  Drawing(const scan::ScanResult& result, const ScanSubject& subject) : result_(result), subject_(subject) {
    const std::size_t first = result.matches.first, end = result.matches.end();
    time_ = {subject.destRow.timeOf(first), subject.destRow.timeOf(end), left, right};
    if (end > first) runs_ = plotRuns(result.matches, subject.destRow, static_cast<std::size_t>(right - left));
    exponent_ = exponentAxis(runs_);
  }

  std::string whole(PlotGround ground) {
    std::string body;
    for (const auto part :
         {&Drawing::head, &Drawing::chart, &Drawing::lanes, &Drawing::times, &Drawing::legend, &Drawing::table}) {
      body += (this->*part)();
    }
    const std::string height = svgLength(y_ + margin), width = svgLength(paperWidth);
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" + width +
           "\" height=\"" + height + "\" viewBox=\"0 0 " + width + " " + height + "\">\n<title>" +
           xmlText("Scan of " + subject_.dest) + "</title>\n" + plotStyle(ground) +
           svgBox({0, 0, paperWidth, y_ + margin}, "ground") + body + "</svg>\n";
  }

 private:
  // --- What was scanned, and what was found

  std::string head() {
    y_ = titleLine;
    std::string text = svgText({margin, y_}, "title", SvgAnchor::Start,
                               shortened(subject_.dest, 52) + " against " + shortened(subject_.source, 52));
    const auto add = [&](const std::string& sentence, const char* look) {
      for (const std::string& line : wrapped(sentence, 128, 3)) {
        y_ += lineHeight;
        text += svgText({margin, y_}, look, SvgAnchor::Start, line);
      }
    };
    y_ += 4;
    add(result_.isTold() ? diagnosis::textOf(result_.finding).verdict
                         : "Stopped before it was found how the one lies upon the other.",
        "verdict");
    if (result_.isTold()) {
      for (const std::string& remark : scanRemarks(result_, subject_.clocks)) add(remark, "soft");
    }
    return text;
  }

  // --- The curve

  std::string chart() {
    chartTop_ = y_ + 52;
    chartBottom_ = chartTop_ + chartHeight;
    laneBottom_ = chartBottom_ + 2 * (laneGap + laneHeight);
    exponent_.from = chartBottom_;
    exponent_.to = chartTop_;
    y_ = chartBottom_;
    std::string text = grid();
    text += "<g clip-path=\"url(#chart)\">\n<clipPath id=\"chart\"><rect x=\"" + svgLength(left) + "\" y=\"" +
            svgLength(chartTop_) + "\" width=\"" + svgLength(right - left) + "\" height=\"" + svgLength(chartHeight) +
            "\"/></clipPath>\n";
    for (const scan::FrameRange& range : result_.map.unmatched) text += stretch(range, unmatchedFill);
    for (const scan::UnmeasuredRange& each : result_.unmeasured) text += stretch(each.dest, unmeasuredFill);
    text += svgLine({left, exponent_.at(0)}, {right, exponent_.at(0)}, "one");
    for (const PlotRun& run : runs_) text += curve(run);
    text += "</g>\n" + svgBox({left, chartTop_, right - left, chartHeight}, "frame") + cuts() + stretchWords();
    text += worst();
    if (runs_.empty()) {
      text += svgText({(left + right) / 2, exponent_.at(0) - 10}, "strong halo", SvgAnchor::Middle,
                      "No exponent was measured.");
    }
    return text;
  }

  std::string grid() const {
    std::string text;
    for (const double tick : exponentTicks(exponent_.low, exponent_.high)) {
      const double y = exponent_.at(std::log(tick));
      text += svgLine({left, y}, {right, y}, "grid");
      text += svgText({left - 8, y + 4.5}, tick == 1 ? "strong" : "", SvgAnchor::End, fixedPoint(tick, 2));
    }
    text += svgText({margin, chartTop_ - 18}, "soft", SvgAnchor::Start,
                    "Exponent: above 1.00 the destination is darker than the source, below it is lighter");
    return text;
  }

  std::string curve(const PlotRun& run) const {
    std::string line, upper, lower;
    for (const PlotColumn& column : run) {
      const std::string x = svgLength(time_.at(column.time)) + " ";
      const char* const step = line.empty() ? "M" : "L";
      line += step + x + svgLength(exponent_.at(column.middle));
      upper += step + x + svgLength(exponent_.at(column.high));
      lower.insert(0, "L" + x + svgLength(exponent_.at(column.low)));
    }
    if (run.size() == 1) {
      const double x = time_.at(run[0].time), top = exponent_.at(run[0].high), bottom = exponent_.at(run[0].low);
      return svgBox({x - 2, top, 4, bottom - top}, "band") + "<circle cx=\"" + svgLength(x) + "\" cy=\"" +
             svgLength(exponent_.at(run[0].middle)) + "\" r=\"3\" class=\"dot\"/>\n";
    }
    return "<path d=\"" + upper + lower + "Z\" class=\"band\"/>\n<path d=\"" + line + "\" class=\"curve\"/>\n";
  }

  std::string stretch(const scan::FrameRange& range, const char* look) const {
    const SvgBox box = boxOf(range, chartTop_, chartHeight);
    return svgBox(box, look);
  }

  /// Why there is no curve, where there is room to say so.
  std::string stretchWords() const {
    std::string text;
    const auto add = [&](const scan::FrameRange& range, const std::string& words, double y) {
      const SvgBox box = boxOf(range, 0, 0);
      if (box.width < 7.2 * static_cast<double>(words.size())) return;
      text += svgText({box.x + box.width / 2, y}, "halo", SvgAnchor::Middle, words);
    };
    for (const scan::FrameRange& each : result_.map.unmatched) add(each, "no counterpart", chartTop_ + 42);
    for (const scan::UnmeasuredRange& each : result_.unmeasured) {
      add(each.dest, unmeasuredWords(each.why), chartTop_ + 42);
    }
    return text;
  }

  /// Where the destination goes on at another place of the source.
  std::string cuts() const {
    std::string text;
    for (std::size_t i = 1; i < result_.map.pieces.size(); ++i) {
      const double x = time_.at(subject_.destRow.timeOf(result_.map.pieces[i].dest.first));
      text += svgLine({x, chartTop_}, {x, laneBottom_}, "cut") + cutMark({x, chartTop_});
    }
    return text;
  }

  static std::string cutMark(const SvgPoint& tip) {
    return "<path d=\"M" + svgLength(tip.x) + " " + svgLength(tip.y) + "l-5-9h10z\" class=\"mark\"/>\n";
  }

  static std::string worstMark(const SvgPoint& at) {
    const std::string x = svgLength(at.x), y = svgLength(at.y);
    return "<path d=\"M" + x + " " + y +
           "m-7 0a7 7 0 1 0 14 0a7 7 0 1 0-14 0m7-11v7m0 8v7m-11-11h7m8 0h7\" class=\"worst\"/>\n";
  }

  std::string worst() const {
    if (!result_.worst || !isWorthTelling(*result_.worst)) return {};
    const auto& [frame, exponent] = *result_.worst;
    const double x = time_.at(subject_.destRow.timeOf(frame));
    const double y = std::clamp(exponent_.at(std::log(exponent)), chartTop_, chartBottom_);
    const bool below = y < chartTop_ + 60;
    const SvgAnchor anchor = x > right - 130 ? SvgAnchor::End : x < left + 130 ? SvgAnchor::Start : SvgAnchor::Middle;
    return worstMark({x, y}) + svgText({x, below ? y + 28 : y - 18}, "strong halo", anchor,
                                       "worst: " + fixedPoint(exponent, 2) + " at " + subject_.clocks.dest(frame));
  }

  // --- Below it: what was found where, and which part of the source that shows

  SvgBox boxOf(const scan::FrameRange& range, double top, double height) const {
    const double from = time_.at(subject_.destRow.timeOf(range.first)),
                 to = time_.at(subject_.destRow.timeOf(range.end));
    return {from, top, std::max(1.0, to - from), height};
  }

  std::string lanes() {
    if (result_.matches.frames.empty()) return {};
    const double segmentTop = chartBottom_ + laneGap, mapTop = segmentTop + laneHeight + laneGap;
    std::string text = svgText({left - 8, segmentTop + 18}, "", SvgAnchor::End, "Found") +
                       svgText({left - 8, mapTop + 18}, "", SvgAnchor::End, "Source");
    for (std::size_t i = 0; i < result_.segments.size(); ++i) {
      const scan::Segment& segment = result_.segments[i];
      const SvgBox box = boxOf(segment.dest, segmentTop, laneHeight);
      text += svgBox(box, fillOf(segment.causes.front().kind)) + svgBox(box, "frame");
      if (box.width > 22) {
        text += svgText({box.x + box.width / 2, box.y + 18}, "strong halo", SvgAnchor::Middle, std::to_string(i + 1));
      }
    }
    for (const scan::MapPiece& piece : result_.map.pieces) text += mapBox(piece, mapTop);
    const auto add = [&](const scan::FrameRange& range, double top, const char* look) {
      const SvgBox box = boxOf(range, top, laneHeight);
      text += svgBox(box, look) + svgBox(box, "frame");
    };
    for (const scan::UnmeasuredRange& each : result_.unmeasured) add(each.dest, segmentTop, unmeasuredFill);
    for (const scan::FrameRange& range : result_.map.unmatched) {
      add(range, segmentTop, unmatchedFill);
      add(range, mapTop, unmatchedFill);
    }
    y_ = laneBottom_;
    return text;
  }

  std::string mapBox(const scan::MapPiece& piece, double top) const {
    const SvgBox box = boxOf(piece.dest, top, laneHeight);
    std::string text = svgBox(box, "same") + svgBox(box, "frame");
    const std::int32_t first = result_.matches.at(piece.dest.first).source;
    const std::string words = "from " + subject_.clocks.source(static_cast<std::size_t>(std::max(0, first)));
    if (box.width > 150) text += svgText({box.x + 8, top + 18}, "", SvgAnchor::Start, words);
    return text;
  }

  std::string times() {
    if (result_.matches.frames.empty()) return {};
    std::vector<std::size_t> frames;
    const scan::FrameRange all{result_.matches.first, result_.matches.end()};
    for (const double time : timeTicks(time_.low, time_.high, 8)) {
      frames.push_back(std::min(scan::frameAt(subject_.destRow, time + 1e-6), all.end));
    }
    if (frames.size() < 2) frames = {all.first, all.end};
    std::string text;
    for (const std::size_t frame : frames) {
      const double x = time_.at(subject_.destRow.timeOf(frame));
      text += svgLine({x, y_}, {x, y_ + 7}, "tick");
      const SvgAnchor anchor = x > right - 40 ? SvgAnchor::End : SvgAnchor::Middle;
      text += svgText({x, y_ + 22}, "", anchor, subject_.clocks.dest(frame));
    }
    text += svgText({margin, y_ + 22}, "soft", SvgAnchor::Start, "Time");
    y_ += timesHeight;
    return text;
  }

  // --- What the signs mean

  std::string legend() {
    y_ += 28;
    double x = left;
    std::string text;
    const auto add = [&](const std::string& swatch, const std::string& words) {
      text += swatch + svgText({x + swatchWidth + 8, y_}, "", SvgAnchor::Start, words);
      x += swatchWidth + 8 + 7.6 * static_cast<double>(words.size()) + 26;
    };
    const auto swatch = [&] { return SvgBox{x, y_ - 12, swatchWidth, 15}; };
    if (!runs_.empty()) {
      add(svgBox(swatch(), "band") + svgLine({x, y_ - 4.5}, {x + swatchWidth, y_ - 4.5}, "curve"),
          "exponent, and its spread");
    }
    if (result_.map.pieces.size() > 1) {
      const double at = x + swatchWidth / 2;
      add(svgLine({at, y_ - 12}, {at, y_ + 5}, "cut") + cutMark({at, y_ - 6}), "cut in the source's time");
    }
    if (!result_.map.unmatched.empty()) {
      add(svgBox(swatch(), unmatchedFill) + svgBox(swatch(), "frame"), "no counterpart in the source");
    }
    if (!result_.unmeasured.empty()) {
      add(svgBox(swatch(), unmeasuredFill) + svgBox(swatch(), "frame"), "not measured");
    }
    if (result_.worst && isWorthTelling(*result_.worst)) {
      add(worstMark({x + swatchWidth / 2, y_ - 4.5}), "worst frame");
    }
    return text;
  }

  std::string table() {
    std::string text;
    y_ += 8;
    const std::vector<std::size_t> rows = rowsOf(result_.segments);
    for (const std::size_t i : rows) {
      const scan::Segment& segment = result_.segments[i];
      y_ += lineHeight + 2;
      const SvgBox swatch{left, y_ - 12, swatchWidth, 15};
      text += svgText({left - 8, y_}, "strong", SvgAnchor::End, std::to_string(i + 1)) +
              svgBox(swatch, fillOf(segment.causes.front().kind)) + svgBox(swatch, "frame") +
              svgText({left + swatchWidth + 8, y_}, "", SvgAnchor::Start,
                      subject_.clocks.dest(segment.dest.first) + " - " + subject_.clocks.dest(segment.dest.end)) +
              svgText({left + 270, y_}, "", SvgAnchor::Start, segmentWords(segment));
    }
    if (rows.size() < result_.segments.size()) {
      y_ += lineHeight + 2;
      text += svgText({left + swatchWidth + 8, y_}, "soft", SvgAnchor::Start,
                      "and " + std::to_string(result_.segments.size() - rows.size()) + " more");
    }
    return text;
  }

  const scan::ScanResult& result_;
  const ScanSubject& subject_;
  PlotAxis time_, exponent_;
  std::vector<PlotRun> runs_;
  double y_ = 0;  ///< as far as is drawn
  double chartTop_ = 0, chartBottom_ = 0, laneBottom_ = 0;
};

}  // namespace

std::string scanPlot(const scan::ScanResult& result, const ScanSubject& subject, PlotGround ground) {
  return Drawing(result, subject).whole(ground);
}

}  // namespace cli
