#pragma once

#include <string>
#include <vector>

#include "diagnosis/Finding.h"
#include "tests/diagnosis/exports/Pairs.h"

namespace diagnosis::test {

/// A pair, what was found, and what to think of it.
struct Judgement {
  ExportPair pair;
  Finding finding;
  /// Between the pictures as they are meant, measured without the diagnosis: a root mean square over 16 x 12 parts, of
  /// luma and half of each chroma signal, in codes of 8 bits. What covers the export is left out.
  double difference = 0;
  /// Whether the cause that is told first is one of the true ones.
  bool right = false;
  /// Not where a change is so small that the pair might as well be called the same, nor where a right conversion had to
  /// clip so much that it is the same no longer.
  bool counts = true;
  double milliseconds = 0;   ///< that the diagnosis took of a pair of decoded pictures
  std::string trouble = {};  ///< what keeps the pair from being one: an export that is not what its recipe says
};

/// Smaller changes are not asked to be told by their cause; unchanged pictures that differ by more are not asked to be
/// told the same.
constexpr double leastDifference = 1.5, mostDifference = 2;

bool isUnchanged(const Truth& truth);
std::string nameOf(CauseKind kind);
std::string nameOf(const Truth& truth);  ///< all its causes

/// Opens both movies and diagnoses their first frames.
Judgement judged(const ExportPair& pair);

/// Makes and judges everything, on two threads, in the order of the batches. What cannot be made is told in `troubles`.
std::vector<Judgement> judgedAll(const std::vector<Batch>& batches, std::vector<std::string>& troubles);

}  // namespace diagnosis::test
