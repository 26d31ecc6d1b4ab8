#include <cmath>
#include <limits>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "SharedFiles/timecode/QVTimecode.h"

namespace {

constexpr int lowestCount = std::numeric_limits<int>::min();
constexpr int highestCount = std::numeric_limits<int>::max();

struct Rate {
  int timebase = 30;
  bool dropFrame = false;
};
constexpr Rate drop30{30, true}, drop60{60, true}, plain30{30, false}, plain24{24, false};

std::string timecodeOf(int frameCount, Rate rate, int startFrame = 0) {
  return QVTimecode::timecodeFromFrameCount(frameCount, rate.timebase, false, rate.dropFrame, startFrame).toStdString();
}

int countOf(const std::string& timecode, Rate rate, int startFrame = 0) {
  return QVTimecode::frameCountFromTimecode(QString::fromStdString(timecode), rate.timebase, false, rate.dropFrame,
                                            startFrame);
}

}  // namespace

TEST(QVTimecode, NumbersFrames) {
  struct Row {
    int frameCount;
    Rate rate;
    int startFrame;
    const char* timecode;
  };
  const std::vector<Row> rows = {
      {0, drop30, 0, "00:00:00;00"},
      {1799, drop30, 0, "00:00:59;29"},
      {1800, drop30, 0, "00:01:00;02"},
      {1801, drop30, 0, "00:01:00;03"},
      {17981, drop30, 0, "00:09:59;29"},
      {17982, drop30, 0, "00:10:00;02"},
      {17999, drop30, 0, "00:10:00;19"},
      {18000, drop30, 0, "00:10:00;18"},
      {0, drop30, -1, "01:00:00;00"},
      {107892, drop30, 0, "01:00:00;00"},
      {3595, drop60, 0, "00:00:59;55"},
      {3596, drop60, 0, "00:00:59;56"},
      {3600, drop60, 0, "00:01:00;04"},
      {107892, plain30, 0, "00:59:56:12"},
      {0, plain24, -1, "01:14:55:12"},
      {0, plain24, lowestCount, "01:14:55:12"},
      {12, plain24, 24, "00:00:01:12"},
      {108000 * 24 - 1, plain30, 0, "23:59:59:29"},
      {108000 * 24, plain30, 0, "00:00:00:00"},
      {108000 * 25 + 31, plain30, 0, "01:00:01:01"},
      {35, {0, false}, 0, "00:00:01:05"},
      {35, {-25, false}, 0, "00:00:01:05"},
      {1800, {0, true}, 0, "00:01:00;02"},
      {35, {1000, false}, 0, "00:00:00:35"},
      {999, {1000, false}, 0, "00:00:00:999"},
      // A negative total is formatted as it falls.
      {-1, plain30, 0, "00:00:-01:-01"},
      {-1, drop30, 0, "00:00:-01;-01"},
      {-2, drop30, 0, "00:00:-01;-02"},
      {-31, drop30, 0, "00:00:-02;-01"},
      {-1800, drop30, 0, "00:-01:00;00"},
      {-17999, drop30, 0, "00:-10:00;-29"},
      {-18000, drop30, 0, "00:-10:-01;-18"},
      {-1, drop60, 0, "00:00:-01;-01"},
      {-107893, drop30, -1, "00:00:-01;-01"},
  };
  for (const Row& row : rows)
    EXPECT_EQ(timecodeOf(row.frameCount, row.rate, row.startFrame), row.timecode)
        << row.frameCount << " at " << row.rate.timebase << " from " << row.startFrame;
}

TEST(QVTimecode, NumbersEachFrameBeforeZeroInDropFrameToo) {
  for (const Rate rate : {drop30, drop60}) {
    std::set<std::string> seen;
    for (int frame = -1; frame > -36000; --frame) {
      const std::string timecode = timecodeOf(frame, rate);
      ASSERT_TRUE(seen.insert(timecode).second) << frame << " is " << timecode << " at " << rate.timebase;
      ASSERT_NE(timecode.find('-'), std::string::npos) << frame << " is " << timecode;
    }
  }
}

