#include <cstdlib>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cli/picture/PictureFile.h"

namespace cli {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

constexpr const char* smallDrawing =
    "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"40\" height=\"30\"><rect width=\"40\" height=\"30\"/></svg>";
constexpr bool hasModule = LUMACHECK_PICTURES != 0;

std::uint32_t bigEndianAt(const std::string& bytes, std::size_t at) {
  std::uint32_t value = 0;
  for (std::size_t i = at; i < at + 4; ++i) value = value << 8U | static_cast<std::uint8_t>(bytes.at(i));
  return value;
}

TEST(PictureFile, GoesByTheEndOfAName) {
  EXPECT_FALSE(PictureFile::named("/a.png/b.svg")->isPixels());
  EXPECT_FALSE(PictureFile::named("B.SVG")->isPixels());
  for (const char* const other : {"a.gif", "a", "", "svg", "a.svgz", "a.png/"}) {
    const auto file = PictureFile::named(other);
    ASSERT_FALSE(file) << other;
    EXPECT_EQ(file.error(), "A picture of a scan is an .svg or a .png file.");
  }
}

TEST(PictureFile, LeavesSvgAsItIs) {
  EXPECT_EQ(PictureFile::named("a.svg")->bytesOf(smallDrawing).value(), smallDrawing);
}

TEST(PictureFile, MakesAPngOfTwiceTheSize) {
  if (!hasModule) GTEST_SKIP() << "built without";
  const auto file = PictureFile::named("a.Png");
  ASSERT_TRUE(file);
  EXPECT_TRUE(file->isPixels());
  const auto bytes = file->bytesOf(smallDrawing);
  ASSERT_TRUE(bytes);
  EXPECT_THAT(*bytes, StartsWith("\x89PNG\r\n"));
  EXPECT_EQ(bigEndianAt(*bytes, 16), 80U);
  EXPECT_EQ(bigEndianAt(*bytes, 20), 60U);
}

TEST(PictureFile, SaysWhatIsNoDrawing) {
  if (!hasModule) GTEST_SKIP() << "built without";
  const auto bytes = PictureFile::named("a.png")->bytesOf("no drawing");
  ASSERT_FALSE(bytes);
  EXPECT_THAT(bytes.error(), StartsWith("The picture cannot be made: "));
}

TEST(PictureFile, SaysThatTheModuleIsNotThere) {
  ::setenv("LUMACHECK_MODULES", "/nowhere", 1);
  const auto file = PictureFile::named("a.png");
  ::unsetenv("LUMACHECK_MODULES");
  ASSERT_FALSE(file);
  EXPECT_THAT(file.error(), HasSubstr("not installed"));
  EXPECT_THAT(file.error(), HasSubstr(".svg"));
}

}  // namespace
}  // namespace cli
