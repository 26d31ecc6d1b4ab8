#pragma once

#include <optional>
#include <vector>

#include "movie/Movie.h"

namespace check {

enum class ColorProperty { Gamma, Color, ColorSpace };
enum class PropertyEdit { Set, Remove };

/// What a sync did about one property that differed.
struct PropertyChange {
  ColorProperty property = ColorProperty::Gamma;
  PropertyEdit edit = PropertyEdit::Set;
  movie::OSErr result = movie::noErr;
};

/// What a sync did.
struct SyncOutcome {
  /// Of the destination, before and after; absent when either movie has no video track.
  std::optional<movie::ImageDescription> before, after;
  std::vector<PropertyChange> changes;  ///< in their fixed order; the last one when its setting failed
  bool writtenBack = false;             ///< false when a setting failed: the destination is as it was
};

/// syncMetadata:dest: copies the three colour properties of the first image description of the source's first video
/// track onto the destination's, in memory: what the source lacks is removed. Logs what differs and what failed. A
/// setting that fails ends it with nothing written back; a removal that fails does not, and the removals of colour
/// and profile go by a type that no atom has, so they fail with codecExtensionNotFoundErr: that is settled.
SyncOutcome syncMetadata(const movie::Movie& source, movie::Movie& dest);

/// matchMetadata:dest: writes one fixed colour set (gamma 1.0, NCLC 1-1-1, the sRGB profile) into the first image
/// description of both movies' first video track, in memory. Does nothing when either movie has no video track. A
/// failed write is logged and does not stop the rest. Both movies must be there.
void matchMetadata(movie::Movie& source, movie::Movie& dest);

}  // namespace check
