#pragma once

#include <optional>
#include <string>

#include <tl/expected.hpp>

#include "movie/atoms/MovieTime.h"

namespace movie {
class Movie;
}

namespace cli {

/// A time as the command line gives it: seconds, or a timecode to be completed as the window's timecode fields do.
struct TimeArgument {
  std::string text;               ///< as given
  std::optional<double> seconds;  ///< none: the text is a timecode, of digits and separators only
};

/// Seconds are a finite decimal number; a text with a colon or semicolon in it is a timecode, of digits and the
/// separators ":", ";", "." and ",". Error: what is wrong with the text.
tl::expected<TimeArgument, std::string> parseTimeArgument(const std::string& text);

/// The time in that movie. Seconds are rounded to units of at most 1 us, in which the frames of the first video track
/// start on whole units. Error: a sentence that says why the time is none of the movie's, which reaches from 0 up to,
/// not including, its duration.
tl::expected<movie::MovieTime, std::string> timeInMovie(const TimeArgument& argument, const movie::Movie& movie);

}  // namespace cli
