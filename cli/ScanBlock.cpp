#include "cli/ScanBlock.h"

#include "cli/plot/ScanWords.h"
#include "diagnosis/words/FindingText.h"

namespace cli {
namespace {

class Block {
 public:
  Block(const scan::ScanResult& result, const scan::MoviePair& rows, const movie::Movie& source,
        const movie::Movie& dest)
      : result_(result), clocks_{frameClock(source, *rows.source), frameClock(dest, *rows.dest)} {}

  std::string mapLines() const {
    std::string text;
    for (const scan::MapPiece& piece : result_.map.pieces) {
      const auto first = static_cast<std::size_t>(result_.matches.at(piece.dest.first).source);
      text += "  " + range(piece.dest);
      text += piece.line.rate > 0
                  ? "  shows the source from " + clocks_.source(first) + " on, " + mapPieceWords(piece) + "\n"
                  : "  holds the picture of the source at " + clocks_.source(first) + "\n";
    }
    return text.empty() ? text : "Time map:\n" + text;
  }

  std::string missingLines() const {
    std::string text;
    for (const scan::Gap& gap : result_.map.dropped) text += "  " + gapWords(gap, clocks_) + "\n";
    for (const scan::FrameRange& range : result_.map.unmatched) {
      text +=
          "  " + countedNoun(range.count(), "frame", "frames") + " without a counterpart, " + this->range(range) + "\n";
    }
    return text.empty() ? text : "Not the same:\n" + text;
  }

  std::string segmentLines() const {
    std::string text;
    for (const scan::Segment& segment : result_.segments) {
      text += "  " + range(segment.dest) + "  " + segmentWords(segment) + "\n";
    }
    for (const scan::UnmeasuredRange& each : result_.unmeasured) {
      text += "  " + range(each.dest) + "  not measured: " + unmeasuredWords(each.why) + "\n";
    }
    return text.empty() ? text : "Segments:\n" + text;
  }

  std::string regionLine() const {
    const diagnosis::Placement& placement = result_.placement;
    if (placement.isPlain()) return {};
    const auto part = [](const diagnosis::Region& region) {
      return fixedPoint(100 * region.left, 1) + " to " + fixedPoint(100 * region.right, 1) + " % across, " +
             fixedPoint(100 * region.top, 1) + " to " + fixedPoint(100 * region.bottom, 1) + " % down";
    };
    return "Region: the source's " + part(placement.source) + ", in the destination's " + part(placement.dest) + "\n";
  }

  std::string countLine() const {
    const std::size_t frames = result_.matches.frames.size();
    std::string text = "Frames: " + std::to_string(frames);
    const std::size_t every = result_.matches.every;
    if (every > 1) text += ", one of every " + std::to_string(every);
    if (result_.identicalFrames > 0) text += ", " + std::to_string(result_.identicalFrames) + " of them identical";
    if (result_.worst && isWorthTelling(*result_.worst)) {
      text += "; the worst one at " + clocks_.dest(result_.worst->frame) + ", exponent " +
              fixedPoint(result_.worst->exponent, 2);
    }
    return text + "\n";
  }

  std::string remarks() const {
    std::string text;
    for (const std::string& remark : scanRemarks(result_, clocks_)) text += remark + "\n";
    return text;
  }

 private:
  std::string range(const scan::FrameRange& range) const {
    return clocks_.dest(range.first) + " - " + clocks_.dest(range.end);
  }

  const scan::ScanResult& result_;
  ScanClocks clocks_;
};

}  // namespace

std::string scanBlock(const scan::ScanResult& result, const scan::MoviePair& rows, const movie::Movie& source,
                      const movie::Movie& dest, TextStyling styling) {
  if (!result.isTold()) return "Stopped before it was found how the one lies upon the other.\n";
  const diagnosis::FindingText text = diagnosis::textOf(result.finding);
  const bool bold = styling == TextStyling::Terminal;
  const Block block(result, rows, source, dest);
  // What was not seen comes first: nobody takes the verdict for one on the whole movie.
  std::string head = block.remarks() + "Scan: " + (bold ? "\x1b[1m" + text.verdict + "\x1b[0m" : text.verdict) + "\n";
  if (!text.why.empty()) head += "Why: " + text.why + "\n";
  const bool isWhole = !result.stopped && !result.failure;
  if (!text.advice.empty() && (isWhole || result.finding.action != diagnosis::Action::Nothing))
    head += "What to do: " + text.advice + "\n";
  const bool isRefused = result.correspondence == scan::Beginning::Result::NotFound;
  if (isRefused && result.matches.frames.empty()) return head;
  return head + block.countLine() + block.regionLine() + block.mapLines() + block.missingLines() + block.segmentLines();
}

}  // namespace cli
