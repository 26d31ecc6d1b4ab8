#include "app/verdict/Moment.h"

#include <algorithm>
#include <cmath>

#include "SharedFiles/timecode/QVQuickTime.h"
#include "check/ColorInfo.h"

movie::Bytes describedIn(const movie::Movie& movie) {
  const auto tracks = movie.tracksOfMediaType(movie::videoMedia);
  return tracks.empty() ? movie::Bytes() : check::firstDescription(tracks.front()->media()).bytes();
}

Change changeBetween(const SideMoment& then, const SideMoment& now) {
  const bool isOther = then.movie.owner_before(now.movie) || now.movie.owner_before(then.movie);
  if (isOther) return Change::Movie;
  if (then.description != now.description) return Change::Tags;
  return movie::compareTimes(then.time, now.time) == 0 ? Change::None : Change::Playhead;
}

bool isSameMoment(const movie::Movie& source, const movie::MovieTime& sourceTime, const movie::Movie& dest,
                  const movie::MovieTime& destTime) {
  constexpr double usualRate = 24;
  const double quicker = std::max(QVQuickTime::fpsForMovie(&source), QVQuickTime::fpsForMovie(&dest));
  const double frame = 1 / (quicker > 0 ? quicker : usualRate);
  return std::abs(movie::secondsOf(sourceTime) - movie::secondsOf(destTime)) < frame / 2;
}
