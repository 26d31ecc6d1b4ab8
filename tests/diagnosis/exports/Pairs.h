#pragma once

#include <string>
#include <vector>

#include "tests/diagnosis/exports/Clips.h"
#include "tests/diagnosis/exports/Masters.h"
#include "tests/diagnosis/exports/Recipe.h"

namespace diagnosis::test {

/// One export beside its master.
struct ExportPair {
  std::string name;  ///< of the recipe, and of what it was made of
  Half half = Half::Fit;
  Recipe recipe;
  std::string source, dest;  ///< paths
};

/// Exports that are made of one master in one run of ffmpeg.
struct Batch {
  Half half = Half::Fit;
  std::string label;  ///< of the clip or movie
  MovieMaker source;  ///< the master's path
  MovieMaker shown;   ///< of what the exports are made: as a rule the same
  std::vector<Recipe> recipes;
};

/// All recipes, each on one clip of each half or on all, and those for existing movies on them. Of `only`, where it is
/// not empty, the pairs whose names contain it.
std::vector<Batch> batches(const std::string& only);

std::string pairName(const Batch& batch, const Recipe& recipe);

/// Makes the movies of a batch, as far as they are not there.
std::vector<ExportPair> made(const Batch& batch);

}  // namespace diagnosis::test
