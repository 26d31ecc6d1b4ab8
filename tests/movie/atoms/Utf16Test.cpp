#include <gtest/gtest.h>

#include "movie/atoms/Utf16.h"

namespace movie {
namespace {

TEST(Utf16, BecomesUtf8) {
  EXPECT_EQ(utf8Of(u""), "");
  EXPECT_EQ(utf8Of(u"A\u007F\u0080\u07FF\u0800\uFFFF"), "A\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF");
  EXPECT_EQ(utf8Of(u"\U00010000\U0010FFFF"), "\xF0\x90\x80\x80\xF4\x8F\xBF\xBF");
}

TEST(Utf16, HasAReplacementForALoneSurrogate) {
  const std::u16string high(1, 0xD800), low(1, 0xDC00);
  for (const std::u16string& lone : {high, low}) {
    EXPECT_EQ(utf8Of(lone), "\xEF\xBF\xBD");
    EXPECT_EQ(utf8Of(lone + u"A"),
              "\xEF\xBF\xBD"
              "A");
  }
  EXPECT_EQ(utf8Of(low + high), "\xEF\xBF\xBD\xEF\xBF\xBD");
}

}  // namespace
}  // namespace movie
