#pragma once

#include <QDateTime>
#include <QString>
#include <cstdint>
#include <optional>

/// a - trunc(a / b) x b.
double modulus(double a, double b);

/// Timecodes: hours:minutes:seconds:frames, with ";" before the frames in drop frame (SMPTE ST 12-1 writes them so). A
/// frame count becomes a timecode and back at the nominal integer rate, `timebase`; below 1 it counts as 30. `ntsc`
/// says that the real rate is timebase x 1000/1001, which only frameRateFromTimebase() looks at. `startFrame` is the
/// number of the medium's first frame; below 0 it is 107892, one hour of 29.97 drop frame, whatever the other settings.
///
/// Drop-frame numbering counts blocks of ten nominal minutes (18000 frames at 30), not those of ST 12-1 (17982):
/// numbers after the tenth minute differ from it on purpose.
///
/// No operation fails: what cannot be read counts as 0. Counts are 32 bits wide and wrap; a real number that no 32 bits
/// hold becomes the lowest of them. Pure functions, for any thread.
class QVTimecode final {
 public:
  QVTimecode() = delete;

  static constexpr int defaultStartFrame = 107892;

  // Counts and timecodes.

  /// timecodeFromFrameCount:timebase:ntsc:dropFrame:startFrame: hours wrap at 24. A negative total gives negative
  /// fields.
  static QString timecodeFromFrameCount(int frameCount, int timebase, bool ntsc, bool dropFrame, int startFrame);
  /// frameCountFromTimecode:timebase:ntsc:dropFrame:startFrame: either separator may stand anywhere; 0 for fewer than
  /// four fields; those beyond the fourth are ignored.
  static int frameCountFromTimecode(const QString& timecode, int timebase, bool ntsc, bool dropFrame, int startFrame);
  /// addDroppedFrames:fps: the number that the n-th frame carries; n itself for an fps without whole frames in a
  /// minute. A frame before the first is a negative n, sign-extended, and so is the number that it carries.
  static std::uint64_t addDroppedFrames(std::uint64_t n, double fps);
  /// subtractDroppedFrames:fps: what parsing does with a number; not an exact inverse of addDroppedFrames().
  static std::uint64_t subtractDroppedFrames(std::uint64_t n, double fps);
  /// frameRateFromTimebase:isNTSC: frames per second; 0 for an NTSC timebase other than 24, 30 or 60.
  static double frameRateFromTimebase(int timebase, bool ntsc);

  /// timecode:incrementBy:timebase:ntsc:dropFrame: reads the timecode as non-drop, whatever dropFrame says of the
  /// result.
  static QString timecode(const QString& timecode, int increment, int timebase, bool ntsc, bool dropFrame);
  /// addTimecode:toTimecode:timebase:ntsc:dropFrame:
  static QString addTimecode(const QString& a, const QString& b, int timebase, bool ntsc, bool dropFrame);
  /// subtractTimecode:fromTimecode:timebase:ntsc:dropFrame: b - a; none when a is the later one, compared as unsigned.
  static std::optional<QString> subtractTimecode(const QString& a, const QString& b, int timebase, bool ntsc,
                                                 bool dropFrame);
  /// timecodeInRange:start:end: equal as text to either end, or between them at 24 frames, compared as unsigned.
  static bool timecodeInRange(const QString& timecode, const QString& start, const QString& end);
  /// formatHours:mins:secs:frames:dropFrame: numbers of 100 and more in full; negative ones as unsigned.
  static QString formatHours(long hours, long mins, long secs, long frames, bool dropFrame);

  // Text.

  /// timecodeFromUserString:dropFrame:startTimecode: completes typed trailing digits with a start timecode. Each "." or
  /// "," at the end stands for a field of zeros. No range check; 11 characters are returned as typed.
  static QString timecodeFromUserString(const QString& typed, bool dropFrame, const QString& startTimecode);
  /// elapsedTimeFromFrameCount:fps: true elapsed time, always ":"; fps may be fractional, 0 and below count as 30.
  static QString elapsedTimeFromFrameCount(int frameCount, double fps);
  /// frameCountFromElapsedTime:fps: hours, minutes and seconds may have decimals.
  static int frameCountFromElapsedTime(const QString& elapsed, double fps);
  /// timecodeFromSeconds:fps:dropFrame:
  static QString timecodeFromSeconds(double seconds, float fps, bool dropFrame);
  /// timeOfDayTimecode:ntsc:dropFrame: to the hundredth of a second, in the moment's own time zone.
  static QString timeOfDayTimecode(int timebase, bool ntsc, bool dropFrame,
                                   const QDateTime& moment = QDateTime::currentDateTime());
  /// sanitizeTimecodeForFilename:
  static QString sanitizeTimecodeForFilename(const QString& timecode);
};
