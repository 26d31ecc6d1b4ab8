#include <filesystem>
#include <fstream>

#include <gmock/gmock.h>

#include "tests/cli/PrintedJson.h"
#include "tests/cli/SyncFixture.h"

// `lumacheck sync` from end to end, on movies whose atoms are built here.

namespace cli::test {
namespace {

using testing::HasSubstr;

TEST_F(SyncCommand, CopiesTheMetadataAndSavesInPlace) {
  const ProgramRun run = runLumacheck({"sync", source_.path(), dest_.path()});
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_THAT(run.out, HasSubstr("gamma: 1.8 (117965/65536) -> 2.2 (144179/65536)\n"));
  EXPECT_THAT(run.out, HasSubstr("Saved: " + dest_.path() + "\n"));
  EXPECT_EQ(descriptionIn(dest_.path()).gamma(), gamma22);
  const ProgramRun again = runLumacheck({"sync", source_.path(), dest_.path()});
  EXPECT_EQ(again.status, 0);
  EXPECT_EQ(again.out, "Nothing to change.\n");
}

TEST_F(SyncCommand, TellsAProgram) {
  const PrintedJson result = PrintedJson::parse(runLumacheck({"sync", source_.path(), dest_.path(), "--json"}).out);
  EXPECT_EQ(result.dump(),
            R"({"schema":"lumacheck.sync/1","source":")" + source_.path() + R"(","dest":")" + dest_.path() +
                R"(","changes":[{"property":"gamma","action":"set","before":1.8,"after":2.2,"error":null}],)" +
                R"("saved":true,"path":")" + dest_.path() + R"(","exitStatus":0})");
}

TEST_F(SyncCommand, OnlyTellsInADryRun) {
  const ProgramRun run = runLumacheck({"sync", source_.path(), dest_.path(), "--dry-run"});
  EXPECT_EQ(run.status, 0);
  EXPECT_THAT(run.out, HasSubstr("gamma: 1.8 (117965/65536) -> 2.2 (144179/65536)\nNot saved"));
  EXPECT_EQ(contents(dest_.path()), before_);
}

TEST_F(SyncCommand, WritesAFlattenedCopy) {
  const std::string copy = dest_.path() + ".copy.mov";
  const ProgramRun run = runLumacheck({"sync", source_.path(), dest_.path(), "--save-as", copy});
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(contents(dest_.path()), before_);
  EXPECT_EQ(descriptionIn(copy).gamma(), gamma22);
  const ProgramRun again = runLumacheck({"sync", source_.path(), dest_.path(), "--save-as", copy});
  EXPECT_EQ(again.status, 2);
  EXPECT_THAT(again.err, HasSubstr("not overwritten"));
  std::filesystem::remove(copy);
}

TEST_F(SyncCommand, OverwritesNoInput) {
  for (const std::string& target : {source_.path(), dest_.path()}) {
    const ProgramRun run = runLumacheck({"sync", source_.path(), dest_.path(), "--save-as", target});
    EXPECT_EQ(run.status, 2);
    EXPECT_THAT(run.err, HasSubstr("not overwritten"));
  }
  EXPECT_EQ(contents(dest_.path()), before_);
}

TEST_F(SyncCommand, SaysThatATagIsStillThere) {
  const TemporaryFile bare(movieOf({}));
  const ProgramRun run = runLumacheck({"sync", bare.path(), dest_.path()});
  EXPECT_EQ(run.status, 2);
  EXPECT_THAT(run.err, HasSubstr("color parameters, and the destination's could not be removed: it is still there."));
  EXPECT_THAT(run.out, HasSubstr("gamma: 1.8 (117965/65536) -> none"));
  EXPECT_EQ(descriptionIn(dest_.path()).gamma(), std::nullopt);
  EXPECT_TRUE(descriptionIn(dest_.path()).nclc());
}

TEST_F(SyncCommand, RefusesWithASentence) {
  const TemporaryFile sound(movieOf({}, "soun")), noMovie({'n', 'o'});
  struct Row {
    std::string source, dest;
    const char* sentence;
  };
  const Row rows[] = {{"/nowhere.mov", dest_.path(), "/nowhere.mov"},
                      {source_.path(), noMovie.path(), "movie atom"},
                      {sound.path(), dest_.path(), "no video track"},
                      {source_.path(), sound.path(), "no video track"}};
  for (const Row& row : rows) {
    const ProgramRun run = runLumacheck({"sync", row.source, row.dest});
    EXPECT_EQ(run.status, 2) << row.sentence;
    EXPECT_THAT(run.err, HasSubstr(row.sentence));
    EXPECT_EQ(run.out, "");
  }
  EXPECT_EQ(contents(dest_.path()), before_);
}

TEST_F(SyncCommand, RefusesAFileThatCannotBeSavedInPlace) {
  std::ofstream(dest_.path(), std::ios::binary | std::ios::app) << "odd bytes";
  const std::string odd = contents(dest_.path());
  const ProgramRun run = runLumacheck({"sync", source_.path(), dest_.path()});
  EXPECT_EQ(run.status, 2);
  EXPECT_NE(run.err, "");
  EXPECT_THAT(run.out, HasSubstr("Not saved.\n"));
  EXPECT_EQ(contents(dest_.path()), odd);
}

}  // namespace
}  // namespace cli::test
