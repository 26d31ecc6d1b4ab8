#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <optional>
#include <vector>

#include "scan/align/Burst.h"
#include "scan/align/FrameRow.h"
#include "scan/align/LineFit.h"
#include "scan/align/Region.h"
#include "scan/align/SourceIndex.h"

namespace scan {

/// Frames in a row, small, whose signatures can be taken of any part of them.
struct Clip {
  struct Frame {
    double time = 0;
    LumaPlane luma;  ///< clipWidth x clipHeight
  };
  std::vector<Frame> frames;
  Moments moments(const diagnosis::Region& part, double exponent = 1) const;
  /// Of about so many of them, evenly.
  Moments someMoments(std::size_t count, const diagnosis::Region& part) const;
};
constexpr int clipWidth = 80, clipHeight = 45;

/// Frames from one up to another; as far as they can be had.
Clip clipOf(FrameRow& row, const FrameRange& range);
/// Those that are on screen between two times.
Clip clipBetween(FrameRow& row, double begin, double end);

/// Every so many frames of a clip of the destination, with those of the source that lie there on a line.
std::vector<PlanePair> pairsAt(const Clip& source, const Clip& dest, const TimeLine& line, std::size_t every);

/// Looks for bursts of the destination in the source. What was read is kept for the next placement that is tried.
class Probe {
 public:
  Probe(FrameRow& source, FrameRow& dest, const FrameRange& range, Stop stop);

  /// How pictures are compared.
  struct Manner {
    diagnosis::Placement placement;
    double exponent = 1;
  };
  /// What was found in one manner.
  struct Found {
    Manner manner;
    std::vector<BurstFit> fits;       ///< of bursts that tell a place
    std::vector<BurstFit> stillFits;  ///< of bursts that fit, but anywhere
    std::optional<LineThrough> line;
    double cost = 1e9;    ///< the median of those on the line
    bool agreed = false;  ///< enough of them, or enough of the others, which do not move, show what lies on the line
  };
  Found lookFor(const Manner& manner, std::size_t mostBursts);
  /// The distances in the index of the first bursts' best entries, added up: small where a manner is right.
  double roughCost(const Manner& manner);

  /// The same manner with the part of the source moved to where those entries fit best.
  Manner adjusted(const Manner& manner);

  /// How many of the bursts that were tried are not black or of one colour, and how many of those show what lies on a
  /// line.
  struct Support {
    std::size_t telling = 0, agreeing = 0;
  };
  Support supportOf(const TimeLine& line, const Manner& manner);
  /// Whether neither side has anything in it to go by: black, or of one colour.
  bool isFlat();

  /// Frames of both sides that lie upon each other on a line, of the bursts that were found on it.
  std::vector<PlanePair> pairsOn(const Found& found);
  /// The same of the first few bursts, wherever they are.
  std::vector<PlanePair> pairsOn(const TimeLine& line);
  Boxes boxes();
  const std::vector<double>& rates() const { return rates_; }
  std::size_t mostBursts() const { return places_.size(); }

 private:
  const Clip& burst(std::size_t number);
  const Clip& stretch(double sourceTime);
  SourceIndex& index();
  void supportByStill(Found& found);
  std::optional<BurstFit> fitOf(const Clip& burst, const Manner& manner);
  void addPairs(std::vector<PlanePair>& pairs, const Clip& clip, const TimeLine& line);

  FrameRow& source_;
  FrameRow& dest_;
  Stop stop_;
  std::vector<double> rates_;
  std::vector<FrameRange> places_;  ///< of bursts, in the order in which they are tried
  std::map<std::size_t, Clip> bursts_;
  std::map<long, Clip> stretches_;  ///< by their middle, in tenths of a second
  std::unique_ptr<SourceIndex> index_;
};

}  // namespace scan
