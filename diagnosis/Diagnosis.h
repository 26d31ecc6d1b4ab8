#pragma once

#include <vector>

#include "diagnosis/Finding.h"
#include "diagnosis/Signal.h"
#include "movie/decode/Picture.h"

namespace diagnosis {

/// The same moment of both movies: pictures of one size, whatever their shape (320 x 240), turned as they are shown.
struct FramePair {
  const movie::Picture* source = nullptr;
  const movie::Picture* dest = nullptr;
};

constexpr double defaultTolerance = 2.0;

struct Question {
  std::vector<FramePair> frames;  ///< at least one
  SideTags source, dest;
  bool knownDark = false;               ///< a check of the source's frame found it too dark already
  double tolerance = defaultTolerance;  ///< how far, in codes of 8 bits, the same picture may differ
};

/// What pictures under these tags are compared in: the destination's matrix, of an RGB one the source's, since its luma
/// is what both sides are compared by.
ComparedIn comparedIn(const SideTags& source, const SideTags& dest);

/// What was done to the destination. A pure function; some 2 ms a pair that lies plainly, up to 4 where one has to be
/// placed upon the other first, or where nothing known explains it (bench_diagnosis). Natural pictures that have to be
/// placed by their colours too, or are other ones, take up to 8; nearly twice that where the place that is found turns
/// out to be one by chance, since all is done once more as they lie.
Finding diagnose(const Question& question);

/// What is to be told where a frame could not be had.
Finding unreadable(const TagComparison& tags);

}  // namespace diagnosis
