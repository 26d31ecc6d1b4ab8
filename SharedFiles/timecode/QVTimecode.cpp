#include "SharedFiles/timecode/QVTimecode.h"

#include <QRegularExpression>
#include <QStringList>
#include <charconv>
#include <cmath>
#include <limits>
#include <system_error>

#include "SharedFiles/log/LogFormat.h"

namespace {

constexpr int defaultTimebase = 30;
constexpr double defaultRate = 30.0;
constexpr double lowestInt = std::numeric_limits<int>::min();
constexpr double highestInt = std::numeric_limits<int>::max();

int effectiveTimebase(int timebase) {
  return timebase < 1 ? defaultTimebase : timebase;
}
double effectiveRate(double fps) {
  return fps <= 0.0 ? defaultRate : fps;
}
int effectiveStart(int startFrame) {
  return startFrame < 0 ? QVTimecode::defaultStartFrame : startFrame;
}

// 32-bit arithmetic that wraps.
int wrappingSum(int a, int b) {
  return static_cast<int>(static_cast<std::uint32_t>(a) + static_cast<std::uint32_t>(b));
}
int wrappingDifference(int a, int b) {
  return static_cast<int>(static_cast<std::uint32_t>(a) - static_cast<std::uint32_t>(b));
}
int wrappingProduct(int a, int b) {
  return static_cast<int>(static_cast<std::uint32_t>(a) * static_cast<std::uint32_t>(b));
}

/// Truncated; the lowest int for what none holds.
int truncatedInt(double value) {
  const double whole = std::trunc(value);
  return whole >= lowestInt && whole <= highestInt ? static_cast<int>(whole) : std::numeric_limits<int>::min();
}

/// Truncated; a negative number wraps, one too large becomes the largest.
std::uint64_t truncatedUnsigned(double value) {
  constexpr double two63 = 9223372036854775808.0;
  if (value >= 2 * two63) return std::numeric_limits<std::uint64_t>::max();
  if (value >= two63) return static_cast<std::uint64_t>(value);
  return value >= -two63 ? static_cast<std::uint64_t>(static_cast<std::int64_t>(value)) : 0;
}

std::uint64_t signExtended(int value) {
  return static_cast<std::uint64_t>(static_cast<std::int64_t>(value));
}
int low32(std::uint64_t value) {
  return static_cast<int>(static_cast<std::uint32_t>(value));
}

/// An optional sign and the digits after it; 0 without digits; held at the ends of an int.
int leadingInteger(const QString& text) {
  QByteArray bytes = text.trimmed().toLatin1();
  if (bytes.startsWith('+')) bytes[0] = '0';  // std::from_chars knows no plus
  int value = 0;
  const auto end = std::from_chars(bytes.cbegin(), bytes.cend(), value);
  if (end.ec != std::errc::result_out_of_range) return value;
  return bytes.startsWith('-') ? std::numeric_limits<int>::min() : std::numeric_limits<int>::max();
}

/// An optional sign, digits with an optional decimal point, an optional exponent; 0 without digits.
double leadingReal(const QString& text) {
  static const QRegularExpression number(R"(^[+-]?(\d+\.?\d*|\.\d+)([eE][+-]?\d+)?)");
  return number.match(text.trimmed()).captured().toDouble();
}

QStringList fieldsOf(const QString& text) {
  return QString(text).replace(u';', u':').split(u':');
}

struct Fields {
  long hours = 0, mins = 0, secs = 0, frames = 0;
};

Fields fieldsFromCount(int count, double fps) {
  const double quotient = static_cast<double>(count) / fps;
  const int seconds = truncatedInt(std::floor(quotient));
  const int frames = truncatedInt(std::floor(static_cast<double>(count) - std::trunc(quotient) * fps));
  return {seconds / 3600 % 24, seconds / 60 % 60, seconds % 60, frames};
}

const char* separatorText(bool dropFrame) {
  return dropFrame ? ";" : ":";
}
const char* padding(long number) {
  return number < 10 ? "0" : "";
}

QString paddedField(long number) {
  return formatLog("%@%li", padding(number), number);
}

/// A run of "." or "," at the end stands for that many fields of zeros.
QString withZerosForRunAtEnd(QString text) {
  constexpr qsizetype wholeTimecode = 4;
  for (const QChar mark : {u'.', u','}) {
    for (qsizetype run = wholeTimecode; run > 0; --run) {
      if (!text.endsWith(QString(run, mark))) continue;
      text.chop(run);
      if (run < wholeTimecode) text += mark;
      text += QString(2 * run, u'0');
    }
  }
  return text;
}

/// The pieces between "." and ",", single characters padded, without separators, the last eight characters of it.
QString typedDigits(const QString& text) {
  QString digits;
  for (const QString& piece : QString(text).replace(u',', u'.').split(u'.')) {
    if (piece.size() == 1) digits.append(u'0');
    digits.append(piece);
  }
  digits.remove(u':').remove(u';');
  return digits.right(8);
}

/// Pairs from the right with separators between them; a single first character is padded to a pair.
QString separatedPairs(const QString& digits, bool dropFrame) {
  if (digits.size() < 3) return digits;
  QString text = digits.size() % 2 == 0 ? digits : u'0' + digits;
  for (qsizetype at = text.size() - 4; at > 0; at -= 2) text.insert(at, u':');
  text.insert(text.size() - 2, QLatin1String(separatorText(dropFrame)));
  return text;
}

}  // namespace

