#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "scan/align/Start.h"
#include "scan/follow/Matches.h"
#include "scan/follow/Track.h"
#include "scan/follow/UsualDistance.h"

namespace scan {

/// How the destination is followed: on which line, and what the source's luma is raised to for it to look alike.
struct Course {
  TimeLine line;
  double exponent = 1;
};

/// Where frames are expected.
struct Bearing {
  Course course;
  std::uint16_t line = 0;         ///< the number of the course's line
  std::int64_t centre = 0;        ///< how far from the line, in frames of the source, they are found lately
  int aside = 0;                  ///< for how many frames they have been found elsewhere
  float nearer = 0;               ///< by how much those were nearer there, added up
  UsualDistance usual{};          ///< of frames that were not lost
  std::size_t settledBefore = 0;  ///< frames before this one were looked at already when the course began
};

/// Where one stands after a frame whose counterpart is final: what comes after it does not depend on what came before.
struct Standing {
  Bearing bearing;
  Track::State state;  ///< of that frame
};

/// As much of a scan as is final, and what it takes to go on with it.
struct SavedScan {
  Beginning beginning;
  std::vector<TimeLine> lines;     ///< that FrameMatch::line counts
  std::vector<FrameMatch> frames;  ///< of the row that is compared, from its first on
  Standing standing;               ///< after the last of them; nothing where there are none
};

/// Keeps what is final of a scan while it goes on. Called on the thread that scans.
class ScanKeeper {
 public:
  virtual ~ScanKeeper() = default;
  /// What was kept of the same scan before; null for one that begins. Asked for once, before the others.
  virtual const SavedScan* saved() const = 0;
  virtual void begun(const Beginning& beginning) = 0;
  /// All frames so far are final.
  virtual void settled(const Matches& matches, const std::vector<TimeLine>& lines, const Standing& standing) = 0;
};

}  // namespace scan
