#pragma once

#include <optional>
#include <string>
#include <vector>

#include "diagnosis/Finding.h"
#include "tests/scan/exports/Masters.h"

namespace scan::test {

/// A stretch of an export that shows the master: source time = rate * time + offset, all in seconds.
struct TruePiece {
  double from = 0, to = 0, rate = 1, offset = 0;
};

/// A stretch of an export, and the exponent that it is raised to.
struct TrueTone {
  double from = 0, to = 0, exponent = 1;
};

/// What an export is, by the way it is made.
struct ScanTruth {
  bool isRefused = false;  ///< it does not show the master
  std::vector<TruePiece> pieces;
  std::vector<TrueTone> tones = {};                                         ///< none: not one exponent
  std::vector<diagnosis::CauseKind> causes = {diagnosis::CauseKind::Same};  ///< any may be told first
  std::optional<diagnosis::Region> part = std::nullopt;                     ///< of the master, that is seen
  bool isIdentical = false;
};

struct ScanRecipe {
  std::string name;
  std::vector<std::string> arguments;  ///< of ffmpeg, behind the master
  ScanTruth truth;
  bool everyMaster = false;  ///< otherwise one of each half, in turns
  std::string extension = ".mp4";
  bool isHard = false;  ///< so badly encoded that not all can be told: only confidences are held against it
};

std::vector<ScanRecipe> scanRecipes();

}  // namespace scan::test
