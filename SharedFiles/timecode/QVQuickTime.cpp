#include "SharedFiles/timecode/QVQuickTime.h"

#include <QStringList>
#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>

#include "SharedFiles/log/LogFormat.h"
#include "SharedFiles/timecode/QVTimecode.h"
#include "movie/atoms/SoundDescription.h"

namespace {

using movie::MovieTime;

constexpr std::uint32_t dropFrameFlag = 1;

/// A whole number as an Integer: held at its ends, 0 for what is no number or has no end.
template <typename Integer>
Integer heldWithin(long double whole) {
  using Limits = std::numeric_limits<Integer>;
  if (!std::isfinite(whole)) return 0;
  if (whole <= static_cast<long double>(Limits::min())) return Limits::min();
  if (whole >= static_cast<long double>(Limits::max())) return Limits::max();
  return static_cast<Integer>(whole);
}

int roundedUp(double fps) {
  return heldWithin<int>(std::ceil(fps));
}
bool isFractional(double fps) {
  return std::ceil(fps) != std::floor(fps);
}

const movie::Track* firstTrack(const movie::Movie* movie, movie::FourCC mediaType) {
  if (movie == nullptr) return nullptr;
  const auto tracks = movie->tracksOfMediaType(mediaType);
  return tracks.empty() ? nullptr : tracks.front();
}

bool isDropFrame(const movie::TimecodeStart& start) {
  return (start.flags & dropFrameFlag) != 0;
}

std::optional<movie::TimecodeStart> timecodeStartOf(const movie::Movie* movie) {
  return movie == nullptr ? std::nullopt : movie->timecodeStart();
}

TimingInfo timingInfoOf(const movie::Movie* movie) {
  const auto start = timecodeStartOf(movie);
  return QVQuickTime::timingInfoForRate(QVQuickTime::fpsForMovie(movie), start && isDropFrame(*start));
}

QString padded(int number) {
  return formatLog("%@%i", number < 10 ? "0" : "", number);
}

/// The names of channel codes that follow one another, with commas between.
struct LabelRange {
  std::uint32_t first;
  const char* names;
};

constexpr std::array<LabelRange, 6> labelRanges = {
    {{1,
      "Left,Right,Center,LFE,Left Surround,Right Surround,Left Center,Right Center,Center Surround,"
      "Left Surround Direct,Right Surround Direct,Top Center Surround,Vertical Height Left,Vertical Height Center,"
      "Vertical Height Right,Top Back Left,Top Back Center,Top Back Right"},
     {33,
      "Rear Surround Left,Rear Surround Right,Left Wide,Right Wide,LFE2,Left Total,Right Total,Hearing Impaired,"
      "Narration,Mono,Dialogue Centric Mix,Center Surround Direct,Haptic"},
     {301, "Headphones Left,Headphones Right"},
     {304, "Click Track,Foreign Language"},
     {400, "Discrete"},
     {65536,
      "Discrete 0,Discrete 1,Discrete 2,Discrete 3,Discrete 4,Discrete 5,Discrete 6,Discrete 7,Discrete 8,"
      "Discrete 9,Discrete 10,Discrete 11,Discrete 12,Discrete 13,Discrete 14,Discrete 15"}}};

}  // namespace

double QVQuickTime::fpsFromQTTrack(const movie::Track* track) {
  if (track == nullptr) return 0.0;
  const movie::Media& media = track->media();
  return fpsFromMedia(media.sampleCount(), media.duration().value, media.timeScale());
}

double QVQuickTime::fpsFromMedia(std::int64_t sampleCount, std::int64_t duration, std::int32_t timeScale) {
  if (sampleCount <= 0 || duration == 0) return 0.0;
  return static_cast<double>(timeScale) * static_cast<double>(sampleCount) / static_cast<double>(duration);
}

double QVQuickTime::fpsForMovie(const movie::Movie* movie) {
  return fpsFromQTTrack(firstTrack(movie, movie::videoMedia));
}

void QVQuickTime::getTimingInfoForMovie(const movie::Movie* movie, int* timebase, bool* ntsc, bool* dropFrame) {
  const TimingInfo info = timingInfoOf(movie);
  if (timebase != nullptr) *timebase = info.timebase;
  if (ntsc != nullptr) *ntsc = info.ntsc;
  if (dropFrame != nullptr) *dropFrame = info.dropFrame;
}

TimingInfo QVQuickTime::timingInfoForRate(double fps, bool dropFrame) {
  for (const int timebase : {30, 24, 60}) {
    if (timebase - 1 < fps && fps < timebase) return {.timebase = timebase, .ntsc = true, .dropFrame = dropFrame};
  }
  return {.timebase = roundedUp(fps), .ntsc = false, .dropFrame = dropFrame};
}

int QVQuickTime::frameCountForTimeValue(long timeValue, long timeScale, double fps) {
  return heldWithin<int>(std::round(static_cast<long double>(timeValue) / static_cast<long double>(timeScale) *
                                    static_cast<long double>(fps)));
}

