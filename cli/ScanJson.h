#pragma once

#include <optional>
#include <string>

#include "cli/MovieJson.h"
#include "cli/remedy/ScanFilter.h"
#include "cli/remedy/ScanLut.h"
#include "cli/remedy/ScanProof.h"
#include "scan/Scan.h"

namespace cli {

/// A finished scan, and what it was of.
struct ScanDocument {
  const movie::Movie& source;
  const movie::Movie& dest;
  const scan::MoviePair& rows;
  const scan::ScanResult& result;
  int exitStatus = 0;
  std::optional<ScanFilter> filter = std::nullopt;  ///< where it was asked for
  std::optional<ScanLut> lut = std::nullopt;        ///< the same
  std::optional<ScanProof> proof = std::nullopt;    ///< the same
};

/// Its document, `lumacheck.scan/1`. Times are {"value", "scale", "seconds", "timecode", "frame"}: the timecode is null
/// where the movie has no frame rate, the frame is counted from 0.
JsonValue scanJson(const ScanDocument& document);

/// The document of a scan that could not be made.
JsonValue scanErrorJson(const std::string& message, const std::string& path, int exitStatus);

}  // namespace cli
