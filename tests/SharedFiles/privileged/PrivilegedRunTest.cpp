#include <algorithm>
#include <filesystem>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/SharedFiles/privileged/Sandbox.h"

namespace privileged {

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class PrivilegedRuns : public Sandbox {};

// --- What is done ---------------------------------------------------------------------------------------------------

TEST_F(PrivilegedRuns, RemoveFilesAndWholeFolders) {
  write("file", "1");
  write("folder/sub/file", "2");
  makeFolder("empty");
  for (const char* name : {"file", "folder", "empty"}) {
    EXPECT_EQ(remove(name), 0) << name;
    EXPECT_FALSE(stands(name)) << name;
  }
  write("other/file", "3");
  EXPECT_EQ(run({"/bin/rm", "-R", "-f", at("other")}), 0);
  EXPECT_FALSE(stands("other"));
  EXPECT_EQ(started(), 4);
}

TEST_F(PrivilegedRuns, CountARemovalOfNothingAsDone) {
  EXPECT_EQ(remove("absent"), 0);
  EXPECT_EQ(started(), 1);
}

TEST_F(PrivilegedRuns, MoveOverAFileAndIntoAFolder) {
  write("a", "new");
  write("b", "old");
  EXPECT_EQ(move("a", "b"), 0);
  EXPECT_EQ(read("b"), "new");
  EXPECT_FALSE(stands("a"));
  makeFolder("into");
  EXPECT_EQ(move("b", "into"), 0);
  EXPECT_EQ(read("into/b"), "new");
  EXPECT_EQ(move("into", "renamed"), 0);
  EXPECT_EQ(read("renamed/b"), "new");
  EXPECT_THAT(namesIn(""), ElementsAre("protected", "renamed"));
}

TEST_F(PrivilegedRuns, CopyWithModesTimesAndLinks) {
  write("from/file", "content");
  link("nowhere", "from/link");
  ASSERT_EQ(::chmod(at("from/file").c_str(), 0640), 0);
  const timespec times[2] = {{1000, 0}, {2000, 0}};
  ASSERT_EQ(::utimensat(AT_FDCWD, at("from/file").c_str(), times, 0), 0);
  EXPECT_EQ(copy("from", "to"), 0);
  struct stat status {};
  ASSERT_EQ(::stat(at("to/file").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777, 0640U);
  EXPECT_EQ(status.st_mtim.tv_sec, 2000);
  EXPECT_EQ(std::filesystem::read_symlink(at("to/link")), "nowhere");
  EXPECT_EQ(read("from/file"), "content");
  makeFolder("into");
  EXPECT_EQ(copy("from", "into"), 0);
  EXPECT_EQ(read("into/from/file"), "content");
  EXPECT_THAT(namesIn(""), ElementsAre("from", "into", "protected", "to"));
}

TEST_F(PrivilegedRuns, MakeTheFoldersThatAreMissing) {
  EXPECT_EQ(makeFolders("a/b/c"), 0);
  EXPECT_TRUE(std::filesystem::is_directory(at("a/b/c")));
  EXPECT_EQ(makeFolders("a/b/c"), 0);
  EXPECT_EQ(started(), 2);
}

TEST_F(PrivilegedRuns, TakeEveryNameAsData) {
  for (const std::string name :
       {"-rf", "a;id", "$(id)", "two\nlines", " blanks ", "*", "--help", "\xC3\xA4", "'\"\\"}) {
    write("in/" + name, name);
    EXPECT_EQ(copy("in/" + name, "in/copy of it"), 0) << name;
    EXPECT_EQ(read("in/copy of it"), name);
    EXPECT_EQ(move("in/" + name, "out" + name), 0) << name;
    EXPECT_EQ(read("out" + name), name);
    EXPECT_EQ(makeFolders("made/" + name), 0) << name;
    EXPECT_TRUE(std::filesystem::is_directory(at("made/" + name)));
    EXPECT_EQ(remove("out" + name), 0) << name;
    EXPECT_EQ(remove("made/" + name), 0) << name;
  }
  EXPECT_THAT(namesIn("in"), ElementsAre("copy of it"));
  EXPECT_THAT(namesIn("made"), IsEmpty());
}

// --- What is refused, before anything runs --------------------------------------------------------------------------

TEST_F(PrivilegedRuns, RefuseOtherCommandsAndOtherPaths) {
  write("file", "1");
  EXPECT_EQ(run({}), refused(ExitStatus::usage));
  EXPECT_EQ(run({"/bin/sh", "-c", "rm " + at("file")}), refused(ExitStatus::usage));
  EXPECT_EQ(run({"/bin/rm", "-Rdf", "file"}), refused(ExitStatus::badPath));
  EXPECT_EQ(run({"/bin/rm", "-Rdf", at("file") + "/"}), refused(ExitStatus::badPath));
  EXPECT_EQ(run({"/bin/rm", "-Rdf", at("x/../file")}), refused(ExitStatus::badPath));
  EXPECT_EQ(run({"/bin/mv", "-f", at("file"), at("./moved")}), refused(ExitStatus::badPath));
  EXPECT_EQ(run({"/bin/cp", "-f", "-p", "-R", at("file"), at("\xE4")}), refused(ExitStatus::badPath));
  EXPECT_EQ(run({"/bin/mv", "-f", "/", at("all")}), refused(ExitStatus::protectedPlace));
  EXPECT_EQ(started(), 0);
  EXPECT_EQ(read("file"), "1");
}

TEST_F(PrivilegedRuns, RefuseWhatIsProtected) {
  write("file", "1");
  EXPECT_EQ(remove("protected"), refused(ExitStatus::protectedPlace));
  EXPECT_EQ(remove("protected/precious"), refused(ExitStatus::protectedPlace));
  EXPECT_EQ(move("protected", "elsewhere"), refused(ExitStatus::protectedPlace));
  EXPECT_EQ(move("file", "protected/precious"), refused(ExitStatus::protectedPlace));
  EXPECT_EQ(copy("file", "protected/precious"), refused(ExitStatus::protectedPlace));
  EXPECT_EQ(started(), 0);
  EXPECT_EQ(read("protected/precious"), "precious");
}

TEST_F(PrivilegedRuns, RefuseAProtectedFolderUnderAnyName) {
  PrivilegedRun known = settings();
  known.places.isProtected = [](const std::string&) { return false; };
  EXPECT_EQ(runPrivileged({"/bin/rm", "-Rdf", at("protected")}, known), refused(ExitStatus::protectedPlace));
  EXPECT_EQ(runPrivileged({"/bin/mv", "-f", at("protected"), at("moved")}, known), refused(ExitStatus::protectedPlace));
  EXPECT_EQ(started(), 0);
}

TEST_F(PrivilegedRuns, RefuseEveryLinkOnTheWay) {
  write("real/victim", "1");
  link("protected", "toProtected");
  link(at("real"), "toReal");
  EXPECT_EQ(remove("toProtected/precious"), refused(ExitStatus::changed));
  EXPECT_EQ(remove("toReal/victim"), refused(ExitStatus::changed));
  EXPECT_EQ(move("toProtected/precious", "mine"), refused(ExitStatus::changed));
  EXPECT_EQ(copy("toProtected/precious", "mine"), refused(ExitStatus::changed));
  EXPECT_EQ(move("real/victim", "toProtected/precious"), refused(ExitStatus::changed));
  EXPECT_EQ(copy("real/victim", "toProtected/new"), refused(ExitStatus::changed));
  EXPECT_EQ(makeFolders("toProtected/new/er"), refused(ExitStatus::changed));
  EXPECT_EQ(started(), 0);
  EXPECT_THAT(namesIn("protected"), ElementsAre("precious"));
  EXPECT_EQ(read("real/victim"), "1");
}

TEST_F(PrivilegedRuns, RefuseWhatIsMissing) {
  write("file", "1");
  EXPECT_EQ(remove("absent/file"), refused(ExitStatus::notThere));
  EXPECT_EQ(remove("file/below"), refused(ExitStatus::notThere));
  EXPECT_EQ(move("absent", "b"), refused(ExitStatus::notThere));
  EXPECT_EQ(copy("absent", "b"), refused(ExitStatus::notThere));
  EXPECT_EQ(move("file", "absent/b"), refused(ExitStatus::notThere));
  EXPECT_EQ(started(), 0);
}

TEST_F(PrivilegedRuns, RefuseToReplaceWhatWouldBeLost) {
  write("file", "1");
  write("folder/file/inside", "2");
  EXPECT_EQ(move("file", "file"), refused(ExitStatus::cannotCreate));
  EXPECT_EQ(copy("file", "file"), refused(ExitStatus::cannotCreate));
  EXPECT_EQ(move("file", "folder"), refused(ExitStatus::cannotCreate)) << "a folder of that name stands in it";
  EXPECT_EQ(move("folder", "file"), refused(ExitStatus::cannotCreate));
  write("other/folder/inside", "3");
  EXPECT_EQ(move("folder", "other"), refused(ExitStatus::cannotCreate)) << "not empty";
  EXPECT_EQ(copy("folder", "other"), refused(ExitStatus::cannotCreate)) << "not merged";
  EXPECT_EQ(started(), 0);
  EXPECT_EQ(read("other/folder/inside"), "3");
  EXPECT_EQ(read("folder/file/inside"), "2");
}

// --- Links as the last component, which are meant themselves --------------------------------------------------------

TEST_F(PrivilegedRuns, RemoveALinkAndNotItsTarget) {
  link("protected", "folderLink");
  link("protected/precious", "fileLink");
  link("nowhere", "danglingLink");
  for (const char* name : {"folderLink", "fileLink", "danglingLink"}) {
    EXPECT_EQ(remove(name), 0) << name;
    EXPECT_FALSE(stands(name)) << name;
  }
  EXPECT_EQ(read("protected/precious"), "precious");
}

TEST_F(PrivilegedRuns, MoveAndCopyALinkAndNotItsTarget) {
  link("protected/precious", "fileLink");
  link("protected", "folderLink");
  for (const std::string name : {"fileLink", "folderLink"}) {
    const Path target = std::filesystem::read_symlink(at(name));
    EXPECT_EQ(copy(name, name + " copied"), 0);
    EXPECT_EQ(move(name, name + " moved"), 0);
    EXPECT_EQ(std::filesystem::read_symlink(at(name + " copied")), target);
    EXPECT_EQ(std::filesystem::read_symlink(at(name + " moved")), target);
  }
  EXPECT_EQ(read("protected/precious"), "precious");
}

TEST_F(PrivilegedRuns, ReplaceALinkThatStandsAtTheDestination) {
  for (const std::string target : {"protected/precious", "protected", "nowhere"}) {
    write("file", "1");
    link(target, "destination");
    EXPECT_EQ(copy("file", "destination"), 0) << target;
    EXPECT_EQ(read("destination"), "1");
    ASSERT_EQ(remove("destination"), 0);
    link(target, "destination");
    EXPECT_EQ(move("file", "destination"), 0) << target;
    EXPECT_TRUE(std::filesystem::is_regular_file(std::filesystem::symlink_status(at("destination"))));
    ASSERT_EQ(remove("destination"), 0);
  }
  EXPECT_THAT(namesIn("protected"), ElementsAre("precious"));
  EXPECT_EQ(read("protected/precious"), "precious");
}

TEST_F(PrivilegedRuns, DoNotWriteThroughALinkInsideAFolderThatIsCopiedOver) {
  write("from/name", "evil");
  makeFolder("to/from");
  link(at("protected/precious"), "to/from/name");
  EXPECT_EQ(copy("from", "to"), refused(ExitStatus::cannotCreate));
  EXPECT_EQ(read("protected/precious"), "precious");
}

TEST_F(PrivilegedRuns, RemoveNoTargetOfALinkInsideAFolder) {
  makeFolder("folder");
  link(at("protected"), "folder/link");
  EXPECT_EQ(remove("folder"), 0);
  EXPECT_EQ(read("protected/precious"), "precious");
}

// --- Failures of the tools ------------------------------------------------------------------------------------------

TEST_F(PrivilegedRuns, PassOnWhatTheToolEndsWithAndLeaveNoTrace) {
  write("folder/file", "1");
  makeFolder("folder/into");
  EXPECT_EQ(copy("folder", "folder/into"), 1) << "into itself";
  EXPECT_EQ(move("folder", "folder/into"), 1) << "into itself";
  EXPECT_THAT(namesIn("folder/into"), IsEmpty());
  EXPECT_EQ(read("folder/file"), "1");
  write("in the way", "2");
  EXPECT_EQ(makeFolders("in the way"), 1);
}

TEST_F(PrivilegedRuns, KeepHardLinksOfAReplacedFileApart) {
  write("protected/shared", "old");
  std::filesystem::create_hard_link(at("protected/shared"), at("name"));
  write("file", "new");
  EXPECT_EQ(copy("file", "name"), 0);
  EXPECT_EQ(read("name"), "new");
  EXPECT_EQ(read("protected/shared"), "old");
}

}  // namespace

}  // namespace privileged
