#pragma once

#include "movie/Movie.h"
#include "scan/align/Counterpart.h"

namespace scan {

/// When the source shows what the destination shows at a time.
struct CounterpartTime {
  Counterpart::Result result = Counterpart::Result::NotFound;
  movie::MovieTime time;  ///< the start of that frame; only where it was found
};

/// Looks for it, as counterpartOf(). Works on copies of the movies. Error: one has no picture that could be had.
movie::Result<CounterpartTime> counterpartTime(const movie::Movie& source, const movie::Movie& dest,
                                               const movie::MovieTime& destTime, const Stop& stop = {});

}  // namespace scan
