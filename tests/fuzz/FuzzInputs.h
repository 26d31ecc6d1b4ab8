#pragma once

#include <cstddef>
#include <string>

#include "movie/atoms/ByteOrder.h"

/// What the fuzzers try, one input at a time. Each function takes any bytes and returns what did not hold, or nothing.
/// The same functions run over the committed inputs as ordinary tests. Used by one thread.
namespace fuzz {

using movie::Bytes;
using movie::ByteView;

/// Inputs that steer an edit or a save begin with that many bytes of choices; the movie file follows.
inline constexpr std::size_t editChoices = 16, saveChoices = 32;

/// Opens a movie file and asks for everything that its atoms tell.
std::string tryAtoms(ByteView input);

/// Edits the colours of a sample description and parses what comes of it: the edit is there and nothing else moved;
/// undone, the first bytes are back.
std::string tryEdit(ByteView input);

/// Saves an edit while system calls fail and the machine stops: every state of the file is a movie with the old or the
/// new metadata and its own media data, and can be saved again.
std::string trySave(ByteView input);

/// Writes a flattened copy: it holds every sample, or there is none.
std::string tryFlattened(ByteView input);

/// Reads a property list, writes and reads it again, and lets user defaults stand in such a file.
std::string tryPropertyList(ByteView input);

/// Reads a file that a scan is kept in, as it is and with right sums: what can be gone on with is written and read
/// again.
std::string tryResume(ByteView input);

}  // namespace fuzz
