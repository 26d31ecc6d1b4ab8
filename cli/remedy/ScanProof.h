#pragma once

#include <string>
#include <vector>

#include <tl/expected.hpp>

#include "cli/plot/ScanWords.h"
#include "cli/remedy/ProofMovie.h"
#include "cli/scan/ScanProblem.h"
#include "scan/Residual.h"
#include "scan/Scan.h"
#include "system/ReplacementFile.h"

namespace cli {

/// Up to ten seconds of the destination with what was found undone, and what differs still; or a sentence why not.
struct ScanProof {
  std::string path;              ///< of its file, as it was given
  std::string why;               ///< empty where there is a proof
  bool failed = false;           ///< it should have been made
  scan::FrameRange frames;       ///< of the destination
  scan::Residual before, after;  ///< of these frames, as they are and in the proof
};

/// Where a proof goes, and what makes it: both are there before a scan begins.
class ProofFile {
 public:
  /// Error: it has no place, or one that it may not have; or what makes it is missing. `movies`: that are scanned.
  static tl::expected<ProofFile, ScanProblem> at(const std::string& path, const std::vector<std::string>& movies);

  /// Makes it around the frame that differs most, within a segment that can be undone, and holds it against the frames
  /// of the source that the destination showed there; what cannot be held against them gets no name. `onProgress` is
  /// told how far that is; true ends it, and leaves nothing.
  ScanProof made(const movie::Movie& source, const movie::Movie& dest, const scan::MoviePair& rows,
                 const scan::ScanResult& result, const scan::OnProgress& onProgress);

 private:
  ProofFile(sys::ReplacementFile place, movie::MovieEncoderBackend& encoder)
      : place_(std::move(place)), encoder_(&encoder) {}
  tl::expected<void, std::string> write(const ProofSubject& subject, const scan::OnProgress& onProgress);
  sys::ReplacementFile place_;
  movie::MovieEncoderBackend* encoder_;
};

/// The line that tells of it; `clock`: of the destination.
std::string proofLine(const ScanProof& proof, const FrameClock& clock);

/// At most ten seconds around a frame, within a stretch that has it. Frames of the destination.
scan::FrameRange proofFrames(const scan::FrameRow& dest, const scan::FrameRange& within, std::size_t around);

}  // namespace cli
