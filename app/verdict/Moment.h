#pragma once

#include <memory>

#include "movie/Movie.h"

/// What of one side a verdict depends on.
struct SideMoment {
  std::weak_ptr<const void> movie;  ///< which it is
  movie::MovieTime time;            ///< where its playhead is
  movie::Bytes description;         ///< its tags, as edited
};

/// The same of both. A verdict holds as long as nothing of it changes, and again once it is as it was.
struct PairMoment {
  SideMoment source, dest;
};

/// The description that a verdict depends on: of the first video track; empty where there is none.
movie::Bytes describedIn(const movie::Movie& movie);

/// The first thing that has changed.
enum class Change { None, Movie, Tags, Playhead };
Change changeBetween(const SideMoment& then, const SideMoment& now);

/// Whether two instants are the same but for less than half a frame of the quicker movie; a movie without a frame rate
/// counts as one of 24 frames a second.
bool isSameMoment(const movie::Movie& source, const movie::MovieTime& sourceTime, const movie::Movie& dest,
                  const movie::MovieTime& destTime);
