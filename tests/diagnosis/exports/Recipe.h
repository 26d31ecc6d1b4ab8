#pragma once

#include <optional>
#include <string>
#include <vector>

#include "diagnosis/Finding.h"
#include "tests/diagnosis/exports/Encoding.h"

namespace diagnosis::test {

/// A movie that is exported: what a picture is encoded as.
struct Master {
  std::string name;
  Encoding encoding;
  Colors colors;             ///< of its samples, and stated
  std::string filters = {};  ///< what is done to the picture, of rgbFormat, before; may be empty
  bool stated = true;        ///< otherwise it says nothing of its colours
};

/// What an export differs in, by the way it is made.
struct Truth {
  std::vector<CauseKind> causes;  ///< any of them may be told first
  std::optional<double> exponent = std::nullopt;
  std::optional<Direction> direction = std::nullopt;
  std::optional<Where> where = std::nullopt;
};

Truth same();
Truth power(std::optional<double> exponent);
Truth range(Direction direction, std::optional<Where> where);
Truth matrix(std::optional<Where> where);
Truth only(CauseKind kind);
Truth both(CauseKind one, CauseKind other);

/// Which pictures an export is made of. What a curve does to shadows alone may be a mere gain.
enum class Needs { Any, Colorful, AllTones };

/// What the export shows instead of its master's picture.
enum class Shows { Master, AnotherClip, LaterMoment };

/// How an export is made, and what it then is.
struct Recipe {
  std::string name;
  Master master;
  Truth truth;
  std::string filters;  ///< from the master's samples to the export's
  Encoding encoding;
  std::optional<Colors> tags;               ///< what the export says; nothing where none are given
  std::vector<std::string> arguments = {};  ///< further ones, of the output
  Needs needs = Needs::Any;
  Shows shows = Shows::Master;
  bool everyClip = false;    ///< otherwise one of each half
  Placement placement = {};  ///< of the master's picture upon the export's
  double covered = 0;        ///< share of the export that something else covers, such as a subtitle
};

/// ffmpeg's filters and arguments that make the export.
std::vector<std::string> argumentsOf(const Recipe& recipe);
/// Those that make the master of a picture in RGB.
std::vector<std::string> argumentsOf(const Master& master);

/// An export whose samples stay what they mean: converted between ranges, matrices and RGB as it should be. `through`,
/// further filters, work on the export's own samples.
Recipe rightExport(const std::string& name, const Master& master, const Encoding& encoding, const Colors& colors,
                   const std::string& through = "");

/// An export that filters changed on the way, on R'G'B'.
Recipe changedInRgb(const std::string& name, const Truth& truth, const Master& master, const Encoding& encoding,
                    const Colors& colors, const std::string& filters);

// The families of recipes.
std::vector<Recipe> unchangedRecipes();  ///< encoded, converted, retagged rightly
std::vector<Recipe> placedRecipes();     ///< scaled, cropped, in bars, mirrored, covered in part
std::vector<Recipe> powerRecipes();
std::vector<Recipe> gainRecipes();
std::vector<Recipe> toneRecipes();
std::vector<Recipe> rangeRecipes();
std::vector<Recipe> matrixRecipes();
std::vector<Recipe> twofoldRecipes();       ///< two causes at once
std::vector<Recipe> uncommonRecipes();      ///< of high dynamic range, in fields, with alpha
std::vector<Recipe> incomparableRecipes();  ///< other pictures, dark ones, ones of one colour
std::vector<Recipe> allRecipes();

/// Of a movie that exists already: a few of every family that its samples allow.
std::vector<Recipe> recipesFor(const Master& movie);

// The masters.
Master proResMaster();
Master h264Master();
Master pngMaster();
Master cineFormRgbMaster();
Master fullRangeMaster();
Master sdMaster();        ///< ProRes with 601 samples
Master mpeg2Master();     ///< 8 bits with 601 samples
Master untaggedMaster();  ///< 601 samples, as small pictures without a word count
Master tenBitMaster();
Master v210Master();
Master pqMaster();          ///< light of up to 1000 cd/m2 in SMPTE ST 2084
Master interlacedMaster();  ///< its second field a little later than its first
Master alphaMaster();       ///< ProRes that fades out to the left
Master alphaRgbMaster();

}  // namespace diagnosis::test