double modulus(double a, double b) {
  return a - std::trunc(a / b) * b;
}

QString QVTimecode::timecodeFromFrameCount(int frameCount, int timebase, bool /*ntsc*/, bool dropFrame,
                                           int startFrame) {
  const double fps = effectiveTimebase(timebase);
  int total = wrappingSum(frameCount, effectiveStart(startFrame));
  if (dropFrame) total = low32(addDroppedFrames(signExtended(total), fps));
  const Fields fields = fieldsFromCount(total, fps);
  return formatLog(dropFrame ? "%0.2li:%0.2li:%0.2li;%0.2li" : "%0.2li:%0.2li:%0.2li:%0.2li", fields.hours, fields.mins,
                   fields.secs, fields.frames);
}

int QVTimecode::frameCountFromTimecode(const QString& timecode, int timebase, bool /*ntsc*/, bool dropFrame,
                                       int startFrame) {
  const QStringList fields = fieldsOf(timecode.trimmed());
  if (fields.size() < 4) return 0;
  const int base = effectiveTimebase(timebase);
  const int minutes = wrappingSum(wrappingProduct(leadingInteger(fields[0]), 60), leadingInteger(fields[1]));
  const int seconds = wrappingSum(wrappingProduct(minutes, 60), leadingInteger(fields[2]));
  int total = wrappingSum(wrappingProduct(seconds, base), leadingInteger(fields[3]));
  if (dropFrame) total = low32(subtractDroppedFrames(signExtended(total), base));
  return wrappingDifference(total, effectiveStart(startFrame));
}

std::uint64_t QVTimecode::addDroppedFrames(std::uint64_t n, double fps) {
  const int perMinute = truncatedInt(std::round(fps * 0.06666666666666667));
  const int tenMinuteFrames = truncatedInt(std::round(60.0 * fps * 10.0));
  const int minuteFrames = truncatedInt(std::round(fps) * 60.0 - perMinute);
  if (tenMinuteFrames == 0 || minuteFrames == 0) return n;
  const auto count = static_cast<std::int64_t>(n);
  const auto rest = static_cast<int>(count % tenMinuteFrames);
  const int pastFirstDrop = wrappingDifference(rest, perMinute);
  const std::uint64_t inBlocks = static_cast<std::uint64_t>(count / tenMinuteFrames) * signExtended(perMinute) * 9;
  if (pastFirstDrop <= 0) return n + inBlocks;
  const std::int64_t minutes = std::int64_t{pastFirstDrop} / minuteFrames;
  return truncatedUnsigned(static_cast<double>(n) + static_cast<double>(inBlocks) +
                           static_cast<double>(minutes * perMinute));
}

std::uint64_t QVTimecode::subtractDroppedFrames(std::uint64_t n, double fps) {
  const std::uint64_t added = addDroppedFrames(n, fps) - n;
  return addDroppedFrames(added, fps) - 2 * added + n;
}

double QVTimecode::frameRateFromTimebase(int timebase, bool ntsc) {
  const int base = effectiveTimebase(timebase);
  if (!ntsc) return base;
  return base == 24 || base == 30 || base == 60 ? base * 1000.0 / 1001.0 : 0.0;
}

QString QVTimecode::timecode(const QString& timecode, int increment, int timebase, bool ntsc, bool dropFrame) {
  const int count = wrappingSum(frameCountFromTimecode(timecode, timebase, ntsc, false, 0), increment);
  return timecodeFromFrameCount(count, timebase, ntsc, dropFrame, 0);
}

