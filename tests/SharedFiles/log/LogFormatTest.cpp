#include <bit>
#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "SharedFiles/log/LogFormat.h"

namespace {

struct Row {
  const char* what;
  QString formatted;
  const char* expected;
};

void expectRows(std::initializer_list<Row> rows) {
  for (const Row& row : rows) EXPECT_EQ(row.formatted.toStdString(), row.expected) << row.what;
}

TEST(LogFormat, ShowsTextsOfEveryKind) {
  const char* nothing = nullptr;
  expectRows({
      {"QString", formatLog("%@", QStringLiteral("ä€")), "ä€"},
      {"view", formatLog("%@", QStringView(u"ab")), "ab"},
      {"Latin-1 text as bytes", formatLog("%s", QByteArray("ab")), "ab"},
      {"bytes", formatLog("%s", "ab"), "ab"},
      {"std::string", formatLog("%@", std::string("ab")), "ab"},
      {"std::string_view", formatLog("%s", std::string_view("abc", 2)), "ab"},
      {"null bytes", formatLog("%s", nothing), "(null)"},
      {"null pointer", formatLog("%@", nullptr), "(null)"},
      {"null QString", formatLog("%@", QString()), "(null)"},
      {"empty QString", formatLog("[%@]", QString("")), "[]"},
      {"no optional", formatLog("%@", std::optional<QString>()), "(null)"},
      {"an optional", formatLog("%@", std::optional<QString>("x")), "x"},
      {"number as text", formatLog("%@ %@ %@", 7, 2.5, true), "7 2.5 1"},
      {"shortest number", formatLog("%@", 0.1), "0.1"},
      {"width", formatLog("[%5s] [%-5s] [%5@]", "ab", "ab", "ab"), "[   ab] [ab   ] [   ab]"},
      {"precision", formatLog("%.2s %.9s", "abcdef", "ab"), "ab ab"},
      {"directive inside an argument", formatLog("%@!", "100%d"), "100%d!"},
  });
}

TEST(LogFormat, TakesAnyKindOfTextAsTheFormat) {
  expectRows({
      {"QString", formatLog(QStringLiteral("%d"), 1), "1"},
      {"std::string", formatLog(std::string("%d"), 1), "1"},
      {"bytes", formatLog("ä %d", 1), "ä 1"},
  });
  EXPECT_TRUE(formatLog(QString(), 1).isNull());
  EXPECT_TRUE(formatLog(static_cast<const char*>(nullptr), 1).isNull());
  EXPECT_FALSE(formatLog("", 1).isNull());
}

enum class Kind : short { First = 3 };

TEST(LogFormat, ShowsIntegersOfEverySize) {
  expectRows({
      {"decimal", formatLog("%d %i %D", 1, -2, 3), "1 -2 3"},
      {"lengths", formatLog("%hhd %hd %ld %li %lld %qi %zd", 1, 2, 3, 4, 5, 6, 7), "1 2 3 4 5 6 7"},
      {"unsigned lengths", formatLog("%u %lu %llu %U", 1U, 2UL, 3ULL, 4U), "1 2 3 4"},
      {"smallest", formatLog("%lld", std::numeric_limits<qint64>::min()), "-9223372036854775808"},
      {"largest", formatLog("%llu", std::numeric_limits<quint64>::max()), "18446744073709551615"},
      {"large unsigned through %d", formatLog("%d", 4000000000U), "4000000000"},
      {"negative through %u wraps in its own size", formatLog("%u %llu", -1, qint64{-1}),
       "4294967295 18446744073709551615"},
      {"hexadecimal", formatLog("%x %X %lx %#x %#X %08x", 255, 255, -1, 255, 255, 48879),
       "ff FF ffffffff 0xff 0XFF 0000beef"},
      {"octal", formatLog("%o %#o %#o", 8, 8, 0), "10 010 0"},
      {"width", formatLog("[%4d] [%-4d] [%04d] [%-04d]", 42, 42, -42, 42), "[  42] [42  ] [-042] [42  ]"},
      {"signs", formatLog("%+d % d %+d", 5, 5, -5), "+5  5 -5"},
      {"precision", formatLog("%0.2li %.3d [%6.3d] [%.0d]", 5, 7, -7, 0), "05 007 [  -007] []"},
      {"stars", formatLog("[%*d] [%*d] [%.*d]", 4, 42, -4, 42, 3, 7), "[  42] [42  ] [007]"},
      {"bool", formatLog("%d %u", true, false), "1 0"},
      {"enumerator", formatLog("%d", Kind::First), "3"},
      {"small types", formatLog("%d %d %u", short{-3}, static_cast<signed char>(-4), static_cast<unsigned char>(200)),
       "-3 -4 200"},
      {"character", formatLog("%c%c%C", 'a', 0x62, 0x20AC), "ab€"},
  });
}

TEST(LogFormat, ShowsFloatingPointNumbersAsPrintfDoes) {
  const double infinity = std::numeric_limits<double>::infinity();
  const double nan = std::numeric_limits<double>::quiet_NaN();
  expectRows({
      {"plain", formatLog("%f %f", 1.25, 2.0F), "1.250000 2.000000"},
      {"two decimals", formatLog("%0.2f %.2f", 1.0, 3.14159), "1.00 3.14"},
      {"ties go to even", formatLog("%0.2f %0.2f %0.0f %0.0f", 2.125, 2.375, 0.5, 1.5), "2.12 2.38 0 2"},
      {"not a tie in binary", formatLog("%0.2f", 1.005), "1.00"},
      {"exponents", formatLog("%e %.1E", 12345.678, 0.00012), "1.234568e+04 1.2E-04"},
      {"general", formatLog("%g %g %g %G", 0.5, 1e10, 100000.0, 1e-10), "0.5 1e+10 100000 1E-10"},
      {"negative", formatLog("%0.1f [%6.1f] [%06.1f] [%-6.1f]", -1.25, -1.5, -1.5, -1.5),
       "-1.2 [  -1.5] [-001.5] [-1.5  ]"},
      {"negative zero", formatLog("%0.1f", -0.0), "-0.0"},
      {"signs", formatLog("%+.1f % .1f", 1.5, 1.5), "+1.5  1.5"},
      {"not a number", formatLog("%0.2f %F [%05f]", nan, nan, -nan), "nan NAN [  nan]"},
      {"infinity", formatLog("%f %f [%06f]", infinity, -infinity, infinity), "inf -inf [   inf]"},
      {"integer", formatLog("%0.2f %.1f", 3, 4000000000U), "3.00 4000000000.0"},
  });
  EXPECT_EQ(formatLog("%.1000f", std::numeric_limits<double>::max()).size(), 309 + 1 + 1000);
}

TEST(LogFormat, ShowsPointersInHexadecimal) {
  const auto pointer = std::bit_cast<const int*>(quintptr{0xBEEF});
  expectRows({
      {"pointer", formatLog("%p %@", pointer, pointer), "0xbeef 0xbeef"},
      {"null", formatLog("%p %p", nullptr, static_cast<const int*>(nullptr)), "0x0 0x0"},
  });
}

TEST(LogFormat, MarksAnArgumentThatIsMissing) {
  expectRows({
      {"after the last", formatLog("%@ and %@", "a"), "a and <missing>"},
      {"every kind", formatLog("%d%d%u%x%f%c%p%s", 1),
       "1<missing><missing><missing><missing><missing><missing><missing>"},
      {"star", formatLog("%d %*d", 1), "1 <missing>"},
      {"no argument at all: a text", formatLog("50%d of %@ is 100%"), "50%d of %@ is 100%"},
      {"no argument at all, doubled", formatLog("100%% sure %%@"), "100% sure %@"},
  });
}

TEST(LogFormat, MarksAnArgumentOfAKindThatTheDirectiveCannotShow) {
  expectRows({
      {"text", formatLog("%d %u %f %c %x", "a", "b", "c", "d", "e"),
       "<mismatch> <mismatch> <mismatch> <mismatch> <mismatch>"},
      {"nil", formatLog("%d %f", nullptr, nullptr), "<mismatch> <mismatch>"},
      {"pointer", formatLog("%d", static_cast<const void*>(nullptr)), "<mismatch>"},
      {"not a pointer", formatLog("%p %p", 5, "a"), "<mismatch> <mismatch>"},
      {"text as a width", formatLog("[%*d]", "a", 5), "[5]"},
      {"whole part of a number", formatLog("%d %d %u", 2.9, -2.9, 2.9), "2 -2 2"},
      {"no sign for nothing", formatLog("%d %u", -0.5, -0.5), "0 0"},
      {"negative number", formatLog("%u", -2.5), "<mismatch>"},
      {"number too large", formatLog("%d %d %d", 1e30, std::nan(""), std::numeric_limits<double>::infinity()),
       "<mismatch> <mismatch> <mismatch>"},
      {"number as text", formatLog("%s", 5), "5"},
  });
}

TEST(LogFormat, DropsArgumentsTooMany) {
  expectRows({
      {"one", formatLog("%d", 1, 2, "three"), "1"},
      {"all", formatLog("none", 1, 2), "none"},
      {"empty", formatLog("", 1), ""},
  });
}

TEST(LogFormat, KeepsAPerCentSignThatBeginsNoDirective) {
  expectRows({
      {"at the end", formatLog("%d%", 1), "1%"},
      {"after flags", formatLog("%d %-05", 1), "1 %-05"},
      {"before a length", formatLog("%d %ll", 1), "1 %ll"},
      {"unknown letter", formatLog("%d %y %n", 1, 2), "1 %y %n"},
      {"doubled", formatLog("%d%%%d", 1, 2), "1%2"},
      {"doubled alone", formatLog("%%", 1), "%"},
      {"before a letter beyond ASCII", formatLog("%d %ä", 1), "1 %ä"},
  });
}

TEST(LogFormat, BoundsWidthsAndPrecisions) {
  EXPECT_EQ(formatLog("%99999999999d", 1).size(), 1000);
  EXPECT_EQ(formatLog("%.99999999999d", 1).size(), 1000);
  EXPECT_EQ(formatLog("%*d", std::numeric_limits<qint64>::min(), 1).size(), 1000);
  EXPECT_EQ(formatLog("%*d", std::numeric_limits<quint64>::max(), 1).size(), 1000);
  EXPECT_EQ(formatLog("%.99999999999e", 1.0).size(), 1 + 1 + 1000 + 4);
}

TEST(LogFormat, ShowsACharacterOfNumberZero) {
  const QString text = formatLog("a%cb", 0);
  EXPECT_EQ(text, QString::fromUtf16(u"a\0b", 3));
}

}  // namespace
