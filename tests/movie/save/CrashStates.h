#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/SimulatedFile.h"

namespace movie::test {

/// What a machine that stops may leave of a file: everything up to the last fsync, and of what came since any sectors
/// in any state they had, and any of the lengths the file had. Calls `visit` with each prefix of the changes as a whole
/// and with `perPoint` random ones behind each change.
void visitCrashStates(const Bytes& before, const std::vector<SimulatedFile::Change>& changes, std::size_t perPoint,
                      std::mt19937& random, const std::function<void(const Bytes&)>& visit);

/// A movie as a reader of its own sees it, which shares no code with the program.
struct SeenMovie {
  std::vector<Bytes> descriptions;  ///< the entries of the first track's stsd
  Bytes rest;                       ///< the movie atom without its stsd and without any size or `free`
  std::vector<std::pair<std::uint64_t, std::uint64_t>> chunks;
};

/// None, and why, where a reader would stumble.
std::optional<SeenMovie> seenIn(const Bytes& file, std::string& why);

}  // namespace movie::test
