#pragma once

#include <string>
#include <vector>

#include "movie/atoms/ChunkTables.h"
#include "movie/atoms/ReadableFile.h"

namespace movie {

/// The file names that a data reference gives, folders left out, the likeliest first; empty when it gives none. An
/// alias names its file as a POSIX path, in UTF-16, and in up to 31 bytes of an older encoding. Source: QTFF "Data
/// reference atoms"; the alias record as the file manager's interfaces lay it down.
std::vector<std::string> fileNamesOf(const DataReference& reference);

/// Opens the media file that a reference names, in the folder of `movie` and nowhere else: what a movie names may be
/// any file of the machine. Where the movie's name is a symbolic link the folder of the file that it leads to serves
/// too. Error: it is not there (the error's reason names it), or it is none that can be read.
Result<ReadableFile> openBeside(const ReadableFile& movie, const DataReference& reference);

}  // namespace movie