int QVQuickTime::frameCountForQTTime(const MovieTime& time, const movie::Track* track) {
  return frameCountForTimeValue(time.value, time.scale, static_cast<float>(fpsFromQTTrack(track)));
}

int QVQuickTime::frameCountForQTTime(const MovieTime& time, const movie::Movie* movie) {
  return frameCountForQTTime(time, firstTrack(movie, movie::videoMedia));
}

MovieTime QVQuickTime::qtTimeFromFrame(int frame, long timeScale, double fps) {
  const double value = std::floor(static_cast<double>(timeScale) * (static_cast<double>(frame) / fps));
  return {.value = heldWithin<std::int64_t>(value), .scale = static_cast<std::int32_t>(timeScale)};
}

MovieTime QVQuickTime::qtTimeFromFrame(int frame, const movie::Movie* movie) {
  return qtTimeFromFrame(frame, movie == nullptr ? 0 : movie->timeScale(), fpsForMovie(movie));
}

MovieTime QVQuickTime::lastFrameTimeForMovie(const movie::Movie* movie) {
  if (movie == nullptr) return {};
  const MovieTime duration = movie->duration();
  const int frames = frameCountForQTTime(duration, movie);
  return frames < 1 ? duration : qtTimeFromFrame(frames - 1, movie);
}

std::int64_t QVQuickTime::frameLengthForMovie(const movie::Movie* movie) {
  return movie == nullptr ? 0 : frameLength(movie->duration().scale, fpsForMovie(movie));
}

std::int64_t QVQuickTime::frameLength(std::int32_t timeScale, double fps) {
  return heldWithin<std::int64_t>(std::trunc(static_cast<double>(timeScale) / fps));
}

QString QVQuickTime::formattedQTTime(const MovieTime& time, double fps) {
  if (time.scale < 1) return QStringLiteral("00:00:00:00");
  const auto value = static_cast<std::uint64_t>(time.value);
  const std::uint64_t magnitude = time.value < 0 ? std::uint64_t{0} - value : value;
  const auto scale = static_cast<std::uint64_t>(time.scale);
  const std::uint64_t seconds = magnitude / scale;
  constexpr std::uint64_t mostDays = std::numeric_limits<int>::max();
  const auto hours = static_cast<std::uint32_t>(std::min(seconds / 86400, mostDays) * 24 + seconds / 3600 % 24);
  const double frames = std::round(static_cast<double>(magnitude % scale) / static_cast<double>(scale) * fps);
  return formatLog("%@:%@:%@:%@", padded(static_cast<int>(hours)), padded(static_cast<int>(seconds / 60 % 60)),
                   padded(static_cast<int>(seconds % 60)), padded(heldWithin<int>(frames)));
}

QString QVQuickTime::timecodeAtTime(const MovieTime& time, const movie::Movie* movie) {
  if (const auto start = timecodeStartOf(movie)) {
    const double fps = fpsForMovie(movie);
    const int frame = frameCountForTimeValue(time.value, time.scale, fps);
    const auto number = static_cast<std::uint32_t>(frame) + static_cast<std::uint32_t>(start->frameNumber);
    return QVTimecode::timecodeFromFrameCount(static_cast<int>(number), roundedUp(fps), isFractional(fps),
                                              isDropFrame(*start), 0);
  }
  const TimingInfo timing = timingInfoOf(movie);
  return QVTimecode::timecodeFromFrameCount(frameCountForQTTime(time, movie), timing.timebase, timing.ntsc,
                                            timing.dropFrame, 0);
}

MovieTime QVQuickTime::qtTimeFromTimecode(const QString& timecode, const movie::Movie* movie) {
  const TimingInfo timing = timingInfoOf(movie);
  const auto frameOf = [&](const QString& text, int startFrame) {
    return QVTimecode::frameCountFromTimecode(text, timing.timebase, timing.ntsc, timing.dropFrame, startFrame);
  };
  const int startFrame = frameOf(timecodeAtTime(MovieTime{}, movie), 0);
  return qtTimeFromFrame(frameOf(timecode, startFrame), movie);
}

QString QVQuickTime::completedTimecode(const QString& typed, const movie::Movie* movie) {
  const QString start = timecodeAtTime({.value = 0, .scale = 1}, movie);
  return QVTimecode::timecodeFromUserString(typed, timingInfoOf(movie).dropFrame, start);
}

double QVQuickTime::sampleRateFromQTTrack(const movie::Track* track) {
  if (track == nullptr || track->mediaType() != movie::soundMedia) return 0.0;
  const auto entry = track->media().sampleDescription(1);
  return entry ? movie::soundSampleRate(*entry, track->media().timeScale()) : 0.0;
}

QString QVQuickTime::friendlyAudioChannelLabel(const AudioChannelDescription& description) {
  for (const auto& [first, texts] : labelRanges) {
    const QStringList names = QString::fromLatin1(texts).split(u',');
    const qsizetype index = qsizetype{description.channelLabel} - first;
    if (index >= 0 && index < names.size()) return names[index];
  }
  return QStringLiteral("Unknown");
}
