#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cli/CommandLine.h"

namespace cli {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

CheckOptions checkOptions(const std::vector<std::string>& arguments) {
  const auto line = parseCommandLine(arguments);
  if (!line) throw std::runtime_error(line.error().err);
  return std::get<CheckOptions>(line->command);
}

InfoOptions infoOptions(const std::vector<std::string>& arguments) {
  const auto line = parseCommandLine(arguments);
  if (!line) throw std::runtime_error(line.error().err);
  return std::get<InfoOptions>(line->command);
}

TEST(CommandLine, TakesTheTwoFilesOfACheck) {
  const CheckOptions options = checkOptions({"check", "a.mov", "b.mov"});
  EXPECT_EQ(options.source, "a.mov");
  EXPECT_EQ(options.dest, "b.mov");
  EXPECT_FALSE(options.sourceTime);
  EXPECT_FALSE(options.destTime);
  EXPECT_EQ(options.form, OutputForm::Text);
  EXPECT_EQ(options.exitPolicy, ExitPolicy::ByVerdict);
}

TEST(CommandLine, GivesOneTimeToBothSides) {
  const CheckOptions options = checkOptions({"check", "a", "b", "--at", "12.5"});
  EXPECT_EQ(options.sourceTime->text, "12.5");
  EXPECT_EQ(options.destTime->text, "12.5");
}

TEST(CommandLine, GivesEachSideItsOwnTime) {
  const CheckOptions options = checkOptions({"check", "--source-at=1", "a", "b", "--dest-at", "01:00:00:00"});
  EXPECT_EQ(options.sourceTime->text, "1");
  EXPECT_EQ(options.destTime->text, "01:00:00:00");
  EXPECT_FALSE(checkOptions({"check", "a", "b", "--source-at", "1"}).destTime);
}

TEST(CommandLine, ReadsTheFlags) {
  const CheckOptions options = checkOptions({"check", "--json", "a", "--exit-zero", "b"});
  EXPECT_EQ(options.form, OutputForm::Json);
  EXPECT_EQ(options.exitPolicy, ExitPolicy::ZeroUnlessFailed);
  EXPECT_EQ(infoOptions({"info", "a", "--json", "b"}).form, OutputForm::Json);
  EXPECT_EQ(parseCommandLine({"info", "a", "--log", "[x]"})->logFile, "[x]");
}

TEST(CommandLine, KeepsEveryFileNameAsItIs) {
  const std::vector<std::string> odd{"[a,b].mov", "[a,b]", "[]", "{}",  "\x01[x]",      "check", "info",
                                     "-",         "a\nb",  "%%", "a,b", "\xff\xfe.mov", "\"q\"", ""};
  std::vector<std::string> arguments{"info"};
  arguments.insert(arguments.end(), odd.begin(), odd.end());
  EXPECT_EQ(infoOptions(arguments).files, odd);
  for (const std::string& name : odd) {
    const CheckOptions options = checkOptions({"check", name, name});
    EXPECT_EQ(options.source, name);
    EXPECT_EQ(options.dest, name);
  }
}

TEST(CommandLine, TakesEverythingAfterTwoDashesAsFiles) {
  EXPECT_THAT(infoOptions({"info", "--json", "--", "--json", "-x.mov"}).files, ElementsAre("--json", "-x.mov"));
}

class RefusedCommandLine : public testing::TestWithParam<std::vector<std::string>> {};

TEST_P(RefusedCommandLine, ExitsWithTwoAndTheUsageOnStderr) {
  const auto line = parseCommandLine(GetParam());
  ASSERT_FALSE(line);
  EXPECT_EQ(line.error().status, 2);
  EXPECT_EQ(line.error().out, "");
  EXPECT_THAT(line.error().err, testing::StartsWith("lumacheck: "));
  EXPECT_THAT(line.error().err, HasSubstr("Usage: lumacheck"));
}

INSTANTIATE_TEST_SUITE_P(Cases, RefusedCommandLine,
                         testing::Values(std::vector<std::string>{"frobnicate", "a", "b"},
                                         std::vector<std::string>{"check"}, std::vector<std::string>{"check", "a"},
                                         std::vector<std::string>{"check", "a", "b", "c"},
                                         std::vector<std::string>{"info"},
                                         std::vector<std::string>{"check", "a", "b", "--frobnicate"},
                                         std::vector<std::string>{"check", "a", "b", "--at", "1", "--source-at", "2"},
                                         std::vector<std::string>{"check", "a", "b", "--dest-at", "1", "--at", "2"},
                                         std::vector<std::string>{"check", "a", "b", "--at", "1", "--at", "2"},
                                         std::vector<std::string>{"check", "a", "b", "--at"},
                                         std::vector<std::string>{"check", "a", "b", "--at", "nan"},
                                         std::vector<std::string>{"check", "a", "b", "--at", "1e999"},
                                         std::vector<std::string>{"check", "a", "b", "--at", "soon"},
                                         std::vector<std::string>{"check", "a", "b", "--at", "[1]"},
                                         std::vector<std::string>{"check", "a", "b", "--at", ""},
                                         std::vector<std::string>{"check", "a", "b", "--source-at", "aa:bb"},
                                         std::vector<std::string>{"info", "a", "--at", "1"},
                                         std::vector<std::string>{"check", "a", "b", "--json=maybe"}));

TEST(CommandLine, OpensTheWindowOnAtMostTwoFiles) {
  const auto filesOf = [](const std::vector<std::string>& arguments) {
    const auto line = parseCommandLine(arguments);
    EXPECT_TRUE(line);
    return std::get<WindowOptions>(line->command).files;
  };
  using Files = std::vector<std::string>;
  EXPECT_EQ(filesOf({}), Files{});
  EXPECT_EQ(filesOf({"a.mov"}), Files{"a.mov"});
  EXPECT_EQ(filesOf({"[a].mov", "./check"}), (Files{"[a].mov", "./check"}));
  EXPECT_EQ(filesOf({"--", "check", "-x.mov"}), (Files{"check", "-x.mov"}));
}

TEST(CommandLine, PrintsHelpOnStdout) {
  for (const std::vector<std::string>& arguments :
       {std::vector<std::string>{"--help"}, {"check", "--help"}, {"info", "-h"}}) {
    const auto line = parseCommandLine(arguments);
    ASSERT_FALSE(line);
    EXPECT_EQ(line.error().status, 0);
    EXPECT_EQ(line.error().err, "");
    EXPECT_THAT(line.error().out, HasSubstr("Usage: lumacheck"));
  }
  EXPECT_THAT(parseCommandLine({"check", "--help"}).error().out, HasSubstr("--source-at"));
}

TEST(CommandLine, PrintsTheVersionOnStdout) {
  const auto line = parseCommandLine({"--version"});
  ASSERT_FALSE(line);
  EXPECT_EQ(line.error().status, 0);
  EXPECT_THAT(line.error().out, testing::MatchesRegex("lumacheck [0-9]+\\.[0-9]+\\.[0-9]+\n"));
}

}  // namespace
}  // namespace cli
