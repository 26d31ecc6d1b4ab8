#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include <nlohmann/json_fwd.hpp>

#include "movie/Movie.h"

namespace cli {

using JsonValue = nlohmann::ordered_json;

/// 16.16 as a number, rounded to four decimals: 144179 is 2.2.
double gammaNumber(std::int32_t fixed);

// A colour property of an image description; null for one that is absent.
JsonValue gammaJson(const std::optional<std::int32_t>& fixed);
JsonValue colorJson(const std::optional<movie::NclcParameters>& color);
JsonValue profileJson(const std::optional<movie::Bytes>& profile);

/// What the first image description of the movie's first video track says: {"path", "size", "codec", "gamma",
/// "gammaFixed", "color", "profile", "imageDescriptions"}; what is absent is null. No frame is decoded.
JsonValue jsonOf(const movie::Movie& movie);

/// The same with "time" and "timecode" after "path". The timecode is null where the movie has no frame rate.
JsonValue jsonOf(const movie::Movie& movie, const movie::MovieTime& time);

/// {"message", "path"}
JsonValue jsonOf(const movie::MovieError& error);

/// The document as text, indented, with a line break at its end. Bytes that are not UTF-8 come out as U+FFFD.
std::string textOf(const JsonValue& document);

}  // namespace cli
