#pragma once

#include <cstdint>
#include <optional>

#include "movie/atoms/ImageDescription.h"

namespace movie {
class Media;
}

namespace check {

/// The colour info record: the 10-byte NCLC value.
using ColorInfo = movie::NclcParameters;

/// zeroColorInfo: sets every field to 0 and returns its argument.
ColorInfo* zeroColorInfo(ColorInfo* info);

/// colorInfoCompare: 0 when all four fields are equal, else -1. Logs both records first, eight lines.
int colorInfoCompare(ColorInfo source, ColorInfo dest);

/// Whether any of the four fields is not 0.
bool isColorInfoSet(const ColorInfo& info);

/// The first image description of a media; one that says nothing where the media has none.
movie::ImageDescription firstDescription(const movie::Media& media);

/// What a description says of its colours; all 0 where it says nothing.
ColorInfo colorInfoOf(const movie::ImageDescription& description);

/// A gamma level as it is compared and shown: 16.16 fixed point in single precision; 0 when absent.
float gammaLevel(std::optional<std::int32_t> fixed);

}  // namespace check
