// What `lumacheck sync` refuses, and that a dry run tells it too; signals.

#include <algorithm>
#include <filesystem>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/cli/PrintedJson.h"
#include "tests/cli/SyncFixture.h"

namespace cli::test {
namespace {

namespace fs = std::filesystem;
using movie::test::joined;
using movie::test::typedMediaData;
using testing::HasSubstr;
using testing::StartsWith;

class SyncRefusals : public SyncCommand {
 protected:
  SyncRefusals() {
    std::string name = testing::TempDir() + "lumacheck-sync-XXXXXX";
    folder_ = ::mkdtemp(name.data());
  }
  ~SyncRefusals() override { fs::remove_all(folder_); }

  std::string add(const std::string& name, const Bytes& bytes) const {
    const std::string path = folder_ / name;
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    return path;
  }
  std::size_t filesInFolder() const {
    return static_cast<std::size_t>(std::distance(fs::directory_iterator(folder_), fs::directory_iterator()));
  }
  /// Refuses the save and the dry run with the same sentence.
  void expectRefused(std::vector<std::string> arguments, const std::string& sentence) const {
    SCOPED_TRACE(sentence);
    arguments.insert(arguments.begin(), {"sync", source_.path()});
    const ProgramRun run = runLumacheck(arguments);
    EXPECT_EQ(run.status, 2);
    EXPECT_THAT(run.err, testing::AllOf(StartsWith("lumacheck: "), HasSubstr(sentence), testing::EndsWith(".\n")));
    EXPECT_THAT(run.out, testing::Not(HasSubstr("Saved")));
    arguments.emplace_back("--dry-run");
    const ProgramRun dry = runLumacheck(arguments);
    EXPECT_EQ(dry.status, 2);
    EXPECT_EQ(dry.err, run.err);
    arguments.back() = "--json";
    const PrintedJson json = PrintedJson::parse(runLumacheck(arguments).out);
    EXPECT_EQ(json["saved"], false);
    EXPECT_TRUE(json["path"].is_null());
    EXPECT_EQ(json["exitStatus"], 2);
  }

