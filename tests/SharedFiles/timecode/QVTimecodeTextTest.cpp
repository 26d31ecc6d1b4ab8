#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "SharedFiles/timecode/QVTimecode.h"

namespace {

std::string expanded(const std::string& typed, bool dropFrame, const std::string& start) {
  return QVTimecode::timecodeFromUserString(QString::fromStdString(typed), dropFrame, QString::fromStdString(start))
      .toStdString();
}

int framesOf(const char* elapsed, double fps) {
  return QVTimecode::frameCountFromElapsedTime(QString::fromLatin1(elapsed), fps);
}

QDateTime momentAt(int hour, int minute, int second, int millisecond) {
  return {QDate(2024, 2, 29), QTime(hour, minute, second, millisecond)};
}

}  // namespace

TEST(QVTimecodeText, CompletesWhatIsTyped) {
  struct Row {
    const char *typed, *nonDrop, *drop;  // from 01:00:00:00; in drop frame from an empty start
  };
  const std::vector<Row> rows = {
      {"1", "01:00:00:01", "00:00:00;01"},
      {"12", "01:00:00:12", "00:00:00;12"},
      {"123", "01:00:01:23", "00:00:01;23"},
      {"1234", "01:00:12:34", "00:00:12;34"},
      {"12345", "01:01:23:45", "00:01:23;45"},
      {"123456", "01:12:34:56", "00:12:34;56"},
      {"1234567", "01:23:45:67", "01:23:45;67"},
      {"12345678", "12:34:56:78", "12:34:56;78"},
      {"123456789", "23:45:67:89", "23:45:67;89"},
      {"1.", "01:00:01:00", "00:00:01;00"},
      {"1..", "01:01:00:00", "00:01:00;00"},
      {"1...", "01:00:00:00", "01:00:00;00"},
      {"1,", "01:00:01:00", "00:00:01;00"},
      {"1,,", "01:01:00:00", "00:01:00;00"},
      {"1,,,", "01:00:00:00", "01:00:00;00"},
      {"12.", "01:00:12:00", "00:00:12;00"},
      {"12..", "01:12:00:00", "00:12:00;00"},
      {"12...", "12:00:00:00", "12:00:00;00"},
      {"1....", "00:00:00:00", "00:00:00;00"},
      {"12....", "00:00:00:00", "00:00:00;00"},
      {"1,,,,", "00:00:00:00", "00:00:00;00"},
      {"1.....", "00:00:00:00", "00:00:00;00"},
      {".", "01:00:00:00", "00:00:00;00"},
      {"5.10", "01:00:05:10", "00:00:05;10"},
      {"5,10", "01:00:05:10", "00:00:05;10"},
      {"1.2.3.4", "01:02:03:04", "01:02:03;04"},
      {"1.2,3.4", "01:02:03:04", "01:02:03;04"},
      {"1.23", "01:00:01:23", "00:00:01;23"},
      {"1..2", "01:00:01:02", "00:00:01;02"},
      {"1,.", "01:00:01:00", "00:00:01;00"},
      {"10:20", "01:00:10:20", "00:00:10;20"},
      {"1:2", "01:00:00:12", "00:00:00;12"},  // single digits between colons are not padded
      {";12", "01:00:00:12", "00:00:00;12"},
      {"", "01:00:00:00", "00:00:00;00"},
      {"01:02:03:04", "01:02:03:04", "01:02:03:04"},
      {"elevenchars", "elevenchars", "elevenchars"},
      {"...........", "...........", "..........."},
      {"abc", "01:00:0a:bc", "00:00:0a;bc"},
      // Of what is longer than a timecode the last eight characters count.
      {"1234567890", "34:56:78:90", "34:56:78;90"},
      {"123456789012", "56:78:90:12", "56:78:90;12"},
      {"100:00:00:00", "00:00:00:00", "00:00:00;00"},
      {"01:02:03:04:05", "02:03:04:05", "02:03:04;05"},
      {"1.2.3.4.5.6.7", "04:05:06:07", "04:05:06;07"},
      {"............", "00:00:00:00", "00:00:00;00"},
      {"01:02:03:04.", "02:03:04:00", "02:03:04;00"},
      {"twelve chars", "ve: c:ha:rs", "ve: c:ha;rs"},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(expanded(row.typed, false, "01:00:00:00"), row.nonDrop) << row.typed;
    EXPECT_EQ(expanded(row.typed, true, ""), row.drop) << row.typed;
  }
}

