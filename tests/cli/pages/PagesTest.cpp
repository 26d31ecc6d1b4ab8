#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cli/pages/Pages.h"

namespace cli::pages {
namespace {

using testing::HasSubstr;
using testing::Not;

/// A command with what shells and roff have to have quoted.
CommandDescription oddCommand() {
  CommandDescription command{"tool", "Does it", {{{"-h", "--help"}, Value::None, "", "Print help", {}}}, {}, {}, {}};
  CommandDescription odd;
  odd.name = "go";
  odd.description = "It's a [test]: 1\\2";
  odd.options = {{{"--odd"}, Value::None, "", "'It's [not]: a \\ path", {"--even"}},
                 {{"--even"}, Value::Time, "T", ".When", {"--odd"}},
                 {{"--to"}, Value::File, "OUT", "Where", {}}};
  odd.arguments = {{"FILE", "The: file's name", true, true}};
  odd.exits = {{0, "done"}, {7, ".dots - and 'quotes'"}};
  command.subcommands = {odd};
  return command;
}

std::string page(const std::string& text) {
  return manualPage(oddCommand(), {"1.2.3", "2026-11-21"}, text);
}

TEST(ManualPage, KeepsProseAsItIs) {
  EXPECT_EQ(page(".SH A\nb @NAME@ c\n\\- d\n"), ".SH A\nb @NAME@ c\n\\- d\n");
  EXPECT_EQ(page(""), "");
}

TEST(ManualPage, HasTheReleaseInItsTitle) {
  EXPECT_EQ(page("@TITLE@\n"), ".TH TOOL 1 \"2026-11-21\" \"Lumacheck 1.2.3\" \"User Commands\"\n");
}

TEST(ManualPage, NamesTheCommandInOneLine) {
  EXPECT_EQ(page("@NAME@\n"), "tool \\- does it\n");
}

TEST(ManualPage, ShowsEveryFormInTheSynopsis) {
  const std::string synopsis = page("@SYNOPSIS@\n");
  EXPECT_THAT(synopsis, HasSubstr("\\fBtool go\\fR \\fIFILE\\fR ...\\&\n[\\fB\\-\\-odd\\fR]\n"));
  EXPECT_THAT(synopsis, HasSubstr("[\\fB\\-\\-even\\fR \\fIT\\fR]\n[\\fB\\-\\-to\\fR \\fIOUT\\fR]\n"));
}

TEST(ManualPage, PutsTextWhereRoffTakesItForNoRequest) {
  const std::string commands = page("@COMMANDS@\n");
  EXPECT_THAT(commands, HasSubstr("\n\\&'It's [not]: a \\e path.\nNot together with \\fB\\-\\-even\\fR.\n"));
  EXPECT_THAT(commands, HasSubstr("\n\\&.When.\n"));
  EXPECT_THAT(commands, HasSubstr("\nIt's a [test]: 1\\e2.\n"));
  EXPECT_THAT(page("@EXIT STATUS@\n"), HasSubstr(".TP\n\\fB7\\fR\n\\&.dots \\- and 'quotes'\n"));
}

TEST(BashCompletion, HoldsTheOptionsByWhatTheyTake) {
  const std::string text = bashCompletion(oddCommand());
  EXPECT_THAT(text, HasSubstr("--even | --to) taking=$word ;;"));
  EXPECT_THAT(text, HasSubstr("\n        --even) return ;;\n        --to) _filedir; return ;;\n"));
  EXPECT_THAT(text, HasSubstr("go) options=' --odd  --even  --to ' most=-1 ;;"));
  EXPECT_THAT(text, HasSubstr("go--odd) settled='--odd --even' ;;"));
  EXPECT_THAT(text, HasSubstr("complete -F _tool tool\n"));
}

TEST(ZshCompletion, QuotesDescriptions) {
  const std::string text = zshCompletion(oddCommand());
  EXPECT_THAT(text, HasSubstr("'go:It'\\''s a [test]: 1\\2'"));
  EXPECT_THAT(text, HasSubstr("'(--odd --even)--odd['\\''It'\\''s \\[not\\]: a \\\\ path]'"));
  EXPECT_THAT(text, HasSubstr("'*:The\\: file'\\''s name:_tool_movies'"));
}

TEST(FishCompletion, QuotesDescriptions) {
  const std::string text = fishCompletion(oddCommand());
  EXPECT_THAT(text, HasSubstr("-a go -d 'It\\'s a [test]: 1\\\\2'\n"));
  EXPECT_THAT(text, HasSubstr("-l odd -d '\\'It\\'s [not]: a \\\\ path'\n"));
  EXPECT_THAT(text, HasSubstr("-l even -x -d '.When'\n"));
  EXPECT_THAT(text, HasSubstr("-l to -r -F -d 'Where'\n"));
}

TEST(Completions, LeaveNoPlaceholderBehind) {
  GivenOptions given;
  for (const auto& complete : {bashCompletion, zshCompletion, fishCompletion}) {
    const std::string text = complete(commandInterface(given));
    EXPECT_THAT(text, Not(testing::ContainsRegex("@[A-Z]+@")));
    EXPECT_THAT(text, HasSubstr("--source-at"));
  }
}

}  // namespace
}  // namespace cli::pages