  fs::path folder_;
};

TEST_F(SyncRefusals, SayWhyAFileIsNotSavedInPlace) {
  const auto& wrong = gammaExtensions(gamma18);
  auto fragmented = specOf(wrong);
  fragmented.more = {movie::test::movieExtends(1, 1, 10, 0)};
  struct Row {
    const char* name;
    Bytes bytes;
    const char* sentence;
  };
  const Row rows[] = {
      {"compressed.mov", joined({typedMediaData("qt  ", 30), movie::test::compressedMovie(specOf(wrong).build())}),
       "compressed"},
      {"fragmented.mov", joined({typedMediaData("qt  ", 30), fragmented.build()}), "fragment"},
      {"trailing.mov", joined({movieOf(wrong), Bytes(5, 'x')}), "its atoms do not end where the file does"},
      {"text.mov", Bytes(100, 'x'), "Cannot read"},
      {"empty.mov", {}, "Cannot read"},
  };
  for (const Row& row : rows) {
    const std::string path = add(row.name, row.bytes);
    const std::string before = contents(path);
    expectRefused({path}, row.sentence);
    EXPECT_EQ(contents(path), before);
  }
  expectRefused({folder_.string()}, "it is a folder");
  expectRefused({folder_ / "missing.mov"}, "there is no such file");
  ASSERT_EQ(::mkfifo((folder_ / "pipe").c_str(), 0600), 0);
  expectRefused({folder_ / "pipe"}, "it is not a regular file");
}

TEST_F(SyncRefusals, KeepOffAFileThatOthersWorkOn) {
  const int writer = ::open(dest_.path().c_str(), O_RDWR | O_CLOEXEC);
  expectRefused({dest_.path()}, "another program has the file open for writing");
  ::close(writer);

  const int locker = ::open(dest_.path().c_str(), O_RDONLY | O_CLOEXEC);
  struct flock whole {};
  whole.l_type = F_RDLCK;
  ASSERT_EQ(::fcntl(locker, F_OFD_SETLK, &whole), 0);
  expectRefused({dest_.path()}, "another program is saving the file, or has locked it");
  ::close(locker);
  EXPECT_EQ(contents(dest_.path()), before_);
  EXPECT_EQ(runLumacheck({"sync", source_.path(), dest_.path()}).status, 0);
}

TEST_F(SyncRefusals, KeepOffAFileThatMayNotBeWritten) {
  ASSERT_EQ(::chmod(dest_.path().c_str(), 0444), 0);
  if (::geteuid() == 0) {
    EXPECT_EQ(runLumacheck({"sync", source_.path(), dest_.path()}).status, 0);
  } else {
    expectRefused({dest_.path()}, "there is no permission to write the file");
    const std::string copy = folder_ / "copy.mov";
    EXPECT_EQ(runLumacheck({"sync", source_.path(), dest_.path(), "--save-as", copy}).status, 0);
    EXPECT_EQ(descriptionIn(copy).gamma(), gamma22);
  }
}

TEST_F(SyncRefusals, OverwriteNothing) {
  fs::create_symlink("nowhere", folder_ / "dangling.mov");
  fs::create_hard_link(source_.path(), folder_ / "hard.mov");
  for (const std::string& target : {source_.path(), dest_.path(), folder_.string(), (folder_ / "dangling.mov").string(),
                                    (folder_ / "hard.mov").string()}) {
    expectRefused({dest_.path(), "--save-as", target}, target + ": There is something of that name already");
  }
  for (const std::string& target : {(folder_ / "no/such/copy.mov").string(), std::string()}) {
    expectRefused({dest_.path(), "--save-as", target}, target + ": There is no such folder");
  }
  EXPECT_EQ(contents(dest_.path()), before_);
  EXPECT_EQ(descriptionIn(source_.path()).gamma(), gamma22);
  EXPECT_EQ(filesInFolder(), 2U);
}

TEST_F(SyncRefusals, DoNotKeepAMovieFromItself) {
  const fs::path link = folder_ / "link.mov", name = folder_ / "name.mov";
  fs::create_symlink(dest_.path(), link);
  fs::create_hard_link(dest_.path(), name);
  for (const std::string& same : {dest_.path(), link.string(), name.string()}) {
    for (const char* mode : {"--log=/dev/null", "--dry-run"}) {
      const ProgramRun run = runLumacheck({"sync", dest_.path(), same, mode});
      EXPECT_EQ(run.status, 0) << run.err;
      EXPECT_EQ(run.out, "Nothing to change.\n");
    }
  }
  EXPECT_EQ(contents(dest_.path()), before_);
}

TEST_F(SyncRefusals, DoNotKeepAMovieFromItsOtherNames) {
  const fs::path link = folder_ / "link.mov", name = folder_ / "name.mov";
  fs::create_symlink(dest_.path(), link);
  fs::create_hard_link(dest_.path(), name);
  const ProgramRun run = runLumacheck({"sync", source_.path(), link});
  EXPECT_EQ(run.status, 0);
  EXPECT_THAT(run.err, HasSubstr("The file has 2 names and was changed under all of them."));
  EXPECT_TRUE(fs::is_symlink(link));
  for (const std::string& each : {dest_.path(), link.string(), name.string()}) {
    EXPECT_EQ(descriptionIn(each).gamma(), gamma22);
  }
}

/// All combinations of the flags: what a dry run tells is what the run then does.
TEST_F(SyncRefusals, AreTheOnlyDifferenceBetweenADryRunAndARealOne) {
  for (const bool json : {false, true}) {
    for (const bool copied : {false, true}) {
      const std::string dest = add("dest.mov", movieOf(gammaExtensions(gamma18))), copy = folder_ / "copy.mov";
      std::vector<std::string> arguments{"sync", source_.path(), dest};
      if (json) arguments.emplace_back("--json");
      if (copied) arguments.insert(arguments.end(), {"--save-as", copy});
      const std::string before = contents(dest);
      arguments.emplace_back("--dry-run");
      const ProgramRun dry = runLumacheck(arguments);
      EXPECT_EQ(contents(dest), before);
      EXPECT_FALSE(fs::exists(copy));
      arguments.pop_back();
      const ProgramRun real = runLumacheck(arguments);
      EXPECT_EQ(dry.status, 0);
      EXPECT_EQ(real.status, 0);
      EXPECT_EQ(real.err, dry.err);
      if (json) {
        EXPECT_EQ(PrintedJson::parse(dry.out)["changes"], PrintedJson::parse(real.out)["changes"]);
        EXPECT_EQ(PrintedJson::parse(real.out)["path"], copied ? copy : dest);
      } else {
        EXPECT_EQ(dry.out.substr(0, dry.out.find('\n')), real.out.substr(0, real.out.find('\n')));
        EXPECT_THAT(dry.out, testing::EndsWith("\nNot saved: this was a dry run.\n"));
        EXPECT_THAT(real.out, testing::EndsWith("\nSaved: " + (copied ? copy : dest) + "\n"));
      }
      EXPECT_EQ(contents(dest) == before, copied);
      EXPECT_EQ(descriptionIn(copied ? copy : dest).gamma(), gamma22);
      fs::remove(copy);
    }
  }
}

TEST_F(SyncRefusals, SayThatTheOutputWasNotWrittenThoughTheMovieWas) {
  ProgramOptions closed, unread;
  closed.output = StandardOutput::Closed;
  unread.output = StandardOutput::WithoutReader;
  for (const ProgramOptions& options : {closed, unread}) {
    const std::string dest = add("dest.mov", movieOf(gammaExtensions(gamma18)));
    const ProgramRun run = runLumacheck({"sync", source_.path(), dest}, options);
    EXPECT_EQ(run.status, 2);
    EXPECT_THAT(run.err, HasSubstr("Cannot write to standard output"));
    EXPECT_EQ(descriptionIn(dest).gamma(), gamma22);
  }
}

TEST_F(SyncRefusals, TakeAnyBytesAsAFileName) {
  const std::string dest = add("caf\xE9\n.mov", movieOf(gammaExtensions(gamma18))), copy = folder_ / "-\xE9";
  EXPECT_EQ(runLumacheck({"sync", source_.path(), dest, "--save-as", copy}).status, 0);
  EXPECT_EQ(descriptionIn(copy).gamma(), gamma22);
  const ProgramRun run = runLumacheck({"sync", source_.path(), dest, "--json"});
  EXPECT_EQ(run.status, 0);
  EXPECT_TRUE(PrintedJson::accept(run.out));
  EXPECT_EQ(descriptionIn(dest).gamma(), gamma22);
}

/// Whether the process has a file of the folder open.
bool hasOpenIn(const fs::path& folder, pid_t process) {
  std::error_code gone;
  const fs::directory_iterator descriptors("/proc/" + std::to_string(process) + "/fd", gone), end;
  return !gone && std::any_of(descriptors, end, [&](const fs::directory_entry& each) {
    std::error_code closed;
    return fs::read_symlink(each, closed).string().rfind(folder.string() + "/", 0) == 0;
  });
}

TEST_F(SyncRefusals, LeaveNothingOfACopyThatASignalEnded) {
  constexpr std::size_t size = 160 << 20;  // several pieces
  const TemporaryFile dest(joined({typedMediaData("qt  ", size), specOf(gammaExtensions(gamma18)).build()}));
  const std::string copy = folder_ / "copy.mov";
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    const ProgramRun run = runLumacheckUntil([&](pid_t process) { return hasOpenIn(folder_, process); }, signal,
                                             {"sync", source_.path(), dest.path(), "--save-as", copy});
    SCOPED_TRACE(signal);
    if (run.status == 0) {  // it was quicker
      EXPECT_EQ(descriptionIn(copy).gamma(), gamma22);
      fs::remove(copy);
    } else {
      EXPECT_EQ(run.status, 128 + signal);
      EXPECT_THAT(run.err, HasSubstr("Cannot save \"" + copy + "\": it was cancelled."));
      EXPECT_THAT(run.out, HasSubstr("Not saved.\n"));
    }
    EXPECT_EQ(filesInFolder(), 0U);
  }
}

}  // namespace
}  // namespace cli::test
