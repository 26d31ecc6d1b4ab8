#include <algorithm>
#include <stdexcept>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cli/CommandInterface.h"
#include "cli/CommandLine.h"

namespace cli {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

CommandDescription wholeInterface() {
  static GivenOptions given;
  return commandInterface(given);
}

CommandDescription subcommand(const std::string& name) {
  const CommandDescription command = wholeInterface();
  const auto found = std::find_if(command.subcommands.begin(), command.subcommands.end(),
                                  [&](const CommandDescription& each) { return each.name == name; });
  if (found == command.subcommands.end()) throw std::runtime_error("no subcommand " + name);
  return *found;
}

OptionDescription option(const CommandDescription& command, const std::string& name) {
  const auto found = std::find_if(command.options.begin(), command.options.end(), [&](const OptionDescription& each) {
    return std::find(each.names.begin(), each.names.end(), name) != each.names.end();
  });
  if (found == command.options.end()) throw std::runtime_error("no option " + name);
  return *found;
}

std::vector<std::string> longNames(const CommandDescription& command) {
  std::vector<std::string> names;
  for (const OptionDescription& each : command.options) names.push_back(each.names.back());
  return names;
}

TEST(CommandInterface, HoldsTheCommandAndItsSubcommands) {
  const CommandDescription command = wholeInterface();
  EXPECT_EQ(command.name, "lumacheck");
  EXPECT_EQ(command.description, "Tells whether a movie suffers a gamma shift against its source");
  EXPECT_THAT(longNames(command), ElementsAre("--help", "--version"));
  std::vector<std::string> names;
  for (const CommandDescription& each : command.subcommands) names.push_back(each.name);
  EXPECT_THAT(names, ElementsAre("check", "scan", "info", "sync"));
}

TEST(CommandInterface, HoldsEveryOptionOfASubcommand) {
  EXPECT_THAT(longNames(subcommand("check")),
              UnorderedElementsAre("--help", "--at", "--source-at", "--dest-at", "--align", "--frames", "--tolerance",
                                   "--exit-zero", "--json", "--log"));
  EXPECT_THAT(longNames(subcommand("scan")),
              UnorderedElementsAre("--help", "--from", "--to", "--sample", "--no-align", "--csv", "--filter", "--lut",
                                   "--proof", "--plot", "--resume", "--exit-zero", "--json", "--log"));
  EXPECT_THAT(longNames(subcommand("info")), UnorderedElementsAre("--help", "--json", "--log"));
  EXPECT_THAT(longNames(subcommand("sync")),
              UnorderedElementsAre("--help", "--save-as", "--dry-run", "--json", "--log"));
}

TEST(CommandInterface, TellsWhatAnOptionTakes) {
  struct Row {
    const char *command, *option;
    Value value;
    const char* valueName;
  };
  const Row rows[] = {
      {"check", "--at", Value::Time, "T"},       {"check", "--source-at", Value::Time, "T"},
      {"check", "--dest-at", Value::Time, "T"},  {"check", "--json", Value::None, ""},
      {"check", "--frames", Value::Number, "N"}, {"check", "--tolerance", Value::Number, "CODES"},
      {"check", "--help", Value::None, ""},      {"check", "--exit-zero", Value::None, ""},
      {"info", "--log", Value::File, "FILE"},    {"sync", "--save-as", Value::File, "OUT"},
      {"sync", "--dry-run", Value::None, ""},
  };
  for (const Row& row : rows) {
    const OptionDescription described = option(subcommand(row.command), row.option);
    EXPECT_EQ(described.value, row.value) << row.command << ' ' << row.option;
    EXPECT_EQ(described.valueName, row.valueName) << row.command << ' ' << row.option;
    EXPECT_NE(described.description, "") << row.command << ' ' << row.option;
  }
}

TEST(CommandInterface, TellsWhichOptionsExcludeEachOther) {
  EXPECT_THAT(option(subcommand("check"), "--at").excludes, ElementsAre("--dest-at", "--source-at"));
  EXPECT_THAT(option(subcommand("check"), "--source-at").excludes, ElementsAre("--align", "--at"));
  EXPECT_THAT(option(subcommand("check"), "--align").excludes, ElementsAre("--frames", "--source-at"));
  EXPECT_THAT(option(subcommand("check"), "--json").excludes, IsEmpty());
}

TEST(CommandInterface, TellsWhichMoviesHaveToBeNamedAndHowMany) {
  const CommandDescription command = wholeInterface();
  ASSERT_EQ(command.arguments.size(), 2U);
  EXPECT_EQ(command.arguments[0].name, "SOURCE");
  EXPECT_FALSE(command.arguments[0].required);
  EXPECT_FALSE(command.arguments[1].repeated);

  const CommandDescription check = subcommand("check");
  ASSERT_EQ(check.arguments.size(), 2U);
  EXPECT_EQ(check.arguments[1].name, "DEST");
  EXPECT_TRUE(check.arguments[1].required);
  EXPECT_FALSE(check.arguments[1].repeated);

  const CommandDescription info = subcommand("info");
  ASSERT_EQ(info.arguments.size(), 1U);
  EXPECT_TRUE(info.arguments[0].required);
  EXPECT_TRUE(info.arguments[0].repeated);
}

TEST(CommandInterface, HoldsTheExitStatusesInOrder) {
  for (const char* name : {"check", "info", "sync"}) {
    const CommandDescription command = subcommand(name);
    std::vector<int> statuses;
    for (const ExitDescription& each : command.exits) {
      statuses.push_back(each.status);
      EXPECT_NE(each.meaning, "");
    }
    EXPECT_TRUE(std::is_sorted(statuses.begin(), statuses.end())) << name;
    EXPECT_THAT(statuses,
                testing::AllOf(testing::Contains(noShift), testing::Contains(failure), testing::Contains(interrupted)))
        << name;
  }
  EXPECT_EQ(subcommand("check").exits.size(), 6U);
}

TEST(CommandInterface, TheHelpTellsTheSameExitStatuses) {
  for (const char* name : {"check", "info", "sync"}) {
    std::string help = parseCommandLine({name, "--help"}).error().out;
    std::replace(help.begin(), help.end(), '\n', ' ');
    for (const ExitDescription& each : subcommand(name).exits)
      EXPECT_THAT(help, testing::HasSubstr(std::to_string(each.status) + ' ' + each.meaning)) << name;
  }
}

TEST(CommandInterface, TheHelpStaysWithinATerminalsWidth) {
  for (const char* name : {"check", "info", "sync"}) {
    const std::string help = parseCommandLine({name, "--help"}).error().out;
    const std::string footer = help.substr(help.find("Exit status:"));
    for (std::size_t start = 0; start < footer.size();) {
      const std::size_t end = std::min(footer.find('\n', start), footer.size());
      EXPECT_LE(end - start, 92U) << name;
      start = end + 1;
    }
  }
}

}  // namespace
}  // namespace cli
