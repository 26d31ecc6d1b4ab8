#pragma once

#include <array>
#include <deque>
#include <optional>
#include <vector>

#include "diagnosis/Placement.h"
#include "diagnosis/PlacementSearch.h"
#include "diagnosis/ToneFit.h"

namespace diagnosis {

/// What a placement is gone by. Luma alone is quicker, and enough where no other matrix mixed colours into it.
enum class GoneBy { Luma, Colors };

/// A small source, and the luma of a part of a destination in the same size, on which the source's place is tried. The
/// placements are of that part. What was found out of luma is kept: a search by colours goes nearly the same ways as
/// one by luma before it.
class PlacementTrial {
 public:
  /// Both pictures are referred to.
  PlacementTrial(const Signal& source, const Signal& dest, const Region& destPart);
  PlacementTrial(const PlacementTrial&) = delete;
  PlacementTrial& operator=(const PlacementTrial&) = delete;

  PlacementFit fit(Placement placement, GoneBy goneBy);
  /// bestCrop().
  const Placement& crop();

 private:
  struct Try {
    ToneFit luma;
    std::optional<double> byColors{};
  };
  /// A plane of the source with its lines taken, and its columns not yet: moves to the left and right ask for it again.
  struct LinesTaken {
    Placement of;
    std::vector<float> columns{};
  };
  Try& tried(const Placement& placement);
  std::vector<float> plane(std::size_t which, const Placement& placement);

  const Signal &source_, &dest_;
  ToneTarget target_;
  Region destPart_;
  std::vector<Placement> placements_;  ///< of the tries
  std::deque<Try> tries_;
  std::array<LinesTaken, 3> linesTaken_;
  std::optional<Placement> crop_;
};

}  // namespace diagnosis
