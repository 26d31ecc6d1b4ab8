#pragma once

#include <cmath>

#include "scan/Scan.h"
#include "tests/scan/PaintedRow.h"

namespace scan::test {

inline ScanResult scannedRows(PaintedRow& source, PaintedRow& dest, const ScanOptions& options = {},
                              const OnProgress& onProgress = {}) {
  return scanned(source, dest, {}, options, onProgress);
}

inline ScanResult scannedMovies(const std::vector<Shown>& source, const std::vector<Shown>& dest,
                                double destRate = 24) {
  PaintedRow sourceRow(source, 24), destRow(dest, destRate);
  return scannedRows(sourceRow, destRow);
}

/// Share of frames that are matched to the right frame of the master, give or take one.
inline double rightShare(const ScanResult& result, const std::vector<Shown>& dest, double masterBegin = 0,
                         double rate = 24) {
  std::size_t right = 0;
  for (std::size_t i = 0; i < result.matches.frames.size(); ++i) {
    const double wanted = (dest[result.matches.first + i].content - masterBegin) * rate;
    const FrameMatch& match = result.matches.frames[i];
    if (match.isMatched() && std::abs(match.source - wanted) <= 1.01) ++right;
  }
  return static_cast<double>(right) / static_cast<double>(dest.size());
}

}  // namespace scan::test
