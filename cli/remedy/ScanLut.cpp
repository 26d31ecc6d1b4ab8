#include "cli/remedy/ScanLut.h"

#include <algorithm>

#include "cli/plot/ScanWords.h"
#include "cli/remedy/ScanUndo.h"
#include "diagnosis/Difference.h"
#include "diagnosis/undo/UndoColors.h"
#include "diagnosis/words/CauseWords.h"
#include "diagnosis/words/CodePoints.h"

namespace cli {
namespace {

using diagnosis::ComparedIn;
using diagnosis::Stratum;
using diagnosis::Vector3;

/// Where a table leaves by so many codes of 8 bits more than the recipe does, colours were cut off that count.
constexpr double cutOffCodes = 1;
/// And where it leaves more than this part of the difference, it is of no use.
constexpr double mostLeft = 0.5;

/// The segment that all of the movie is, or a sentence.
tl::expected<const scan::Segment*, std::string> onlySegment(const scan::ScanResult& result) {
  const auto none = [](const char* why) { return tl::unexpected<std::string>(why); };
  const auto segments = segmentsToUndo(result);
  if (!segments) return tl::unexpected(segments.error());
  if (segments->size() > 1) {
    return none("No table is made: parts of the movie need different ones.");
  }
  if (result.segments.size() > 1) {
    return none("No table is made: only a part of the movie needs it, and a table knows of no times.");
  }
  if (result.stopped || result.failure) {
    return none("No table is made: it is not known what the rest of the movie needs.");
  }
  return segments->front();
}

std::string whyNoTable(const diagnosis::Recipe& recipe) {
  if (recipe.hypothesis.relabelling) {
    return "No table is made: only what the file says of its samples is wrong, and no sample has to change.";
  }
  return diagnosis::whyLost(recipe);
}

/// How far the colours are apart once a function was applied to the destination's.
template <typename Undo>
double differenceAfter(std::vector<Stratum> colors, Undo undo) {
  for (Stratum& color : colors) color.dest = undo(color.dest);
  return diagnosis::differenceOf(colors);
}

Vector3 throughTable(const diagnosis::CubeTable& table, const Vector3& dest, const ComparedIn& space) {
  Vector3 rgb = diagnosis::lookedUp(table, diagnosis::product(diagnosis::toRgbMatrix(space.matrix), dest));
  for (double& value : rgb) value = std::clamp(value, 0.0, 1.0);
  return diagnosis::product(diagnosis::fromRgbMatrix(space.matrix), rgb);
}

std::string asDecoded(const diagnosis::SideTags& tags) {
  std::string range = tags.range == diagnosis::SampleRange::Video ? "video range" : "full range";
  if (tags.model != movie::PictureModel::YCbCr) return range;
  return "matrix " + std::string(diagnosis::matrixName(tags.matrixInForce)) + ", " + range;
}

}  // namespace

ScanLut scanLut(const scan::ScanResult& result, const scan::ScanTags& tags, const std::string& path) {
  ScanLut lut{path, "", {}, "", {}};
  const auto only = onlySegment(result);
  lut.why = only ? whyNoTable(*(*only)->recipe) : only.error();
  if (!lut.why.empty()) return lut;
  const scan::Segment& segment = **only;
  const ComparedIn space = diagnosis::comparedIn(tags.source, tags.dest);
  const diagnosis::UndoColors undo(*segment.recipe, space);
  lut.table = diagnosis::cubeTableOf([&](const Vector3& rgb) { return undo.sourceRgbOf(rgb); });
  lut.before = diagnosis::differenceOf(segment.colors);
  lut.after =
      differenceAfter(segment.colors, [&](const Vector3& dest) { return throughTable(lut.table, dest, space); });
  const double left = differenceAfter(segment.colors, [&](const Vector3& dest) { return undo.sourceOf(dest); });
  lut.cutsOff = lut.after > left + cutOffCodes;
  if (lut.cutsOff && lut.after > mostLeft * lut.before) {
    lut.why =
        "No table is made: too many colors of the destination lie beyond black and white, where they are cut off "
        "before a table sees them.";
  }
  lut.title = "Undoes " + diagnosis::causeWords(segment.causes);
  lut.remarks = {"For R'G'B' of the destination, decoded as it is marked: " + asDecoded(tags.dest) + ".",
                 "What comes out is R'G'B' of the source, to be encoded as the file is marked that it goes into."};
  return lut;
}

std::string lutText(const ScanLut& lut) {
  return diagnosis::cubeText(lut.table, lut.title, lut.remarks);
}

std::string lutLine(const ScanLut& lut) {
  if (!lut.why.empty()) return "Table: none. " + lut.why + "\n";
  constexpr const char* cutOffWords =
      ": colors of the destination that lie beyond black and white are cut off before a table sees them.\n";
  const bool isCurve = lut.table.kind == diagnosis::CubeTable::Kind::Curve;
  const std::string points = std::to_string(lut.table.size) + (isCurve ? " points" : " points a side");
  return "Table: " + lut.path + ", " + points + ". With it " + fixedPoint(lut.after, 1) + " codes are left of " +
         fixedPoint(lut.before, 1) + (lut.cutsOff ? cutOffWords : ".\n");
}

}  // namespace cli