TEST(QVTimecode, ReadsFrameNumbers) {
  struct Row {
    const char* timecode;
    Rate rate;
    int startFrame;
    int frameCount;
  };
  const std::vector<Row> rows = {
      {"01:00:00;00", drop30, 0, 107892},
      {"00:10:00;00", drop30, 0, 17982},
      {"00:01:00;02", drop30, 0, 1800},
      {"00:00:59;29", drop30, 0, 1799},
      {"01:00:00;00", drop30, -1, 0},
      {"01:00:00:10", plain30, 108000, 10},
      {"00:00:00:00", plain24, -1, -107892},
      {"00:01:59;28", drop30, 0, 3594},  // though frame 3596 carries it: parsing is no exact inverse
      {"00:00:-01:-01", plain30, 0, -31},
      {"00:00:-01;-01", drop30, 0, -31},
      {"00:-10:00;00", drop30, 0, -17982},
      {"00:00:00;-5", drop60, 0, -5},
      {"1:2:3:4", plain30, 0, 111694},
      {"01:02:03:04", plain30, 0, 111694},
      {"01;02;03;04", plain30, 0, 111694},
      {"01:02:03;04", plain30, 0, 111694},
      {" \t\n01:02:03:04\r\n ", plain30, 0, 111694},
      {"01:02:03:04:99:xx", plain30, 0, 111694},
      {"01:02:03", plain30, 0, 0},
      {"01:02:03", plain30, 50, 0},  // fewer than four fields: nothing is subtracted either
      {"01.02.03.04", plain30, 0, 0},
      {"", plain30, 0, 0},
      {":::", plain30, 0, 0},
      {":::7", plain30, 0, 7},
      {"xx:00:00:05", plain30, 0, 5},
      {"00:00:1x:05", plain30, 0, 35},
      {"00:00: 1:+5", plain30, 0, 35},
      {"00:00:01:-5", plain30, 0, 25},
      {"00:00:01:05", {0, false}, 0, 35},
      {"00:00:01:05", {-7, false}, 0, 35},
      {"00:00:70:00", plain30, 0, 2100},
  };
  for (const Row& row : rows)
    EXPECT_EQ(countOf(row.timecode, row.rate, row.startFrame), row.frameCount) << row.timecode;
}

TEST(QVTimecode, ParsesWhatItNumbers) {
  for (int frame = 0; frame < 200000; frame += 7) ASSERT_EQ(countOf(timecodeOf(frame, plain24), plain24), frame);
  // In drop frame the ends of minutes come back two frames early for each minute that has passed, and nothing else
  // does.
  int early = 0;
  for (int frame = 0; frame < 17982; ++frame) {
    const int back = countOf(timecodeOf(frame, drop30), drop30);
    if (back == frame) continue;
    ASSERT_EQ(back, frame - 2) << frame;
    ASSERT_GE((frame - 2) % 1798, 1798 - 2 * ((frame - 2) / 1798)) << frame;
    ++early;
  }
  EXPECT_EQ(early, 2 * (1 + 2 + 3 + 4 + 5 + 6 + 7 + 8 + 9));
}

TEST(QVTimecode, SkipsTheFirstNumbersOfEachMinute) {
  for (int minute = 1; minute < 10; ++minute) {
    const int first = 1800 + 1798 * (minute - 1);
    const std::string start = "00:0" + std::to_string(minute) + ":00;";
    EXPECT_EQ(timecodeOf(first, drop30), start + "02");
    EXPECT_EQ(timecodeOf(first - 1, drop30), "00:0" + std::to_string(minute - 1) + ":59;29");
  }
}

TEST(QVTimecode, AddsAndSubtractsDroppedFrameNumbers) {
  struct Row {
    std::uint64_t n;
    double fps;
    std::uint64_t added, subtracted;
  };
  const std::vector<Row> rows = {
      {0, 30, 0, 0},
      {2, 30, 2, 2},
      {1799, 30, 1799, 1799},
      {1800, 30, 1802, 1798},
      {17982, 30, 18002, 17962},
      {18000, 30, 18018, 17982},
      {108000, 30, 108108, 107892},
      {3599, 60, 3599, 3599},
      {3600, 60, 3604, 3596},
      {36000, 60, 36036, 35964},
      {1500, 25, 1502, 1498},
      // Each rounding goes to the nearest: the numbers dropped a minute, the frames of ten minutes, the nominal rate.
      {1200, 20, 1201, 1199},
      {14385, 23.976, 14405, 14365},
      {17999, 29.9985, 18017, 17981},
      {1400, 23.976, 1400, 1400},
      {1440, 24.2, 1442, 1438},
      {7, 0.0, 7, 7},
      {7, 0.0001, 7, 7},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(QVTimecode::addDroppedFrames(row.n, row.fps), row.added) << row.n << " at " << row.fps;
    EXPECT_EQ(QVTimecode::subtractDroppedFrames(row.n, row.fps), row.subtracted) << row.n << " at " << row.fps;
  }
}

