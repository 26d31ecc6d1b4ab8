#include <gtest/gtest.h>

#include "cli/plot/SvgText.h"

namespace cli {
namespace {

TEST(SvgText, EscapesWhatMarksUp) {
  EXPECT_EQ(xmlText("a<b & \"c\">d"), "a&lt;b &amp; &quot;c&quot;&gt;d");
}

TEST(SvgText, KeepsWholeCharactersOfAnyLanguage) {
  EXPECT_EQ(xmlText("Grün 映画 🎬"), "Grün 映画 🎬");
}

TEST(SvgText, ReplacesWhatXmlHasNoPlaceFor) {
  EXPECT_EQ(xmlText(std::string("a\x01z\x1b[1m\0b", 9)),
            "a\xef\xbf\xbdz\xef\xbf\xbd[1m\xef\xbf\xbd"
            "b");
  EXPECT_EQ(xmlText("\xef\xbf\xbe"), "\xef\xbf\xbd");
}

TEST(SvgText, ReplacesWhatIsNoUtf8) {
  const std::string r = "\xef\xbf\xbd";
  EXPECT_EQ(xmlText("\xff"), r);
  EXPECT_EQ(xmlText("a\xc3"), "a" + r);
  EXPECT_EQ(xmlText("\xc0\xaf"), r + r) << "a slash in two bytes";
  EXPECT_EQ(xmlText("\xe0\x80\xaf"), r) << "a slash in three bytes";
  EXPECT_EQ(xmlText("\xed\xa0\x80"), r) << "half of a pair";
  EXPECT_EQ(xmlText("\xf4\x90\x80\x80"), r) << "beyond the last character";
}

TEST(SvgText, ShortensInTheMiddleByWholeCharacters) {
  EXPECT_EQ(shortened("short", 5), "short");
  EXPECT_EQ(shortened("longer one", 7), "lon\xe2\x80\xa6one");
  EXPECT_EQ(shortened("äöüäöü", 4), "äö\xe2\x80\xa6ü");
}

TEST(SvgText, WritesLengthsToAHundredth) {
  EXPECT_EQ(svgLength(12), "12");
  EXPECT_EQ(svgLength(12.5), "12.5");
  EXPECT_EQ(svgLength(1.0 / 3), "0.33");
  EXPECT_EQ(svgLength(-0.001), "0");
}

TEST(SvgText, WritesElements) {
  EXPECT_EQ(svgText({1, 2}, "soft", SvgAnchor::End, "<"),
            "<text x=\"1\" y=\"2\" class=\"soft\" text-anchor=\"end\">&lt;</text>\n");
  EXPECT_EQ(svgBox({1, 2, 3, 4}, "frame"), "<rect x=\"1\" y=\"2\" width=\"3\" height=\"4\" class=\"frame\"/>\n");
}

}  // namespace
}  // namespace cli
