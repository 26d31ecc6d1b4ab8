#pragma once

#include <string>
#include <vector>

#include "diagnosis/undo/CubeTable.h"
#include "scan/Scan.h"

namespace cli {

/// The lookup table that undoes what was found, for the destination in R'G'B'; or, where there is none, a sentence why.
struct ScanLut {
  std::string path;  ///< of its file, as it was given
  std::string why;   ///< empty where there is a table
  diagnosis::CubeTable table;
  std::string title;
  std::vector<std::string> remarks;  ///< what it is to be applied to
  /// How far the colours of both sides are apart, in codes of 8 bits: as they are, and once they went through the
  /// table.
  double before = 0, after = 0;
  bool cutsOff = false;  ///< whether much of what is left is that: colours beyond black and white
};

ScanLut scanLut(const scan::ScanResult& result, const scan::ScanTags& tags, const std::string& path);

/// The .cube file. There is a table.
std::string lutText(const ScanLut& lut);

/// The line that tells of it.
std::string lutLine(const ScanLut& lut);

}  // namespace cli
