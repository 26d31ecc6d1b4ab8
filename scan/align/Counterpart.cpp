#include "scan/align/Counterpart.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "scan/align/SampledRow.h"
#include "scan/align/Start.h"

namespace scan {
namespace {

/// What is looked for: three bursts have room in it.
constexpr double soughtSeconds = 4;

/// The frames around a time; none where the row ends before or begins after it.
std::optional<FrameRange> framesAround(const FrameRow& row, double time, double reach) {
  const std::size_t frames = row.shape().frames;
  if (time + reach <= row.timeOf(0) || time - reach >= row.timeOf(frames)) return std::nullopt;
  return FrameRange{frameAt(row, time - reach), std::min(frames, frameAt(row, time + reach) + 1)};
}

/// Of the frames next to a time, the one that looks most like a picture; the nearest of equal ones.
std::size_t likestFrame(FrameRow& source, const FrameRange& range, double time, const Beginning& beginning,
                        const Thumbnail& wanted) {
  constexpr std::ptrdiff_t around = 3;
  const diagnosis::Placement& placement = beginning.placement;
  const Signature sought = signatureOf(lumaOf(wanted.signal), placement.dest);
  const auto middle = static_cast<std::ptrdiff_t>(nearestFrame(source, time));
  const auto clamped = [&](std::ptrdiff_t frame) {
    const auto first = static_cast<std::ptrdiff_t>(range.first), last = static_cast<std::ptrdiff_t>(range.end) - 1;
    return static_cast<std::size_t>(std::clamp(frame, first, last));
  };
  std::size_t best = clamped(middle);
  float least = 1e9F;
  for (std::ptrdiff_t step = 0; step <= 2 * around; ++step) {
    const std::ptrdiff_t off = step % 2 == 0 ? step / 2 : -(step + 1) / 2;  // 0, -1, 1, -2, 2...
    const movie::Result<Thumbnail> thumbnail = source.thumbnail(clamped(middle + off));
    if (!thumbnail) continue;
    const Signature signature = signatureOf(lumaOf(thumbnail->signal), placement.source, beginning.exponent);
    const float away = distance(signature, sought);
    if (away < least) least = away, best = clamped(middle + off);
  }
  return best;
}

}  // namespace

Counterpart counterpartOf(FrameRow& source, FrameRow& dest, std::size_t frame, const Stop& stop) {
  const double time = dest.timeOf(frame);
  const auto searched = framesAround(source, time, counterpartReach + soughtSeconds);
  const auto sought = framesAround(dest, time, soughtSeconds);
  if (!searched || !sought) return {};
  SampledRow sourcePart(source, *searched, 1), destPart(dest, *sought, 1);
  const Beginning found = beginningOf(sourcePart, destPart, {.range = {0, sought->count()}}, stop);
  if (found.result == Beginning::Result::Still) return {Counterpart::Result::Still, 0};
  if (found.result == Beginning::Result::NotFound) return {};
  const double there = found.lines.front().at(time);
  const double frameLength = source.shape().rate() > 0 ? 1 / source.shape().rate() : 0;
  if (std::abs(there - time) > counterpartReach + frameLength) return {};
  if (there < source.timeOf(0) - frameLength || there > source.timeOf(source.shape().frames)) return {};
  const movie::Result<Thumbnail> wanted = dest.thumbnail(frame);
  if (!wanted) return {};
  return {Counterpart::Result::Found, likestFrame(source, *searched, there, found, *wanted)};
}

}  // namespace scan
