#pragma once

#include <vector>

#include "diagnosis/Diagnosis.h"
#include "movie/Movie.h"

namespace diagnosis {

/// Where a pair of frames is taken.
struct FrameTimes {
  movie::MovieTime source, dest;
};

/// So many moments, spread evenly over the length that both movies have; none where one has no length.
std::vector<FrameTimes> spreadTimes(const movie::Movie& source, const movie::Movie& dest, int count);

/// The size in which pictures are compared.
constexpr int comparedWidth = 320, comparedHeight = 240;

/// Pictures of both movies, as many of each.
struct PicturePairs {
  std::vector<movie::Picture> source, dest;
};

/// Decodes them, the sides on a thread each, on copies of the movies. A moment that one side has no picture for is left
/// out; where none is left, the error is the first side's first.
movie::Result<PicturePairs> picturesAt(const movie::Movie& source, const movie::Movie& dest,
                                       const std::vector<FrameTimes>& times);

/// What is asked of pairs that were decoded of two movies, under their descriptions as they stand, edited or not. The
/// pictures are referred to. At least one pair.
Question questionOf(const movie::Movie& source, const movie::Movie& dest, const PicturePairs& pictures);

/// What is to be known besides.
struct Circumstances {
  double tolerance = defaultTolerance;
  bool knownDark = false;  ///< the source's frame
};

/// What is found on them.
Finding findingOn(const movie::Movie& source, const movie::Movie& dest, const PicturePairs& pictures,
                  const Circumstances& circumstances = {});

}  // namespace diagnosis
