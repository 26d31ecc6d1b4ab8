#include <climits>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "SharedFiles/privileged/ToolCommand.h"

namespace privileged {

namespace {

using ::testing::ElementsAre;
using Line = std::vector<std::string>;

TEST(ToolCommand, IsOneOfFiveForms) {
  struct Row {
    Line line;
    Tool tool;
    std::size_t paths;
  };
  const std::vector<Row> rows = {{{"/bin/rm", "-Rdf", "/a"}, Tool::remove, 1},
                                 {{"/bin/rm", "-R", "-f", "/a"}, Tool::remove, 1},
                                 {{"/bin/mv", "-f", "/a", "/b"}, Tool::move, 2},
                                 {{"/bin/cp", "-f", "-p", "-R", "/a", "/b"}, Tool::copy, 2},
                                 {{"/bin/mkdir", "-p", "/a"}, Tool::createFolder, 1}};
  for (const Row& row : rows) {
    const auto command = parseToolCommand(row.line);
    ASSERT_TRUE(command.has_value()) << testing::PrintToString(row.line);
    EXPECT_EQ(command->tool, row.tool);
    EXPECT_EQ(command->program, Line(row.line.begin(), row.line.end() - static_cast<std::ptrdiff_t>(row.paths)));
    EXPECT_EQ(command->paths, Line(row.line.end() - static_cast<std::ptrdiff_t>(row.paths), row.line.end()));
  }
}

TEST(ToolCommand, IsNothingElse) {
  const std::vector<Line> lines = {{},
                                   {"/bin/rm"},
                                   {"/bin/rm", "-Rdf"},
                                   {"/bin/rm", "/a"},
                                   {"/bin/rm", "-Rdf", "/a", "/b"},
                                   {"/bin/rm", "-rf", "/a"},
                                   {"/bin/rm", "-f", "-R", "/a"},
                                   {"/bin/rm", "-R", "-f", "--no-preserve-root", "/"},
                                   {"/usr/bin/rm", "-Rdf", "/a"},
                                   {"rm", "-Rdf", "/a"},
                                   {"/bin/../bin/rm", "-Rdf", "/a"},
                                   {"/bin/mv", "/a", "/b"},
                                   {"/bin/mv", "-f", "/a"},
                                   {"/bin/mv", "-f", "-t", "/a", "/b"},
                                   {"/bin/cp", "-f", "-p", "-R", "/a"},
                                   {"/bin/cp", "-R", "/a", "/b"},
                                   {"/bin/cp", "-f", "-p", "-R", "-L", "/a", "/b"},
                                   {"/bin/mkdir", "/a"},
                                   {"/bin/mkdir", "-p", "-m", "4777", "/a"},
                                   {"/bin/sh", "-c", "id"},
                                   {"/bin/chmod", "-R", "/a"},
                                   {"", "-Rdf", "/a"}};
  for (const Line& line : lines) EXPECT_FALSE(parseToolCommand(line).has_value()) << testing::PrintToString(line);
}

TEST(PlainPath, IsAbsoluteAndTakesNoWayAround) {
  for (const char* path : {"/", "/a", "/a/b", "/a b/$(id)", "/a/-rf", "/a\nb", "/...", "/a/.b", "/a/b..", "/\xC3\xA4"})
    EXPECT_TRUE(isPlainPath(path)) << path;
  for (const char* path :
       {"",     "a",     "-rf",  "./a",   "~/a",     "//",     "/a/",   "//a",     "/a//b",         "/.",       "/..",
        "/a/.", "/a/..", "/./a", "/../a", "/a/../b", "/a/./b", "/\xE4", "/a/\xC3", "/\xED\xA0\x80", "/\xC0\xAF"})
    EXPECT_FALSE(isPlainPath(path)) << path;
  EXPECT_FALSE(isPlainPath(std::string("/a\0b", 4)));
  EXPECT_FALSE(isPlainPath("/" + std::string(PATH_MAX, 'a')));
  EXPECT_TRUE(isPlainPath("/" + std::string(PATH_MAX - 2, 'a')));
}

TEST(PlainPath, HasTheComponentsBetweenItsSlashes) {
  EXPECT_THAT(componentsOf("/"), ElementsAre());
  EXPECT_THAT(componentsOf("/a"), ElementsAre("a"));
  EXPECT_THAT(componentsOf("/a/b c"), ElementsAre("a", "b c"));
  EXPECT_THAT(componentsOf("/a//b/"), ElementsAre("a", "", "b", ""));
}

}  // namespace

}  // namespace privileged
