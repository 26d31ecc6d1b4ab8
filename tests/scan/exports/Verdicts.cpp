#include "tests/scan/exports/Verdicts.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <stdexcept>

#include "diagnosis/numbers/Statistics.h"
#include "scan/Scan.h"
#include "tests/support/MovieFixture.h"

namespace scan::test {
namespace {

constexpr double frame = 1 / masterRate;

std::unique_ptr<movie::Movie> openedMovie(const std::string& path) {
  auto movie = movie::Movie::movieWithFile(path);
  if (!movie) throw std::runtime_error(path + ": " + movie.error().message());
  return std::move(*movie);
}

const TruePiece* truthAt(const ScanTruth& truth, double time) {
  for (const TruePiece& piece : truth.pieces) {
    if (time >= piece.from - 1e-4 && time < piece.to - 1e-4) return &piece;
  }
  return nullptr;
}

void judgeMap(ScanVerdict& verdict, const ScanTruth& truth, const ScanResult& result, const MoviePair& rows) {
  std::size_t all = 0, right = 0, unmatched = 0;
  for (std::size_t i = 0; i < result.matches.frames.size(); ++i) {
    const double time = rows.dest->timeOf(result.matches.first + i);
    const TruePiece* const piece = truthAt(truth, time);
    if (piece == nullptr) continue;
    ++all;
    const FrameMatch& match = result.matches.frames[i];
    if (!match.isMatched()) {
      ++unmatched;
      continue;
    }
    // The frame that is on screen then, or one beside it.
    const double wanted = piece->rate * time + piece->offset;
    const double shown = rows.source->timeOf(static_cast<std::size_t>(match.source));
    if (shown > wanted - 2.01 * frame && shown < wanted + 1.01 * frame) ++right;
  }
  if (all == 0) return;
  verdict.unmatchedShare = static_cast<double>(unmatched) / static_cast<double>(all);
  verdict.rightShare = all > unmatched ? static_cast<double>(right) / static_cast<double>(all - unmatched) : 0;
}

/// What is told of a time.
const Segment* segmentAt(const ScanResult& result, const MoviePair& rows, double time) {
  for (const Segment& segment : result.segments) {
    if (rows.dest->timeOf(segment.dest.first) <= time && time < rows.dest->timeOf(segment.dest.end)) return &segment;
  }
  return nullptr;
}

bool isPower(const Segment& segment) {
  return segment.causes.front().kind == diagnosis::CauseKind::Power;
}

double toldExponent(const Segment& segment) {
  return isPower(segment) ? segment.causes.front().exponent.value_or(1) : segment.exponent.value_or(1);
}

void judgeTones(ScanVerdict& verdict, const ScanTruth& truth, const ScanResult& result, const MoviePair& rows) {
  if (truth.tones.empty()) return;
  int changes = 0;
  for (std::size_t i = 0; i < truth.tones.size(); ++i) {
    const TrueTone& tone = truth.tones[i];
    const Segment* const segment = segmentAt(result, rows, (tone.from + tone.to) / 2);
    verdict.exponentError =
        std::max(verdict.exponentError, segment == nullptr ? 1.0 : std::abs(toldExponent(*segment) - tone.exponent));
    if (i == 0 || tone.exponent == truth.tones[i - 1].exponent) continue;
    ++changes;
    double nearest = 1e3;
    for (const Segment& each : result.segments) {
      nearest = std::min(nearest, std::abs(rows.dest->timeOf(each.dest.first) - tone.from) * rows.dest->shape().rate());
    }
    verdict.cutError = std::max(verdict.cutError, nearest);
  }
  verdict.falseSegments = std::max(0, static_cast<int>(result.segments.size()) - 1 - changes);
}

/// What is the cause in the middle of a segment.
bool isCause(diagnosis::CauseKind told, const ScanTruth& truth, double time) {
  const auto isAt = [&](const TrueTone& tone) { return time >= tone.from && time < tone.to; };
  const auto tone = std::find_if(truth.tones.begin(), truth.tones.end(), isAt);
  if (tone != truth.tones.end() && tone->exponent == 1) {
    return told == diagnosis::CauseKind::Same || told == diagnosis::CauseKind::Identical;
  }
  return std::find(truth.causes.begin(), truth.causes.end(), told) != truth.causes.end();
}

void judgeSegments(ScanVerdict& verdict, const ScanTruth& truth, const ScanResult& result, const MoviePair& rows) {
  for (const Segment& segment : result.segments) {
    const double time = rows.dest->timeOf((segment.dest.first + segment.dest.end) / 2);
    verdict.segments.push_back({segment.confidence(), isCause(segment.causes.front().kind, truth, time)});
  }
}

void judgeRegion(ScanVerdict& verdict, const ScanTruth& truth, const ScanResult& result) {
  if (!truth.part) return;
  const diagnosis::Region &found = result.placement.source, &wanted = *truth.part;
  verdict.regionError = std::max({std::abs(found.left - wanted.left), std::abs(found.top - wanted.top),
                                  std::abs(found.right - wanted.right), std::abs(found.bottom - wanted.bottom)});
}

/// How far frames of a segment are from what they show, in the middle.
double farnessIn(const ScanResult& result, const Segment& segment) {
  std::vector<float> distances;
  for (std::size_t i = segment.dest.first; i < segment.dest.end; ++i) {
    const FrameMatch& match = result.matches.at(i);
    if (match.isMatched()) distances.push_back(match.distance);
  }
  return distances.empty() ? 0 : static_cast<double>(diagnosis::medianOf(distances));
}

std::string toldOf(const ScanResult& result) {
  char text[120];
  std::string told;
  for (const MapPiece& piece : result.map.pieces) {
    std::snprintf(text, sizeof text, " [%zu-%zu %.5f %+.3f p%d]", piece.dest.first, piece.dest.end, piece.line.rate,
                  piece.line.offset, static_cast<int>(piece.pattern));
    if (told.size() < 200) told += text;
  }
  for (const Segment& segment : result.segments) {
    std::snprintf(text, sizeof text, " {%zu-%zu r%.3f c%d %.2f d%.1f}", segment.dest.first, segment.dest.end,
                  segment.exponent.value_or(0), static_cast<int>(segment.causes.front().kind), segment.confidence(),
                  farnessIn(result, segment));
    if (told.size() < 400) told += text;
  }
  const diagnosis::Region &from = result.placement.source, &to = result.placement.dest;
  std::snprintf(text, sizeof text, " (%.3f %.3f %.3f %.3f > %.3f %.3f %.3f %.3f)", from.left, from.top, from.right,
                from.bottom, to.left, to.top, to.right, to.bottom);
  if (!result.placement.isPlain()) told += text;
  return told;
}

/// In five bins: what is told to be so sure, on average, and how often it is so.
void printConfidences(std::ostream& out, const std::vector<ScanVerdict>& verdicts) {
  constexpr std::array bounds{0.0, 0.5, 0.8, 0.9, 0.95, 1.001};
  out << "  confidence of segments   number   stated   right\n";
  for (std::size_t bin = 0; bin + 1 < bounds.size(); ++bin) {
    int count = 0, right = 0;
    double stated = 0;
    for (const ScanVerdict& verdict : verdicts) {
      for (const ToldCause& told : verdict.segments) {
        if (told.confidence < bounds[bin] || told.confidence >= bounds[bin + 1]) continue;
        ++count, right += told.isRight ? 1 : 0, stated += told.confidence;
      }
    }
    char line[100];
    std::snprintf(line, sizeof line, "  %.2f to %.2f           %8d   %6.3f  %6.3f\n", bounds[bin],
                  std::min(1.0, bounds[bin + 1]), count, count > 0 ? stated / count : 0.0,
                  count > 0 ? static_cast<double>(right) / count : 0.0);
    out << line;
  }
}

}  // namespace

ScanVerdict verdictOn(const Master& master, const ScanRecipe& recipe) {
  const std::string path =
      movie::test::fixtureMovies(master.path, {{"scan-" + recipe.name + recipe.extension, recipe.arguments}}).front();
  const auto source = openedMovie(master.path), dest = openedMovie(path);
  const auto begin = std::chrono::steady_clock::now();
  const auto rows = pairOf(*source, *dest);
  if (!rows) throw std::runtime_error(recipe.name + ": " + rows.error().message());
  const ScanResult result = scanned(*rows->source, *rows->dest, rows->tags(), {}, {});

  ScanVerdict verdict{.name = recipe.name + "/" + master.name, .half = master.half, .isHard = recipe.isHard};
  verdict.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
  verdict.told = toldOf(result);
  const bool refused = result.correspondence == Beginning::Result::NotFound;
  verdict.toBeRefused = recipe.truth.isRefused;
  verdict.refusedRightly = refused == verdict.toBeRefused;
  const std::vector<diagnosis::CauseKind>& causes = recipe.truth.causes;
  verdict.causeRight = std::find(causes.begin(), causes.end(), result.finding.main().kind) != causes.end();
  if (refused) {
    verdict.rightShare = recipe.truth.isRefused ? 1 : 0;
    return verdict;
  }
  judgeMap(verdict, recipe.truth, result, *rows);
  judgeTones(verdict, recipe.truth, result, *rows);
  judgeSegments(verdict, recipe.truth, result, *rows);
  judgeRegion(verdict, recipe.truth, result);
  verdict.identicalRight = (result.identicalFrames == result.matches.frames.size()) == recipe.truth.isIdentical;
  return verdict;
}

void printWrong(std::ostream& out, const ScanVerdict& verdict) {
  const bool tones = verdict.exponentsRight() && verdict.cutsRight() && verdict.falseSegments == 0;
  const bool rest = verdict.causeRight && verdict.refusedRightly && verdict.identicalRight;
  if (verdict.mapRight() && tones && rest && verdict.regionRight()) return;
  char line[300];
  std::snprintf(line, sizeof line,
                "  %-36s map %.3f unmatched %.3f exponent %.3f cut %.1f false %d region %.4f%s%s%s %.1f s\n",
                verdict.name.c_str(), verdict.rightShare, verdict.unmatchedShare, verdict.exponentError,
                verdict.cutError, verdict.falseSegments, verdict.regionError, verdict.causeRight ? "" : " CAUSE",
                verdict.refusedRightly ? "" : " REFUSAL", verdict.identicalRight ? "" : " IDENTICAL", verdict.seconds);
  out << line << "      " << verdict.told << std::endl;
}

std::vector<ScanVerdict> thatCount(std::vector<ScanVerdict> verdicts) {
  std::erase_if(verdicts, [](const ScanVerdict& each) { return each.isHard; });
  return verdicts;
}

void printScans(std::ostream& out, const std::string& title, const std::vector<ScanVerdict>& all) {
  const std::vector<ScanVerdict> verdicts = thatCount(all);
  const auto right = [&](bool (*holds)(const ScanVerdict&)) {
    return std::to_string(std::count_if(verdicts.begin(), verdicts.end(), holds));
  };
  double seconds = 0;
  for (const ScanVerdict& each : verdicts) seconds += each.seconds;
  out << title << ", right of " << verdicts.size() << " exports:\n  maps "
      << right([](const ScanVerdict& each) { return each.mapRight(); }) << ", refusals "
      << right([](const ScanVerdict& each) { return each.refusedRightly; }) << ", causes "
      << right([](const ScanVerdict& each) { return each.causeRight; }) << ", exponents "
      << right([](const ScanVerdict& each) { return each.exponentsRight(); }) << ", changes of exponent "
      << right([](const ScanVerdict& each) { return each.cutsRight(); }) << ", without a false segment "
      << right([](const ScanVerdict& each) { return each.falseSegments == 0; }) << ", regions "
      << right([](const ScanVerdict& each) { return each.regionRight(); }) << ", identity "
      << right([](const ScanVerdict& each) { return each.identicalRight; }) << "; " << seconds << " s\n";
  printConfidences(out, all);
}

}  // namespace scan::test
