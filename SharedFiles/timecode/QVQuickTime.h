#pragma once

#include <QString>
#include <array>
#include <cstdint>

#include "movie/Movie.h"

/// A channel of an audio layout. Only the label is looked at.
struct AudioChannelDescription {
  std::uint32_t channelLabel = 0;
  std::uint32_t channelFlags = 0;
  std::array<float, 3> coordinates{};
};

/// How a movie's frames are numbered.
struct TimingInfo {
  int timebase = 30;
  bool ntsc = true;
  bool dropFrame = true;

  friend bool operator==(const TimingInfo&, const TimingInfo&) = default;
};

/// Frame numbers, rates and timecodes of movies. A movie's video track is its first track of video type; a null movie
/// or track counts as one without media. Rates are frames a second, unrounded: an average where frames differ in
/// length.
///
/// No operation fails: what is missing gives a rate of 0.0, frame 0 and the zero time. A division by a rate or a scale
/// of 0 gives 0 as well; a number too large for its type is held at that type's end. Without state; a movie given is
/// used by the calling thread alone while a call lasts.
class QVQuickTime final {
 public:
  QVQuickTime() = delete;

  // Rates and settings.

  /// fpsFromQTTrack: sample count over media duration.
  static double fpsFromQTTrack(const movie::Track* track);
  /// The same for a media's numbers; duration in units of the time scale.
  static double fpsFromMedia(std::int64_t sampleCount, std::int64_t duration, std::int32_t timeScale);
  /// fpsForMovie:
  static double fpsForMovie(const movie::Movie* movie);
  /// getTimingInfoForMovie:timebase:ntsc:dropFrame: each result is stored where its pointer is not null. Drop frame is
  /// what the first timecode track says, never inferred from the rate.
  static void getTimingInfoForMovie(const movie::Movie* movie, int* timebase, bool* ntsc, bool* dropFrame);
  /// The same for a rate: strictly between 23 and 24, 29 and 30, 59 and 60 is NTSC.
  static TimingInfo timingInfoForRate(double fps, bool dropFrame);

  // Times and frame numbers.

  /// frameCountForTimeValue:timeScale:frameRate: rounded half away from 0.
  static int frameCountForTimeValue(long timeValue, long timeScale, double fps);
  /// frameCountForQTTime:qtTrack: at the track's rate in single precision.
  static int frameCountForQTTime(const movie::MovieTime& time, const movie::Track* track);
  /// frameCountForQTTime:qtMovie:
  static int frameCountForQTTime(const movie::MovieTime& time, const movie::Movie* movie);
  /// qtTimeFromFrame:timeScale:frameRate: rounded down.
  static movie::MovieTime qtTimeFromFrame(int frame, long timeScale, double fps);
  /// qtTimeFromFrame:movie:
  static movie::MovieTime qtTimeFromFrame(int frame, const movie::Movie* movie);
  /// lastFrameTimeForMovie: the duration itself where that is less than a frame.
  static movie::MovieTime lastFrameTimeForMovie(const movie::Movie* movie);
  /// frameLengthForMovie: in units of the movie's time scale, truncated.
  static std::int64_t frameLengthForMovie(const movie::Movie* movie);
  /// The same for a time scale and a rate.
  static std::int64_t frameLength(std::int32_t timeScale, double fps);

  // Text.

  /// formattedQTTime:fps: hours:minutes:seconds:frames. Hours go on past 24; the sign is dropped; a fraction that
  /// rounds up to a whole second shows as fps frames.
  static QString formattedQTTime(const movie::MovieTime& time, double fps);
  /// formattedQTTime:track:
  static QString formattedQTTime(const movie::MovieTime& time, const movie::Track* track) {
    return formattedQTTime(time, fpsFromQTTrack(track));
  }
  /// formattedQTTime:movie:
  static QString formattedQTTime(const movie::MovieTime& time, const movie::Movie* movie) {
    return formattedQTTime(time, fpsForMovie(movie));
  }
  /// timecodeAtTime:movie: counted from the timecode track's start, or from 0 without one.
  static QString timecodeAtTime(const movie::MovieTime& time, const movie::Movie* movie);
  /// qtTimeFromTimecode:movie:
  static movie::MovieTime qtTimeFromTimecode(const QString& timecode, const movie::Movie* movie);

  /// The full timecode that typed text stands for in a movie, whose start gives what is left out.
  static QString completedTimecode(const QString& typed, const movie::Movie* movie);

  // Sound.

  /// sampleRateFromQTTrack: of the first sample description (see soundSampleRate()); 0.0 for a track that is no sound
  /// track.
  static double sampleRateFromQTTrack(const movie::Track* track);
  /// friendlyAudioChannelLabel: "Unknown" for a code without a name.
  static QString friendlyAudioChannelLabel(const AudioChannelDescription& description);
};