TEST(QVTimecode, GivesTheRateOfATimebase) {
  EXPECT_DOUBLE_EQ(QVTimecode::frameRateFromTimebase(30, true), 30000.0 / 1001.0);
  EXPECT_NEAR(QVTimecode::frameRateFromTimebase(30, true), 29.97002997, 1e-8);
  EXPECT_DOUBLE_EQ(QVTimecode::frameRateFromTimebase(24, true), 24000.0 / 1001.0);
  EXPECT_DOUBLE_EQ(QVTimecode::frameRateFromTimebase(60, true), 60000.0 / 1001.0);
  EXPECT_EQ(QVTimecode::frameRateFromTimebase(25, true), 0.0);
  EXPECT_EQ(QVTimecode::frameRateFromTimebase(48, true), 0.0);
  EXPECT_EQ(QVTimecode::frameRateFromTimebase(25, false), 25.0);
  EXPECT_EQ(QVTimecode::frameRateFromTimebase(48, false), 48.0);
  EXPECT_EQ(QVTimecode::frameRateFromTimebase(0, false), 30.0);
  EXPECT_DOUBLE_EQ(QVTimecode::frameRateFromTimebase(-1, true), 30000.0 / 1001.0);
}

TEST(QVTimecode, IncrementsReadingNonDropWhateverItWrites) {
  const auto incremented = [](const char* timecode, int increment, int timebase, bool dropFrame) {
    return QVTimecode::timecode(QString::fromLatin1(timecode), increment, timebase, false, dropFrame).toStdString();
  };
  EXPECT_EQ(incremented("00:00:59:29", 1, 30, false), "00:01:00:00");
  EXPECT_EQ(incremented("01:00:00:00", -1, 24, false), "00:59:59:23");
  EXPECT_EQ(incremented("00:00:59;29", 1, 30, true), "00:01:00;02");
  EXPECT_EQ(incremented("00:01:00;02", 0, 30, true), "00:01:00;04");  // read as 1802, numbered again
  EXPECT_EQ(incremented("01:02:03", 5, 25, false), "00:00:00:05");
}

TEST(QVTimecode, AddsTimecodes) {
  const auto sum = [](const char* a, const char* b, Rate rate) {
    return QVTimecode::addTimecode(QString::fromLatin1(a), QString::fromLatin1(b), rate.timebase, false, rate.dropFrame)
        .toStdString();
  };
  EXPECT_EQ(sum("00:00:00:20", "00:00:00:15", plain30), "00:00:01:05");
  EXPECT_EQ(sum("23:59:59:23", "00:00:00:01", plain24), "00:00:00:00");
  EXPECT_EQ(sum("00:00:59;29", "00:00:00;01", drop30), "00:01:00;02");
  EXPECT_EQ(sum("nonsense", "00:00:00:01", plain24), "00:00:00:01");
}

TEST(QVTimecode, SubtractsTheFirstFromTheSecond) {
  const auto difference = [](const char* a, const char* b, Rate rate) {
    return QVTimecode::subtractTimecode(QString::fromLatin1(a), QString::fromLatin1(b), rate.timebase, false,
                                        rate.dropFrame);
  };
  EXPECT_EQ(difference("00:00:00:10", "00:00:01:00", plain30), QStringLiteral("00:00:00:20"));
  EXPECT_EQ(difference("00:00:01:00", "00:00:01:00", plain30), QStringLiteral("00:00:00:00"));
  EXPECT_EQ(difference("00:00:01:00", "00:00:00:10", plain30), std::nullopt);
  EXPECT_EQ(difference("00:00:00;02", "00:01:00;02", drop30), QStringLiteral("00:00:59;28"));
  // A negative count is a large unsigned one.
  EXPECT_EQ(difference("00:00:00:01", "00:00:00:-1", plain30), QStringLiteral("00:00:-01:-02"));
  EXPECT_EQ(difference("00:00:00:-1", "00:00:00:01", plain30), std::nullopt);
}

