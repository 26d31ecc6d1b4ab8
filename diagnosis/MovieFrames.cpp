#include "diagnosis/MovieFrames.h"

#include <algorithm>
#include <cmath>
#include <future>
#include <optional>
#include <utility>

namespace diagnosis {
namespace {

movie::MovieTime timeAt(const movie::Movie& movie, double second) {
  return {std::llround(std::floor(second * movie.timeScale())), movie.timeScale(), 0};
}

using Pictures = std::vector<movie::Result<movie::Picture>>;

Pictures picturesOf(const movie::Movie& movie, const std::vector<FrameTimes>& times,
                    movie::MovieTime FrameTimes::*side) {
  const std::unique_ptr<movie::Movie> copy = movie.copy();
  Pictures pictures;
  for (const FrameTimes& each : times) {
    pictures.push_back(copy->pictureAtTime(each.*side, comparedWidth, comparedHeight));
  }
  return pictures;
}

/// Of a movie that a picture was had from, which therefore has a description.
SideTags tagsOfMovie(const movie::Movie& movie, const movie::Picture& picture) {
  return tagsOf(*movie.tracksOfMediaType(movie::videoMedia).front()->media().imageDescription(1), picture);
}

}  // namespace

std::vector<FrameTimes> spreadTimes(const movie::Movie& source, const movie::Movie& dest, int count) {
  const double length = std::min(movie::secondsOf(source.duration()), movie::secondsOf(dest.duration()));
  std::vector<FrameTimes> times;
  for (int i = 0; i < count && length > 0; ++i) {
    const double second = length * (i + 0.5) / count;
    times.push_back({timeAt(source, second), timeAt(dest, second)});
  }
  return times;
}

movie::Result<PicturePairs> picturesAt(const movie::Movie& source, const movie::Movie& dest,
                                       const std::vector<FrameTimes>& times) {
  std::future<Pictures> ofSource = std::async(std::launch::async | std::launch::deferred,
                                              [&] { return picturesOf(source, times, &FrameTimes::source); });
  Pictures dests = picturesOf(dest, times, &FrameTimes::dest);
  Pictures sources = ofSource.get();
  PicturePairs pairs;
  std::optional<movie::MovieError> error;
  for (std::size_t i = 0; i < times.size(); ++i) {
    if (sources[i] && dests[i]) {
      pairs.source.push_back(std::move(*sources[i]));
      pairs.dest.push_back(std::move(*dests[i]));
    } else if (!error) {
      error = std::move(sources[i] ? dests[i].error() : sources[i].error());
    }
  }
  if (pairs.source.empty() && error) return tl::unexpected(std::move(*error));
  return pairs;
}

Question questionOf(const movie::Movie& source, const movie::Movie& dest, const PicturePairs& pictures) {
  Question question;
  for (std::size_t i = 0; i < pictures.source.size(); ++i) {
    question.frames.push_back({&pictures.source[i], &pictures.dest[i]});
  }
  question.source = tagsOfMovie(source, pictures.source.front());
  question.dest = tagsOfMovie(dest, pictures.dest.front());
  return question;
}

Finding findingOn(const movie::Movie& source, const movie::Movie& dest, const PicturePairs& pictures,
                  const Circumstances& circumstances) {
  Question question = questionOf(source, dest, pictures);
  question.tolerance = circumstances.tolerance;
  question.knownDark = circumstances.knownDark;
  return diagnose(question);
}

}  // namespace diagnosis
