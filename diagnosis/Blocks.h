#pragma once

#include <vector>

#include "diagnosis/Placement.h"
#include "diagnosis/Signal.h"

namespace diagnosis {

/// Two aligned pictures in means of small blocks. What is told of each block is told of the source's.
struct Blocks {
  Signal source, dest;
  std::vector<float> activity;  ///< how far luma lies from the block's mean, on average
  /// Few enough of its samples lie far from the mean: it hardly depends on where the block lies. There are some of
  /// every level of luma.
  std::vector<bool> calm;
  std::vector<bool> covered;  ///< coveredSamples()
};

/// Blocks of `side` x `side` samples.
Blocks blocksOf(const AlignedPair& pair, int side = 4);

}  // namespace diagnosis
