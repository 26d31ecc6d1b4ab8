#pragma once

#include <optional>
#include <vector>

#include "diagnosis/Placement.h"
#include "diagnosis/Tags.h"
#include "diagnosis/ToneCurve.h"

namespace diagnosis {

/// What made the destination what it is.
enum class CauseKind {
  Identical,   ///< the same samples, meaning the same
  Same,        ///< the same picture, as near as an encoder leaves it
  Power,       ///< raised to an exponent: a gamma shift
  Range,       ///< video range taken for full range, or the reverse
  Gain,        ///< multiplied and shifted: contrast, brightness, fades
  Tone,        ///< any other change of tone or colour
  Matrix,      ///< Y'CbCr of one matrix taken for another's
  Different,   ///< not the same picture
  Dark,        ///< too dark to tell
  Unreadable,  ///< nothing to tell from: a frame is missing, or has nothing in it to hold on to
};

/// Where a range or a matrix went wrong.
enum class Where {
  Codes,  ///< the samples were converted wrongly, or without need
  Flags,  ///< the samples are as they were; the range that is stated differs
  Tags,   ///< the samples are as they were; the matrix that is stated differs
};

enum class Direction { Darker, Lighter, Compressed, Expanded };

struct Interval {
  double low = 0, high = 0;
};

struct Cause {
  CauseKind kind = CauseKind::Unreadable;
  double confidence = 0;  ///< 0 to 1: of causes given 0.9, nine in ten are right
  /// What differs still once all causes are undone: a mean over colours, in codes of 8 bits (219 from black to white).
  double residual = 0;
  std::optional<double> exponent = std::nullopt;  ///< dest = source ^ exponent, of signals from 0 to 1
  std::optional<Interval> exponentInterval = std::nullopt;
  std::optional<double> gain = std::nullopt;    ///< dest = gain * source + offset
  std::optional<double> offset = std::nullopt;  ///< in codes of 8 bits
  std::optional<Direction> direction = std::nullopt;
  std::optional<Where> where = std::nullopt;
};

/// Whether, and how, the destination lies upon the source.
struct Correspondence {
  double score = 0;  ///< what a ToneFit of the pictures as they were placed explains
  Placement placement;
  bool same = false;
};

/// What is to be done.
enum class Action { Nothing, Sync, ExportAgain, TagDestination, ChooseAnotherFrame, CannotTell };

struct Finding {
  std::vector<Cause> causes;  ///< never empty; the weightiest first
  Correspondence correspondence;
  TagComparison tags;
  bool identicalSamples = false;
  /// Between the pictures as they are meant, in codes of 8 bits: a root mean square over colours, or over the places
  /// where only places differ.
  double difference = 0;
  bool inPlaces = false;  ///< the colours are the same as a whole, but not in places
  std::vector<CurvePoint> curve;
  int frames = 0;           ///< pairs that were looked at
  int darkFrames = 0;       ///< those of them that were left out, since the source is too dark
  int unmatchedFrames = 0;  ///< those of them that do not show the same picture
  /// Where all together are the same: those of them that are not so alone. The causes are then of the one that differs
  /// most.
  int differingFrames = 0;
  /// All frames of two movies were gone through, each with the one that it shows: they need not begin alike.
  bool wholeMovies = false;
  Action action = Action::CannotTell;

  const Cause& main() const { return causes.front(); }
};

/// Below it a cause is not told as the verdict.
constexpr double leastConfidence = 0.5;

/// Whether it can be told at all: not for other pictures, for what is dark or unreadable, or below leastConfidence.
bool isTold(const Finding& finding);
/// Nothing differs: identical or the same, told, and no tag that counts.
bool isAllClear(const Finding& finding);

}  // namespace diagnosis
