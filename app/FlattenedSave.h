#pragma once

#include <QString>

#include "movie/quicktime/MovieError.h"

class PlayableMovie;
class QWidget;

/// Writes the movie to a file, flattened, and returns when that is done. Works on a thread of its own meanwhile: a
/// sheet on the window shows how far it is, once it takes long, and can cancel it. Main thread only.
movie::Result<void> writeFlattened(const PlayableMovie& movie, const QString& path, QWidget& window);