TEST(QVTimecodeText, TakesTheMissingPartFromAnyStart) {
  EXPECT_EQ(expanded("12", false, ""), "00:00:00:12");
  EXPECT_EQ(expanded("12", true, "10:20:30;40"), "10:20:30;12");
  EXPECT_EQ(expanded("1234", true, "10:20:30:40"), "10:20:12;34");
  EXPECT_EQ(expanded("1234", false, "ab"), "12:34");
  EXPECT_EQ(expanded("1", false, "7"), "01");
  EXPECT_EQ(QVTimecode::timecodeFromUserString(QString(), false, QString()), QStringLiteral("00:00:00:00"));
}

TEST(QVTimecodeText, FormatsElapsedTime) {
  struct Row {
    int frameCount;
    double fps;
    const char* elapsed;
  };
  const std::vector<Row> rows = {
      {1800, 29.97, "00:01:00:01"},
      {1800, 30.0, "00:01:00:00"},
      {1800, 0.0, "00:01:00:00"},
      {1800, -24.0, "00:01:00:00"},
      {107892, 29.97, "01:00:00:00"},
      {0, 25.0, "00:00:00:00"},
      {25 * 3600 * 24 + 26, 25.0, "00:00:01:01"},
      {100, 1000.0, "00:00:00:100"},
  };
  for (const Row& row : rows)
    EXPECT_EQ(QVTimecode::elapsedTimeFromFrameCount(row.frameCount, row.fps).toStdString(), row.elapsed)
        << row.frameCount << " at " << row.fps;
}

TEST(QVTimecodeText, ReadsElapsedTime) {
  struct Row {
    const char* elapsed;
    double fps;
    int frameCount;
  };
  const std::vector<Row> rows = {
      {"00:01:00:00", 0.0, 1800},
      {"00:01:00:00", -1.0, 1800},
      {"00:01:00:01", 29.97, 1799},
      {"01:00:00:00", 29.97, 107892},
      {"01:02:03:04", 25.0, 93079},
      {"01;02;03;04", 25.0, 93079},
      {" 01:02:03:04\n", 25.0, 93079},
      {"0.5:1.5:2.5:7", 30.0, 54000 + 2700 + 75 + 7},
      {"0:0:.5:0", 30.0, 15},
      {"0:0:1.:0", 30.0, 30},
      {"0:0:1e1:0", 30.0, 300},
      {"0:0:1e:0", 30.0, 30},
      {"0:0:-2:5", 30.0, -55},
      {"0:0: 2x:3.9", 30.0, 63},
      {"0:0:.:4", 30.0, 4},
      {"x:y:z:4", 30.0, 4},
      {"00:01:00", 30.0, 0},
      {"", 30.0, 0},
      {"0:0:1:2:3", 30.0, 32},
      {"0:0:+2:5", 30.0, 65},
      {"0:0:1e+1:0", 30.0, 300},
      {"0:0:20e-1:0", 30.0, 60},
      {"0:0:1.5E1:0", 30.0, 450},
      {"0:0:1e+:0", 30.0, 30},
      {"0:0:1.5.5:0", 30.0, 45},
      // Hours, minutes and seconds are rounded to frames one by one, each to the nearest.
      {"01:00:00:00", 23.9761, 86314},
      {"01:00:00:00", 23.97345, 86304},
      {"00:01:00:00", 23.976, 1439},
      {"00:01:00:00", 29.97, 1798},
      {"00:00:01:00", 29.97, 30},
      {"00:00:01:00", 23.4, 23},
  };
  for (const Row& row : rows) EXPECT_EQ(framesOf(row.elapsed, row.fps), row.frameCount) << row.elapsed;
}

TEST(QVTimecodeText, TakesElapsedTimesThatNoCountHolds) {
  constexpr int least = std::numeric_limits<int>::min();
  EXPECT_EQ(framesOf("1e300:0:0:0", 30.0), least);
  EXPECT_EQ(framesOf("1e999:0:0:0", 30.0), least);
  EXPECT_EQ(framesOf("0:0:0:2147483648", 30.0), std::numeric_limits<int>::max());
  EXPECT_EQ(framesOf("0:0:2147483647:0", 1.0), std::numeric_limits<int>::max());
  EXPECT_EQ(framesOf("0:0:2147483648:0", 1.0), least);
  EXPECT_EQ(framesOf("0:0:1:2147483647", 30.0), least + 29);
  EXPECT_EQ(framesOf("1:1:1:0", HUGE_VAL), least);
  for (const double fps : {1e-300, 1e300, HUGE_VAL, std::nan("")})
    for (const int count : {least, -1, 0, 1, std::numeric_limits<int>::max()})
      EXPECT_GE(QVTimecode::elapsedTimeFromFrameCount(count, fps).size(), 11);
}

