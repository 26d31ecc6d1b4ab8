#pragma once

#include <QString>
#include <functional>
#include <string>

#include "movie/Movie.h"

class PlayableMovie;
class QWidget;

/// What writes a movie into a file, as Movie::writeToFile does. Called on a thread of its own.
using CopyWriter = std::function<movie::Result<void>(movie::Movie& movie, const std::string& path,
                                                     const movie::CopyProgress& progress)>;

/// A copy that was written.
struct WrittenCopy {
  bool outranCancelling = false;  ///< it was complete before it could be cancelled
};

/// Writes the movie to a file, flattened, under a BusySheet, and returns when that is done. The movie itself goes on
/// with the file that it has open, also where that one is replaced. Main thread only.
movie::Result<WrittenCopy> writeFlattened(const PlayableMovie& movie, const QString& path, QWidget& window,
                                          const CopyWriter& write);