QString QVTimecode::addTimecode(const QString& a, const QString& b, int timebase, bool ntsc, bool dropFrame) {
  const int count = wrappingSum(frameCountFromTimecode(a, timebase, ntsc, dropFrame, 0),
                                frameCountFromTimecode(b, timebase, ntsc, dropFrame, 0));
  return timecodeFromFrameCount(count, timebase, ntsc, dropFrame, 0);
}

std::optional<QString> QVTimecode::subtractTimecode(const QString& a, const QString& b, int timebase, bool ntsc,
                                                    bool dropFrame) {
  const int countA = frameCountFromTimecode(a, timebase, ntsc, dropFrame, 0);
  const int countB = frameCountFromTimecode(b, timebase, ntsc, dropFrame, 0);
  if (static_cast<std::uint32_t>(countB) < static_cast<std::uint32_t>(countA)) return std::nullopt;
  return timecodeFromFrameCount(wrappingDifference(countB, countA), timebase, ntsc, dropFrame, 0);
}

bool QVTimecode::timecodeInRange(const QString& timecode, const QString& start, const QString& end) {
  if (timecode == start || timecode == end) return true;
  const auto count = [](const QString& text) {
    return static_cast<std::uint32_t>(frameCountFromTimecode(text, 24, false, false, 0));
  };
  return count(start) <= count(timecode) && count(timecode) <= count(end);
}

QString QVTimecode::formatHours(long hours, long mins, long secs, long frames, bool dropFrame) {
  return formatLog("%@%lu:%@%lu:%@%lu%@%@%lu", padding(hours), hours, padding(mins), mins, padding(secs), secs,
                   separatorText(dropFrame), padding(frames), frames);
}

QString QVTimecode::timecodeFromUserString(const QString& typed, bool dropFrame, const QString& startTimecode) {
  constexpr qsizetype wholeTimecode = 11;
  if (typed.size() == wholeTimecode) return typed;
  const QString entered = separatedPairs(typedDigits(withZerosForRunAtEnd(typed)), dropFrame);
  const QString start = startTimecode.isEmpty() ? formatLog("00:00:00%@00", separatorText(dropFrame)) : startTimecode;
  return start.size() <= entered.size() ? entered : start.left(start.size() - entered.size()) + entered;
}

QString QVTimecode::elapsedTimeFromFrameCount(int frameCount, double fps) {
  const Fields fields = fieldsFromCount(frameCount, effectiveRate(fps));
  return formatLog("%0.2li:%0.2li:%0.2li:%0.2li", fields.hours, fields.mins, fields.secs, fields.frames);
}

int QVTimecode::frameCountFromElapsedTime(const QString& elapsed, double fps) {
  const QStringList fields = fieldsOf(elapsed.trimmed());
  if (fields.size() < 4) return 0;
  const double rate = effectiveRate(fps);
  const int hours = truncatedInt(std::round(leadingReal(fields[0]) * rate * 60.0 * 60.0));
  const int minutes = truncatedInt(hours + std::round(leadingReal(fields[1]) * rate * 60.0));
  const double seconds = minutes + std::round(rate * leadingReal(fields[2]));
  return wrappingSum(leadingInteger(fields[3]), truncatedInt(seconds));
}

QString QVTimecode::timecodeFromSeconds(double seconds, float fps, bool dropFrame) {
  const int frames = low32(truncatedUnsigned(std::round(static_cast<double>(fps) * seconds)));
  const float nominal = std::ceil(fps);
  return timecodeFromFrameCount(frames, truncatedInt(nominal), nominal != std::floor(fps), dropFrame, 0);
}

QString QVTimecode::timeOfDayTimecode(int timebase, bool ntsc, bool dropFrame, const QDateTime& moment) {
  const QTime time = moment.time();
  const int hundredths = time.msec() / 10;
  const double frames = std::floor(hundredths / 100.0 * frameRateFromTimebase(timebase, ntsc));
  return formatLog("%@:%@:%@%@%@", paddedField(time.hour()), paddedField(time.minute()), paddedField(time.second()),
                   separatorText(dropFrame), paddedField(truncatedInt(frames)));
}

QString QVTimecode::sanitizeTimecodeForFilename(const QString& timecode) {
  return fieldsOf(timecode).join(u'.');
}
