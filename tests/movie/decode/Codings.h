#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace movie::test {

/// A way to encode a test movie with ffmpeg.
struct Coding {
  const char* name;
  const char* extension;
  std::vector<std::string> options;
};

void PrintTo(const Coding& coding, std::ostream* stream);

/// The path of ten seconds, or what the options leave of them, of a moving picture of 160 x 120 at 25 frames a second.
std::string movieOf(const Coding& coding);

/// Everything about the order of frames and the places to start from that a decoder can get wrong, codec by codec.
std::vector<Coding> codings();

}  // namespace movie::test