TEST(QVTimecodeText, TurnsSecondsIntoTimecodes) {
  const auto timecode = [](double seconds, float fps, bool dropFrame) {
    return QVTimecode::timecodeFromSeconds(seconds, fps, dropFrame).toStdString();
  };
  EXPECT_EQ(timecode(60, 29.97F, true), "00:00:59;28");
  EXPECT_EQ(timecode(60, 29.97F, false), "00:00:59:28");
  EXPECT_EQ(timecode(60, 30.0F, false), "00:01:00:00");
  EXPECT_EQ(timecode(3600, 23.976F, false), "00:59:56:10");
  EXPECT_EQ(timecode(0.5, 25.0F, false), "00:00:00:13");  // 12.5 rounds away from 0
  EXPECT_EQ(timecode(0.496, 25.0F, false), "00:00:00:12");
  EXPECT_EQ(timecode(0, 25.0F, false), "00:00:00:00");
  EXPECT_EQ(timecode(2, 0.0F, false), "00:00:00:00");
  for (const double seconds : {-1.0, 1e300, -1e300, HUGE_VAL, std::nan("")})
    for (const float fps : {-25.0F, 25.0F, HUGE_VALF, std::nanf("")})
      EXPECT_GE(timecode(seconds, fps, true).size(), 11U);
}

TEST(QVTimecodeText, TakesTheLowHalfOfSecondsThatNoCountHolds) {
  const auto timecode = [](double seconds) {
    return QVTimecode::timecodeFromSeconds(seconds, 1.0F, false).toStdString();
  };
  constexpr double two63 = 9223372036854775808.0;
  EXPECT_EQ(timecode(-1.0), "00:00:-01:00");
  EXPECT_EQ(timecode(4294967296.0 + 4096), "01:08:16:00");
  EXPECT_EQ(timecode(two63 + 4096), "01:08:16:00");
  EXPECT_EQ(timecode(2 * two63), "00:00:-01:00");  // the largest number of 64 bits
  EXPECT_EQ(timecode(-two63 + 4096), "01:08:16:00");
  EXPECT_EQ(timecode(-two63 - 4096), "00:00:00:00");
}

TEST(QVTimecodeText, TellsTheTimeOfDay) {
  struct Row {
    QDateTime moment;
    int timebase;
    bool ntsc, dropFrame;
    const char* timecode;
  };
  const std::vector<Row> rows = {
      {momentAt(1, 2, 3, 40), 25, false, false, "01:02:03:01"},
      {momentAt(23, 59, 59, 999), 25, false, false, "23:59:59:24"},  // hundredths: 99, not 99.9
      {momentAt(23, 59, 59, 999), 30, true, true, "23:59:59;29"},
      {momentAt(12, 0, 0, 500), 30, false, true, "12:00:00;15"},
      {momentAt(12, 0, 0, 500), 30, true, true, "12:00:00;14"},  // 14.985, rounded down
      {momentAt(12, 0, 0, 509), 1000, false, false, "12:00:00:500"},
      {momentAt(12, 0, 0, 990), 25, true, false, "12:00:00:00"},  // no such NTSC rate
      {momentAt(0, 1, 0, 0), 30, true, true, "00:01:00;00"},      // a number that drop frame would skip
      {momentAt(0, 0, 0, 990), 0, false, false, "00:00:00:29"},
  };
  for (const Row& row : rows)
    EXPECT_EQ(QVTimecode::timeOfDayTimecode(row.timebase, row.ntsc, row.dropFrame, row.moment).toStdString(),
              row.timecode);
}

TEST(QVTimecodeText, TellsTheTimeOfTheClock) {
  const QDateTime before = QDateTime::currentDateTime();
  const QString timecode = QVTimecode::timeOfDayTimecode(25, false, true);
  const QDateTime after = QDateTime::currentDateTime();
  if (before.date() != after.date()) return;
  EXPECT_GE(timecode, QVTimecode::timeOfDayTimecode(25, false, true, before));
  EXPECT_LE(timecode, QVTimecode::timeOfDayTimecode(25, false, true, after));
}

TEST(QVTimecodeText, MakesATimecodeFitForAFileName) {
  const auto sanitized = [](const char* text) {
    return QVTimecode::sanitizeTimecodeForFilename(QString::fromLatin1(text)).toStdString();
  };
  EXPECT_EQ(sanitized("01:00:00;00"), "01.00.00.00");
  EXPECT_EQ(sanitized("01:00:00:00"), "01.00.00.00");
  EXPECT_EQ(sanitized(":;"), "..");
  EXPECT_EQ(sanitized("plain"), "plain");
  EXPECT_EQ(sanitized(""), "");
}
