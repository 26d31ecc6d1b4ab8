#include "scan/CounterpartTime.h"

#include "scan/Scan.h"

namespace scan {

movie::Result<CounterpartTime> counterpartTime(const movie::Movie& source, const movie::Movie& dest,
                                               const movie::MovieTime& destTime, const Stop& stop) {
  TRY(const MoviePair rows, pairOf(source, dest));
  if (rows.source->shape().frames == 0 || rows.dest->shape().frames == 0) return CounterpartTime();
  const std::size_t frame = frameAt(*rows.dest, movie::secondsOf(destTime));
  const Counterpart found = counterpartOf(*rows.source, *rows.dest, frame, stop);
  if (found.result != Counterpart::Result::Found) return CounterpartTime{found.result, {}};
  return CounterpartTime{found.result, rows.source->movieTimeOf(found.frame)};
}

}  // namespace scan
