#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <cerrno>
#include <map>
#include <ostream>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "SharedFiles/support/QVOSDetect.h"
#include "tests/SharedFiles/QtPrinters.h"

static void PrintTo(const OSVersion& version, std::ostream* out) {
  *out << version.majorVersion << '.' << version.minorVersion << '.' << version.patchVersion;
}

namespace {

using ::testing::HasSubstr;

constexpr std::uint32_t sysv = 0x73797376, sys1 = 0x73797331, sys2 = 0x73797332, sys3 = 0x73797333;

/// Selectors that answer with these numbers, and the others with an error code.
QVOSDetect::Gestalt selectors(std::map<std::uint32_t, std::int32_t> answers, long error = -5551) {
  return [answers = std::move(answers), error](std::uint32_t selector) -> tl::expected<std::int32_t, long> {
    const auto found = answers.find(selector);
    if (found == answers.end()) return tl::unexpected(error);
    return found->second;
  };
}

OSVersion versionFrom(const QVOSDetect::Gestalt& gestalt) {
  unsigned int major = 99, minor = 99, bugFix = 99;
  QVOSDetect::getSystemVersionMajor(&major, &minor, &bugFix, gestalt);
  return {static_cast<int>(major), static_cast<int>(minor), static_cast<int>(bugFix)};
}

TEST(OSDetect, ReadsBinaryCodedDecimals) {
  const struct {
    std::int32_t value;
    OSVersion version;
  } rows[] = {{0x1039, {10, 3, 9}}, {0x1028, {10, 2, 8}}, {0x1000, {10, 0, 0}},   {0x103F, {10, 3, 15}},
              {0x0922, {9, 2, 2}},  {0x0860, {8, 6, 0}},  {0x0FFF, {15, 15, 15}}, {0, {0, 0, 0}}};
  for (const auto& row : rows) EXPECT_EQ(versionFrom(selectors({{sysv, row.value}})), row.version) << row.value;
}

TEST(OSDetect, ReadsTheVersionInPartsAboveTheThreshold) {
  for (const std::int32_t value : {0x1040, 0x1041, 0x1068, 0x1099, 0x7FFFFFFF}) {
    EXPECT_EQ(versionFrom(selectors({{sysv, value}, {sys1, 10}, {sys2, 12}, {sys3, 6}})), (OSVersion{10, 12, 6}));
  }
}

TEST(OSDetect, FallsBackWhenASelectorFails) {
  const struct {
    std::map<std::uint32_t, std::int32_t> answers;
    long error;
    const char* line;
  } rows[] = {
      {{}, -5550, "Unable to obtain system version: -5550\n"},
      {{{sysv, 0x1068}, {sys2, 6}, {sys3, 8}}, -5551, "Unable to obtain system version: -5551\n"},
      {{{sysv, 0x1068}, {sys1, 10}, {sys3, 8}}, -1, "Unable to obtain system version: -1\n"},
      {{{sysv, 0x1068}, {sys1, 10}, {sys2, 6}}, 2147483648L, "Unable to obtain system version: 2147483648\n"},
  };
  for (const auto& row : rows) {
    testing::internal::CaptureStderr();
    EXPECT_EQ(versionFrom(selectors(row.answers, row.error)), (OSVersion{10, 5, 0}));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), row.line);
  }
}

TEST(OSDetect, GivesOnlyTheNumbersAskedFor) {
  unsigned int minor = 0, bugFix = 0;
  QVOSDetect::getSystemVersionMajor(nullptr, &minor, nullptr, selectors({{sysv, 0x1039}}));
  QVOSDetect::getSystemVersionMajor(nullptr, nullptr, &bugFix, selectors({{sysv, 0x1039}}));
  QVOSDetect::getSystemVersionMajor(nullptr, nullptr, nullptr, selectors({{sysv, 0x1039}}));
  EXPECT_EQ(minor, 3u);
  EXPECT_EQ(bugFix, 9u);
}

TEST(OSDetect, ComparesVersionsNumberByNumber) {
  const struct {
    OSVersion running;
    bool atLeast;
  } rows[] = {{{10, 6, 8}, true},  {{10, 6, 7}, false}, {{10, 7, 0}, true}, {{11, 0, 0}, true}, {{10, 6, 9}, true},
              {{10, 5, 9}, false}, {{9, 9, 9}, false},  {{9, 6, 8}, false}, {{0, 0, 0}, false}};
  for (const auto& row : rows) EXPECT_EQ(QVOSDetect::isOSVersionAtLeast(10, 6, 8, row.running), row.atLeast);
}