TEST(QVTimecode, KnowsWhetherATimecodeLiesInARange) {
  struct Row {
    const char *timecode, *start, *end;
    bool inside;
  };
  const std::vector<Row> rows = {
      {"01:00:00:00", "01:00:00:00", "02:00:00:00", true},
      {"02:00:00:00", "01:00:00:00", "02:00:00:00", true},
      {"01:30:00:00", "01:00:00:00", "02:00:00:00", true},
      {"00:59:59:23", "01:00:00:00", "02:00:00:00", false},
      {"02:00:00:01", "01:00:00:00", "02:00:00:00", false},
      {"02:00:00:00", "02:00:00:00", "01:00:00:00", true},  // equal as text, though the range is upside down
      {"01:00:00:00", "02:00:00:00", "01:00:00:00", true},
      {"01:30:00:00", "02:00:00:00", "01:00:00:00", false},
      {"1:0:0:0", "01:00:00:00", "01:00:00:00", true},       // equal as numbers
      {"00:00:00:24", "00:00:01:00", "00:00:01:00", true},   // at 24, always
      {"00:00:00:-1", "00:00:00:00", "00:00:10:00", false},  // a negative count is a large unsigned one
      {"", "", "01:00:00:00", true},
  };
  for (const Row& row : rows)
    EXPECT_EQ(QVTimecode::timecodeInRange(QString::fromLatin1(row.timecode), QString::fromLatin1(row.start),
                                          QString::fromLatin1(row.end)),
              row.inside)
        << row.timecode << " in " << row.start << " to " << row.end;
}

TEST(QVTimecode, FormatsFourNumbers) {
  const auto text = [](long hours, long mins, long secs, long frames, bool dropFrame) {
    return QVTimecode::formatHours(hours, mins, secs, frames, dropFrame).toStdString();
  };
  EXPECT_EQ(text(1, 2, 3, 4, false), "01:02:03:04");
  EXPECT_EQ(text(1, 2, 3, 4, true), "01:02:03;04");
  EXPECT_EQ(text(0, 9, 10, 99, false), "00:09:10:99");
  EXPECT_EQ(text(100, 200, 3000, 12345, true), "100:200:3000;12345");
}

TEST(QVTimecode, WrapsAtThirtyTwoBits) {
  EXPECT_EQ(timecodeOf(highestCount, plain30, 1), timecodeOf(lowestCount, plain30, 0));
  EXPECT_EQ(timecodeOf(highestCount, plain30, -1), timecodeOf(lowestCount + 107891, plain30, 0));
  EXPECT_EQ(countOf("00:00:00:2147483647", plain30, -1), highestCount - 107892);
  EXPECT_EQ(countOf("00:00:00:2147483648", plain30), highestCount);  // a field is held at the ends of an int
  EXPECT_EQ(countOf("00:00:00:-99999999999999999999", plain30), lowestCount);
  EXPECT_EQ(countOf("00:00:00:-2147483648", plain30, 1), highestCount);
  EXPECT_EQ(countOf("99999999999:0:0:0", plain30), static_cast<int>(2147483647U * 108000U));
  EXPECT_EQ(countOf("99999:99999:99999:99999", {highestCount, false}),
            static_cast<int>((99999U * 3600U + 99999U * 60U + 99999U) * 2147483647U + 99999U));
  EXPECT_EQ(countOf(std::string(100000, '9').append(":0:0:1"), plain30), static_cast<int>(2147483647U * 108000U + 1U));
}

TEST(QVTimecode, TakesAnyNumberAndAnyText) {
  const std::vector<int> numbers = {lowestCount, lowestCount + 1, -107892,          -1,          0, 1, 29,
                                    30,          18000,           highestCount - 1, highestCount};
  for (const int count : numbers)
    for (const int timebase : numbers)
      for (const int start : numbers)
        for (const bool dropFrame : {false, true})
          EXPECT_GE(timecodeOf(count, {timebase, dropFrame}, start).size(), 11U);
  const std::vector<double> rates = {0.0,          -1.0, -30.0, 1e-300, 1e300, HUGE_VAL, -HUGE_VAL,
                                     std::nan(""), 0.5,  29.97, 1e9,    3.6e6, 3.5e9};
  for (const double fps : rates)
    for (const std::uint64_t n : {std::uint64_t{0}, std::uint64_t{1}, std::uint64_t{18000}, ~std::uint64_t{0}})
      EXPECT_EQ(QVTimecode::subtractDroppedFrames(n, fps),
                QVTimecode::addDroppedFrames(QVTimecode::addDroppedFrames(n, fps) - n, fps) -
                    2 * (QVTimecode::addDroppedFrames(n, fps) - n) + n);
}

TEST(Modulus, TruncatesTheQuotient) {
  EXPECT_EQ(modulus(7.0, 3.0), 1.0);
  EXPECT_EQ(modulus(-7.0, 3.0), -1.0);
  EXPECT_EQ(modulus(7.0, -3.0), 1.0);
  EXPECT_EQ(modulus(7.5, 2.0), 1.5);
  EXPECT_EQ(modulus(6.0, 3.0), 0.0);
  EXPECT_EQ(modulus(1e18, 1.0), 0.0);
  EXPECT_TRUE(std::isnan(modulus(1.0, 0.0)));
}
