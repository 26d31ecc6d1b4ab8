#include "cli/TimeArgument.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <string_view>
#include <vector>

#include "SharedFiles/timecode/QVQuickTime.h"
#include "movie/Movie.h"

namespace cli {
namespace {

using Placed = tl::expected<movie::MovieTime, std::string>;

constexpr double largestExactValue = 9007199254740992.0;  // 2^53
constexpr std::string_view digits = "0123456789";
constexpr std::string_view timecodeCharacters = "0123456789:;.,";

std::string quoted(const std::string& text) {
  return "\"" + text + "\"";
}

bool isTimecode(const std::string& text) {
  return text.find_first_not_of(timecodeCharacters) == std::string::npos &&
         text.find_first_of(digits) != std::string::npos;
}

/// Two digits a field, four fields: what the timecode fields make of everything but 11 typed characters.
bool isFullTimecode(const std::string& text) {
  if (text.size() != 11) return false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const std::string_view allowed = i % 3 == 2 ? std::string_view(":;") : digits;
    if (allowed.find(text[i]) == std::string_view::npos) return false;
  }
  return true;
}

std::optional<double> parsedSeconds(const std::string& text) {
  double seconds = 0;
  const char* end = text.data() + text.size();
  const auto [rest, error] = std::from_chars(text.data(), end, seconds);
  if (error != std::errc() || rest != end || !std::isfinite(seconds)) return std::nullopt;
  return seconds;
}

/// A multiple of the video media's scale, so that frames start on whole units; at most 1 us a unit, so that rounding
/// does not reach into the next frame.
std::int32_t scaleFor(const movie::Movie& movie) {
  constexpr std::int32_t coarsest = 1'000'000;
  const std::vector<const movie::Track*> video = movie.tracksOfMediaType(movie::videoMedia);
  const std::int32_t scale = std::max(video.empty() ? movie.timeScale() : video.front()->media().timeScale(), 1);
  return scale < coarsest ? scale * ((coarsest + scale - 1) / scale) : scale;
}

/// `from`: where the movie's timecodes start, or nothing.
tl::unexpected<std::string> outside(const TimeArgument& argument, const movie::Movie& movie, const std::string& from) {
  char duration[64];
  std::snprintf(duration, sizeof duration, "%.3f", movie::secondsOf(movie.duration()));
  return tl::make_unexpected("The time " + quoted(argument.text) + " is outside " + quoted(movie.path()) +
                             ", which lasts " + duration + " s" + from + ".");
}

Placed placeSeconds(const TimeArgument& argument, const movie::Movie& movie) {
  const double seconds = *argument.seconds;
  const double duration = movie::secondsOf(movie.duration());
  if (seconds < 0 || seconds >= duration) return outside(argument, movie, {});
  const std::int32_t scale = scaleFor(movie);
  // Just before the end, rounding must not reach it.
  const double last = std::ceil(duration * scale) - 1;
  const double value = std::min({std::round(seconds * scale), last, largestExactValue});
  return movie::MovieTime{static_cast<std::int64_t>(value), scale, 0};
}

/// The time of a full timecode. Hours wrap at 24: one from before the movie's start belongs to the day after it.
movie::MovieTime timeOf(const QString& timecode, const movie::Movie& movie) {
  const movie::MovieTime time = QVQuickTime::qtTimeFromTimecode(timecode, &movie);
  if (time.value >= 0) return time;
  constexpr qsizetype hourDigits = 2;
  const int hours = timecode.left(hourDigits).toInt();
  return QVQuickTime::qtTimeFromTimecode(QString::number(hours + 24) + timecode.mid(hourDigits), &movie);
}

Placed placeTimecode(const TimeArgument& argument, const movie::Movie& movie) {
  if (QVQuickTime::fpsForMovie(&movie) <= 0) {
    return tl::make_unexpected("The timecode " + quoted(argument.text) + " means nothing in " + quoted(movie.path()) +
                               ", which has no video frames to count.");
  }
  const QString full = QVQuickTime::completedTimecode(QString::fromStdString(argument.text), &movie);
  if (!isFullTimecode(full.toStdString())) return tl::make_unexpected(quoted(argument.text) + " is no timecode.");
  const movie::MovieTime time = timeOf(full, movie);
  if (time.value < 0 || movie::secondsOf(time) >= movie::secondsOf(movie.duration())) {
    return outside(argument, movie, " from " + QVQuickTime::timecodeAtTime({0, 1, 0}, &movie).toStdString());
  }
  return time;
}

}  // namespace

tl::expected<TimeArgument, std::string> parseTimeArgument(const std::string& text) {
  if (text.find_first_of(":;") != std::string::npos) {
    if (!isTimecode(text)) return tl::unexpected(quoted(text) + " is no timecode");
    return TimeArgument{text, std::nullopt};
  }
  const std::optional<double> seconds = parsedSeconds(text);
  if (!seconds) return tl::unexpected(quoted(text) + " is neither a number of seconds nor a timecode");
  return TimeArgument{text, seconds};
}

tl::expected<movie::MovieTime, std::string> timeInMovie(const TimeArgument& argument, const movie::Movie& movie) {
  return argument.seconds ? placeSeconds(argument, movie) : placeTimecode(argument, movie);
}

}  // namespace cli
