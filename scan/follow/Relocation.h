#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "scan/align/Probe.h"
#include "scan/follow/Standing.h"

namespace scan {

/// Looks for a place that was lost. Reads the source on its own.
class Relocation {
 public:
  Relocation(const FrameRow& source, const diagnosis::Placement& placement, Stop stop);

  /// The frames since the place was lost, of which the last ones are looked for. Cheap as long as the same loss lasts:
  /// what was read of the source for it is kept.
  struct Loss {
    std::size_t firstFrame = 0;  ///< of the destination: tells one loss from another
    double sourceTime = 0;       ///< where the source was then
    const Moments& burst;        ///< of the destination
    double farness = 0;          ///< the mean distance of those frames where they are expected
    std::int64_t reach = 0;      ///< frames of the source on both sides of a place that are found from there
    Course course;               ///< that was lost
    const std::vector<TimeLine>& known;
  };
  /// Near where it was lost: a cut, something that was set in, another tone.
  std::optional<Course> nearby(const Loss& loss);
  /// Anywhere: on known lines, then in the index of the source.
  std::optional<Course> anywhere(const Loss& loss);

 private:
  std::unique_ptr<FrameRow> source_;
  diagnosis::Placement placement_;
  Stop stop_;
  std::optional<std::size_t> keptLoss_;
  Clip kept_;
  std::unique_ptr<SourceIndex> index_;
};

}  // namespace scan
