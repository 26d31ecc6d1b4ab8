#pragma once

#include <string>

namespace movie::test {

// Movies of a second with all colour tags, made at the first call.

/// A source of ffmpeg in soft tones.
extern const std::string softTones;
/// Such a source through a filter.
std::string encodedMovie(const std::string& name, const std::string& source, const std::string& filter,
                         const std::string& gamma);

/// The soft tones as they are, and changed.
std::string plainMovie();
std::string retaggedMovie();  ///< the same samples under another gamma
std::string darkerMovie();    ///< luma raised to 1.25
std::string fadingMovie();    ///< begins black
std::string blackMovie();
std::string brightMovie();  ///< all of it nearly white: another picture
std::string soundMovie();   ///< without pictures

}  // namespace movie::test
