#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "tests/scan/exports/Recipes.h"

namespace scan::test {

/// What is told of a segment's cause, and whether it is so.
struct ToldCause {
  double confidence = 0;
  bool isRight = false;
};

/// What was found of one export, held against the truth.
struct ScanVerdict {
  std::string name;
  Half half = Half::Fit;
  bool isHard = false;         ///< as the recipe has it
  bool toBeRefused = false;    ///< other pictures
  bool refusedRightly = true;  ///< refused if and only if it is to be
  double rightShare = 1;       ///< of moving frames, that are within one frame of the truth
  double unmatchedShare = 0;   ///< of frames that show the master
  double exponentError = 0;    ///< the largest of a stretch of one exponent
  double cutError = 0;         ///< the largest between a change of exponent and the segment's end, in frames
  int falseSegments = 0;       ///< changes that are told and are none
  double regionError = 0;      ///< the largest of a side
  bool causeRight = true, identicalRight = true;
  std::vector<ToldCause> segments = {};
  double seconds = 0;     ///< that the scan took
  std::string told = {};  ///< in a few words

  bool mapRight() const { return rightShare >= 0.98 && unmatchedShare <= 0.1; }
  bool exponentsRight() const { return exponentError <= 0.01; }
  bool cutsRight() const { return cutError <= 2; }
  bool regionRight() const { return regionError <= 0.004; }
};

ScanVerdict verdictOn(const Master& master, const ScanRecipe& recipe);

/// What is wrong of one, by name; nothing where all is right.
void printWrong(std::ostream& out, const ScanVerdict& verdict);

/// Without the hard ones.
std::vector<ScanVerdict> thatCount(std::vector<ScanVerdict> verdicts);

/// The shares of what is right of those that count, and how far confidences of all can be relied on.
void printScans(std::ostream& out, const std::string& title, const std::vector<ScanVerdict>& verdicts);

}  // namespace scan::test
