#pragma once

#include <QSizeF>

#include "movie/Movie.h"

/// The proportions a movie is shown in: those of its first video track, turned as the track's matrix says. Empty
/// without a video track.
QSizeF shapeOf(const movie::Movie& movie);

/// The beginning of the frame that is on screen at a time; the time itself where the movie has no pictures.
movie::MovieTime frameStart(const movie::Movie& movie, const movie::MovieTime& time);

/// The beginning of the frame so many frames later (earlier, below 0) than the one on screen at a time, at the utmost
/// the first or the last.
movie::MovieTime frameAway(const movie::Movie& movie, const movie::MovieTime& time, int frames);

/// The same for whole seconds: the beginning of the frame on screen then.
movie::MovieTime secondsAway(const movie::Movie& movie, const movie::MovieTime& time, int seconds);
