#include "cli/remedy/ScanProof.h"

#include <algorithm>

#include "cli/remedy/ProofMovie.h"
#include "cli/remedy/ScanUndo.h"
#include "diagnosis/undo/UndoColors.h"
#include "diagnosis/words/CauseWords.h"
#include "movie/encode/MovieEncoder.h"

namespace cli {
namespace {

constexpr double longestProof = 10;  // seconds

/// A segment to be undone, and the frame of it that a proof is to show.
struct ProofPlace {
  const scan::Segment* segment = nullptr;
  std::size_t frame = 0;
};

/// The one with the frame that differs most; else the longest, in its middle.
ProofPlace placeOf(const std::vector<const scan::Segment*>& segments, const scan::ScanResult& result) {
  ProofPlace place;
  for (const scan::Segment* const segment : segments) {
    const scan::FrameRange& range = segment->dest;
    if (result.worst && result.worst->frame >= range.first && result.worst->frame < range.end) {
      return {segment, result.worst->frame};
    }
    if (place.segment == nullptr || range.count() > place.segment->dest.count()) {
      place = {segment, range.first + range.count() / 2};
    }
  }
  return place;
}

std::string whyNoProof(const diagnosis::Recipe& recipe) {
  if (recipe.hypothesis.relabelling) {
    return "No proof is made: only what the file says of its samples is wrong, and no sample has to change.";
  }
  return diagnosis::whyLost(recipe);
}

/// What the frames of a movie differ by from the source's: of the destination, or of the proof, which begins with the
/// first of them.
movie::Result<scan::Residual> residualIn(const movie::Movie& source, const movie::Movie& other, std::size_t first,
                                         const scan::ScanResult& result, const scan::FrameRange& frames) {
  TRY(const scan::MoviePair rows, scan::pairOf(source, other));
  return scan::residualOf(*rows.source, *rows.dest, rows.tags(), {frames, first, result.matches, result.compared});
}

}  // namespace

std::string proofLine(const ScanProof& proof, const FrameClock& clock) {
  if (!proof.why.empty()) return "Proof: none. " + proof.why + "\n";
  return "Proof: " + proof.path + ", " + clock(proof.frames.first) + " - " + clock(proof.frames.end) +
         ". It differs from the source by " + fixedPoint(proof.after.difference, 1) +
         " codes, the destination there by " + fixedPoint(proof.before.difference, 1) + ": " +
         diagnosis::causeWords(proof.after.causes) + ".\n";
}

scan::FrameRange proofFrames(const scan::FrameRow& dest, const scan::FrameRange& within, std::size_t around) {
  constexpr double rounding = 1e-4;
  const double earliest = dest.timeOf(within.first), latest = dest.timeOf(within.end) - longestProof;
  const double begin = std::max(earliest, std::min(dest.timeOf(around) - longestProof / 2, latest));
  scan::FrameRange frames = within;
  while (frames.first < around && dest.timeOf(frames.first) < begin - rounding) ++frames.first;
  while (frames.end > around + 1 && dest.timeOf(frames.end) > begin + longestProof + rounding) --frames.end;
  return frames;
}

tl::expected<ProofFile, ScanProblem> ProofFile::at(const std::string& path, const std::vector<std::string>& movies) {
  if (!hasEnding(path, ".mov")) return tl::unexpected(ScanProblem{path + ": A proof is a .mov file.", path});
  const auto encoder = movie::encoderBackend();
  if (!encoder) return tl::unexpected(ScanProblem{path + ": " + encoder.error(), path});
  TRY(sys::ReplacementFile place, placeFor(path, "The proof", movies));
  return ProofFile(std::move(place), **encoder);
}

ScanProof ProofFile::made(const movie::Movie& source, const movie::Movie& dest, const scan::MoviePair& rows,
                          const scan::ScanResult& result, const scan::OnProgress& onProgress) {
  ScanProof proof{place_.path(), {}, false, {}, {}, {}};
  const auto ended = [&](const std::string& why, bool failed) {
    proof.why = why;
    proof.failed = failed;
    return proof;
  };
  const auto segments = segmentsToUndo(result);
  if (!segments) return ended(segments.error(), false);
  if (result.stopped) return ended("No proof is made: the scan was stopped.", false);
  const auto [segment, frame] = placeOf(*segments, result);
  if (const std::string why = whyNoProof(*segment->recipe); !why.empty()) return ended(why, false);
  proof.frames = proofFrames(*rows.dest, segment->dest, frame);
  if (const auto written = write({source, dest, rows, proof.frames, *segment->recipe}, onProgress); !written) {
    return ended(written.error(), true);
  }
  const auto opened = movie::Movie::movieWithFile(place_.pathWhileOpen());
  if (!opened) return ended(opened.error().message(), true);
  const auto before = residualIn(source, dest, proof.frames.first, result, proof.frames);
  const auto after = residualIn(source, **opened, 0, result, proof.frames);
  if (!before || !after) return ended((before ? after : before).error().message(), true);
  proof.before = *before;
  proof.after = *after;
  if (const auto published = place_.publish(); !published) {
    return ended(unwritable(proof.path, "The proof", published.error()).message, true);
  }
  return proof;
}

tl::expected<void, std::string> ProofFile::write(const ProofSubject& subject, const scan::OnProgress& onProgress) {
  std::string why;
  const auto output = [&](std::uint64_t offset, std::span<const std::uint8_t> bytes) {
    const auto written = place_.write(offset, bytes);
    if (!written) why = unwritable(place_.path(), "The proof", written.error()).message;
    return written.has_value();
  };
  const auto made = writeProof(subject, *encoder_, output, onProgress);
  if (!made) return tl::unexpected(why.empty() ? place_.path() + ": " + made.error() : why);
  return {};
}

}  // namespace cli
