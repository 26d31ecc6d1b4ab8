#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include <nlohmann/json_fwd.hpp>

#include "movie/Movie.h"

namespace cli {

using Json = nlohmann::ordered_json;

struct ProfileFacts {
  std::size_t bytes = 0;
  std::string sha256;       ///< lower-case hex
  std::string description;  ///< UTF-8; empty when it has none
};

/// What the first image description of a movie's first video track says.
struct DescriptionFacts {
  std::uint16_t width = 0, height = 0;  ///< as encoded
  std::string codec;
  std::optional<std::int32_t> gammaFixed;  ///< 16.16
  std::optional<movie::NclcParameters> color;
  std::optional<ProfileFacts> profile;
};

struct MovieFacts {
  std::string path;  ///< as given, raw bytes
  bool hasVideo = false;
  std::size_t imageDescriptions = 0;            ///< of the first video track
  std::optional<DescriptionFacts> description;  ///< absent without a video track or an image description
  double duration = 0;                          ///< seconds
  double framesPerSecond = 0;                   ///< 0 when unknown
};

DescriptionFacts factsOf(const movie::ImageDescription& description);

/// Reads the movie's atoms only; no frame is decoded.
MovieFacts factsOf(const movie::Movie& movie);

/// 16.16 as a number, rounded to four decimals: 144179 is 2.2.
double gammaNumber(std::int32_t fixed);

Json jsonOf(const movie::NclcParameters& color);
Json jsonOf(const ProfileFacts& profile);

/// {"path", "size", "codec", "gamma", "gammaFixed", "color", "profile", "imageDescriptions"}; what is absent is null.
Json jsonOf(const MovieFacts& facts);

/// The same with "time" and "timecode" after "path". The timecode is null where the movie has no frame rate.
Json jsonOf(const MovieFacts& facts, const movie::Movie& movie, const movie::MovieTime& time);

/// {"message", "path"}
Json jsonOf(const movie::MovieError& error);

/// The document as text, indented, with a line break at its end. Bytes that are not UTF-8 come out as U+FFFD.
std::string textOf(const Json& document);

}  // namespace cli
