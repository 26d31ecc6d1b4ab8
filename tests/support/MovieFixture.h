#pragma once

#include <string>
#include <vector>

namespace movie::test {

/// The path of a file that `ffmpeg -nostdin -v error -y <ffmpegArguments> <path>` makes, made now unless it stands
/// already. Kept between runs in LUMACHECK_FIXTURE_DIR under a name that holds `name`'s stem, a hash of the arguments
/// and `name`'s extension, which tells ffmpeg the format. The arguments may name other fixtures. Any number of
/// processes and threads may ask for the same file at once; it appears whole or not at all. Treat it as read-only: copy
/// it before changing it. An ffmpeg that fails throws std::runtime_error with the command and what it said, so the test
/// fails with that text.
std::string fixtureMovie(const std::string& name, const std::vector<std::string>& ffmpegArguments);

/// The same for any program whose last argument is the file to write. `program` is looked up in PATH.
std::string fixtureFile(const std::string& name, const std::string& program, const std::vector<std::string>& arguments);

/// What ffmpeg makes of an input: a file's name and what to do for it.
struct FixtureOutput {
  std::string name;
  std::vector<std::string> arguments;
};

/// Several files of one input, as fixtureMovie() would make each with `-i input` and its arguments, in one run of
/// ffmpeg: starting it takes longer than many an encoding. Their paths, in their order.
std::vector<std::string> fixtureMovies(const std::string& input, const std::vector<FixtureOutput>& outputs);

/// The movies in LUMACHECK_REAL_MOVIES, a folder of ones by other writers, sorted; none when there is no such folder.
std::vector<std::string> realMovies();
/// Why realMovies() are none: for GTEST_SKIP(), so that a run without them does not pass for one with them.
std::string whyNoRealMovies();

}  // namespace movie::test