TEST(OSDetect, KnowsTheFirstVersionOfEachName) {
  const struct {
    bool (*isOrHigher)(const OSVersion&);
    int minor;
  } rows[] = {{QVOSDetect::isLeopardOrHigher, 5},    {QVOSDetect::isSnowLeopardOrHigher, 6},
              {QVOSDetect::isLionOrHigher, 7},       {QVOSDetect::isMountainLionOrHigher, 8},
              {QVOSDetect::isMavericksOrHigher, 9},  {QVOSDetect::isYosemiteOrHigher, 10},
              {QVOSDetect::isElCapitanOrHigher, 11}, {QVOSDetect::isSierraOrHigher, 12}};
  for (const auto& row : rows) {
    EXPECT_TRUE(row.isOrHigher({10, row.minor, 0})) << row.minor;
    EXPECT_TRUE(row.isOrHigher({11, 0, 0})) << row.minor;
    EXPECT_FALSE(row.isOrHigher({10, row.minor - 1, 99})) << row.minor;
  }
}

TEST(OSDetect, WritesTheVersionWithDots) {
  EXPECT_EQ(QVOSDetect::osVersionString({10, 6, 8}), "10.6.8");
  EXPECT_EQ(QVOSDetect::osxVersion({12, 0, 0}), "12.0.0");
}

class OSRelease : public testing::Test {
 protected:
  void put(const char* path, const QByteArray& text) const {
    const QString full = root_.path() + path;
    ASSERT_TRUE(QDir().mkpath(QFileInfo(full).path()));
    QFile file(full);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ASSERT_EQ(file.write(text), text.size());
  }
  tl::expected<OSVersion, int> read() const { return QVOSDetect::operatingSystemVersion(root_.path()); }

  QTemporaryDir root_;
};

TEST_F(OSRelease, GivesItsVersionAsThreeNumbers) {
  const struct {
    const char* text;
    OSVersion version;
  } rows[] = {
      {"NAME=x\nVERSION_ID=\"12\"\nVERSION=\"12 (x)\"\n", {12, 0, 0}},
      {"VERSION_ID=22.04", {22, 4, 0}},
      {"VERSION_ID='15.6'\n", {15, 6, 0}},
      {"VERSION_ID=8.9.1.7\n", {8, 9, 1}},
      {"VERSION_ID=\"3.20.0_alpha\"\r\n", {3, 20, 0}},
      {"VERSION_ID=12.rc1\n", {12, 0, 0}},
      {"VERSION_ID=7.\n", {7, 0, 0}},
      {"VERSION_ID=1.99999999999\n", {1, 0, 0}},
      {"# VERSION_ID=1\n  VERSION_ID=2 \nMY_VERSION_ID=3\n", {2, 0, 0}},
      {"VERSION_ID=1\nVERSION_ID=2\n", {2, 0, 0}},
      {"VERSION_ID=20241201\n", {20241201, 0, 0}},
  };
  for (const auto& row : rows) {
    put("/etc/os-release", row.text);
    EXPECT_EQ(read(), row.version) << row.text;
  }
}

TEST_F(OSRelease, IsReadWhereThePackagesPutItOnlyWhenTheMachineHasNone) {
  put("/usr/lib/os-release", "VERSION_ID=1.2.3\n");
  EXPECT_EQ(read(), (OSVersion{1, 2, 3}));
  put("/etc/os-release", "NAME=x\n");
  EXPECT_EQ(read(), tl::unexpected(ENODATA));
}

TEST_F(OSRelease, TellsWhyThereIsNoVersion) {
  EXPECT_EQ(read(), tl::unexpected(ENOENT));
  const struct {
    const char* text;
    int error;
  } rows[] = {{"", ENODATA},
              {"VERSION_ID=\n", ENODATA},
              {"VERSION_ID=\"\"\n", ENODATA},
              {"VERSION_ID=rolling\n", EINVAL},
              {"VERSION_ID=-1.2\n", EINVAL},
              {"VERSION_ID=.5\n", EINVAL},
              {"VERSION_ID=\"\n", EINVAL},
              {"VERSION_ID=99999999999\n", EINVAL}};
  for (const auto& row : rows) {
    put("/etc/os-release", row.text);
    EXPECT_EQ(read(), tl::unexpected(row.error)) << row.text;
  }
}

TEST(OSDetect, TellsTheVersionOfTheMachine) {
  const auto read = QVOSDetect::operatingSystemVersion();
  testing::internal::CaptureStderr();
  EXPECT_EQ(QVOSDetect::runningVersion(), read.value_or(OSVersion{10, 5, 0}));
  EXPECT_EQ(versionFrom(QVOSDetect::systemGestalt), read.value_or(OSVersion{10, 5, 0}));
  const std::string console = testing::internal::GetCapturedStderr();
  EXPECT_EQ(console.empty(), read.has_value()) << console;
  EXPECT_FALSE(QVOSDetect::systemGestalt(0x73797334));
  EXPECT_TRUE(QVOSDetect::isOSVersionAtLeast(0, 0, 0));
}

}  // namespace
