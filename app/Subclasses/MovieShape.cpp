#include "app/Subclasses/MovieShape.h"

#include <algorithm>
#include <cstdlib>

#include "movie/render/Orientation.h"

namespace {

constexpr double fixedOne = 0x10000;

}  // namespace

QSizeF shapeOf(const movie::Movie& movie) {
  const auto tracks = movie.tracksOfMediaType(movie::videoMedia);
  if (tracks.empty()) return {};
  const movie::TrackInfo& info = tracks.front()->info();
  QSizeF shape(info.width / fixedOne, info.height / fixedOne);
  const auto description = tracks.front()->media().imageDescription(1);
  if (shape.isEmpty() && description) shape = QSizeF(description->width(), description->height());
  return movie::orientationOf(info.matrix).transposed ? shape.transposed() : shape;
}

movie::MovieTime frameStart(const movie::Movie& movie, const movie::MovieTime& time) {
  const auto span = movie.frameSpanAt(time);
  return span ? span->start : time;
}

movie::MovieTime frameAway(const movie::Movie& movie, const movie::MovieTime& time, int frames) {
  auto span = movie.frameSpanAt(time);
  if (!span) return time;
  const auto neighbour = [&] {
    return frames > 0 ? movie.frameSpanAfter(span->start) : movie.frameSpanBefore(span->start);
  };
  for (int left = std::abs(frames); left > 0; --left) {
    const auto next = neighbour();
    if (!next) break;
    span = next;
  }
  return span->start;
}

movie::MovieTime secondsAway(const movie::Movie& movie, const movie::MovieTime& time, int seconds) {
  const movie::MovieTime length = movie.duration();
  const movie::MovieTime here = movie::timeScaled(time, length.scale);
  const std::int64_t wanted = here.value + std::int64_t{seconds} * length.scale;
  return frameStart(movie, {.value = std::clamp<std::int64_t>(wanted, 0, length.value), .scale = length.scale});
}
