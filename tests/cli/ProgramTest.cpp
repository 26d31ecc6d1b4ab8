#include <algorithm>
#include <filesystem>
#include <fstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/cli/PrintedJson.h"
#include "tests/cli/RunProgram.h"
#include "tests/support/AtomBuilder.h"

// The command as a program, on files whose frames no decoder knows.

namespace cli {
namespace {

namespace fs = std::filesystem;
using movie::Bytes;
using namespace movie::test;
using namespace test;
using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;

Bytes plainMovie() {
  ImageEntry entry;
  entry.codec = "none";
  TrackSpec track;
  track.entries = {entry.build()};
  MovieSpec movie;
  movie.tracks = {track};
  return movie::test::joined({movie::test::typedMediaData("qt  ", 30), movie.build()});
}

Bytes bytesOf(const std::string& text) {
  return {text.begin(), text.end()};
}

/// A folder of its own, gone with this object.
class TemporaryFolder {
 public:
  TemporaryFolder() : path_(fs::path(testing::TempDir()) / ("lumacheck-" + std::to_string(::getpid()))) {
    fs::create_directories(path_);
  }
  ~TemporaryFolder() { fs::remove_all(path_); }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  std::string operator/(const std::string& name) const { return (path_ / name).string(); }
  bool isEmpty() const { return fs::is_empty(path_); }

 private:
  fs::path path_;
};

void expectRefused(const std::string& path) {
  const TemporaryFile good(plainMovie());
  for (const auto& [source, dest] : {std::pair(path, good.path()), std::pair(good.path(), path)}) {
    const ProgramRun text = runLumacheck({"check", source, dest});
    EXPECT_EQ(text.status, 2);
    EXPECT_EQ(text.out, "");
    EXPECT_THAT(text.err, AllOf(StartsWith("lumacheck: "), HasSubstr(path), testing::EndsWith(".\n")));

    const ProgramRun json = runLumacheck({"check", "--json", source, dest});
    EXPECT_EQ(json.status, 2);
    EXPECT_EQ(json.err, text.err);
    const auto document = PrintedJson::parse(json.out);
    EXPECT_EQ(document["schema"], "lumacheck.check/2");
    EXPECT_EQ("lumacheck: " + document["error"]["message"].text() + "\n", text.err);
    EXPECT_EQ(document["error"]["path"], path);
    EXPECT_EQ(document["exitStatus"], 2);
    EXPECT_EQ(document.size(), 3U);
  }
  const ProgramRun info = runLumacheck({"info", path});
  EXPECT_EQ(info.status, 2);
  EXPECT_EQ(info.out, "");
  EXPECT_THAT(info.err, StartsWith("lumacheck: "));
}

TEST(Program, RefusesWhatIsNoMovieWithASentence) {
  const TemporaryFile empty(Bytes{}), text(bytesOf("This is a text, not a movie.\n"), ".txt");
  for (const std::string& path : {std::string("/nonexistent/a.mov"), testing::TempDir(), empty.path(), text.path()}) {
    SCOPED_TRACE(path);
    expectRefused(path);
  }
}

TEST(Program, NeverCrashesOnATruncatedMovie) {
  const Bytes whole = plainMovie();
  for (std::size_t size = 1; size < whole.size(); size += 13) {
    const TemporaryFile cut(Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)));
    const ProgramRun run = runLumacheck({"check", cut.path(), cut.path()});
    ASSERT_EQ(run.status, 2) << "cut to " << size << " bytes";
    ASSERT_THAT(run.err, StartsWith("lumacheck: "));
  }
}

TEST(Program, NeverCrashesOnAWrongAtomSize) {
  const Bytes whole = plainMovie();
  for (const std::string type : {"ftyp", "mdat", "moov", "mvhd", "trak", "tkhd", "mdia", "mdhd", "hdlr", "minf", "dinf",
                                 "dref", "stbl", "stsd", "none", "stts", "stsz", "stsc", "stco"}) {
    const auto found = std::search(whole.begin(), whole.end(), type.begin(), type.end());
    ASSERT_NE(found, whole.end()) << type;
    const auto sizeField = static_cast<std::size_t>(found - whole.begin()) - 4;
    for (const std::uint32_t size : {0U, 1U, 7U, 0xFFFFFFFFU}) {
      Bytes damaged = whole;
      movie::write32(damaged, sizeField, size);
      const TemporaryFile file(damaged);
      const ProgramRun run = runLumacheck({"check", file.path(), file.path()});
      ASSERT_EQ(run.status, 2) << type << " of size " << size;
      ASSERT_THAT(run.err, StartsWith("lumacheck: "));
    }
  }
}

TEST(Program, NamesBothFilesWhenBothFail) {
  const ProgramRun run = runLumacheck({"check", "/nonexistent/a.mov", "/nonexistent/b.mov", "--json"});
  EXPECT_EQ(run.status, 2);
  EXPECT_THAT(run.err, AllOf(HasSubstr("a.mov"), HasSubstr("b.mov")));
  EXPECT_EQ(PrintedJson::parse(run.out)["error"]["path"], "/nonexistent/a.mov");
}

TEST(Program, ReportsFramesThatCannotBeHadAndGivesNoVerdictOnThem) {
  const TemporaryFile file(plainMovie());
  const ProgramRun text = runLumacheck({"check", file.path(), file.path(), "--exit-zero"});
  EXPECT_EQ(text.status, 2);
  EXPECT_THAT(text.out, AllOf(HasSubstr("\n\nChecking files...\n\nSource file has no gamma metadata set.\n\n"),
                              testing::EndsWith("\n\nNo noticeable gamma shift was found.\n")));
  EXPECT_THAT(text.err,
              AllOf(HasSubstr("The source frame cannot be had. "), HasSubstr("The destination frame cannot be had. ")));

  const auto json = PrintedJson::parse(runLumacheck({"check", "--json", file.path(), file.path()}).out);
  EXPECT_TRUE(json["pixels"].is_null());
  EXPECT_EQ(json["metadata"]["compared"], true);
  EXPECT_EQ(json["exitStatus"], 2);
}

TEST(Program, DoesNotLoadTheDecoderForInfo) {
  const TemporaryFile file(plainMovie());
  ProgramOptions options;
  options.environment["LUMACHECK_MODULES"] = "/nonexistent";
  const ProgramRun info = runLumacheck({"info", file.path()}, options);
  EXPECT_EQ(info.status, 0);
  EXPECT_EQ(info.err, "");
  const ProgramRun check = runLumacheck({"check", file.path(), file.path()}, options);
  EXPECT_EQ(check.status, 2);
  EXPECT_THAT(check.err, HasSubstr("/nonexistent"));
}

TEST(Program, RefusesATimeOutsideTheMovie) {
  const TemporaryFile file(plainMovie());  // 72/600 s
  for (const char* time : {"0.12", "5", "-1", "1e300", "01:00:00:00"}) {
    const ProgramRun run = runLumacheck({"check", file.path(), file.path(), "--dest-at", time, "--json"});
    EXPECT_EQ(run.status, 2) << time;
    EXPECT_THAT(run.err, HasSubstr("is outside \"" + file.path() + "\"")) << time;
    EXPECT_EQ(PrintedJson::parse(run.out)["error"]["path"], file.path());
  }
}

TEST(Program, TakesAnyBytesAsAFileName) {
  const TemporaryFolder folder;
  const Bytes movie = plainMovie();
  for (const std::string name : {"a:b.mov", "line\nbreak.mov", "[x,y]", "caf\xE9.mov", "100%.mov", " "}) {
    const std::string path = folder / name;
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(movie.data()), static_cast<std::streamsize>(movie.size()));
    const ProgramRun text = runLumacheck({"info", path});
    EXPECT_EQ(text.status, 0);
    EXPECT_THAT(text.out, StartsWith(path + "\n"));
    EXPECT_TRUE(PrintedJson::accept(runLumacheck({"info", "--json", path}).out));
  }
  EXPECT_THAT(runLumacheck({"info", "--json", folder / "caf\xE9.mov"}).out, HasSubstr("caf\xEF\xBF\xBD.mov"));
}

TEST(Program, ExitsWithTwoWhenItsOutputCannotBeWritten) {
  const TemporaryFile file(plainMovie());
  ProgramOptions full, closed, unread;
  full.outputFile = "/dev/full";
  closed.output = test::StandardOutput::Closed;
  unread.output = test::StandardOutput::WithoutReader;
  for (const ProgramOptions& options : {full, closed, unread}) {
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"info", file.path()}, {"check", file.path(), file.path()}, {"--help"}}) {
      const ProgramRun run = runLumacheck(arguments, options);
      EXPECT_EQ(run.status, 2);
      EXPECT_THAT(run.err, HasSubstr("Cannot write to standard output"));
    }
  }
}

TEST(Program, EndsWith130WhenInterrupted) {
  const TemporaryFile file(plainMovie());
  std::vector<std::string> arguments{"info"};
  arguments.insert(arguments.end(), 2000, file.path());  // more than a pipe holds
  EXPECT_EQ(test::interruptLumacheckWhileWriting(arguments).status, 130);
}

TEST(Program, KeepsNoLogUnlessAsked) {
  const TemporaryFolder home;
  const TemporaryFile file(plainMovie());
  ProgramOptions options;
  for (const char* name : {"HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_CONFIG_HOME", "XDG_STATE_HOME"}) {
    options.environment[name] = home / "";
  }
  const ProgramRun plain = runLumacheck({"check", file.path(), file.path()}, options);
  EXPECT_TRUE(home.isEmpty());

  const std::string log = home / "lumacheck.log";
  const ProgramRun logged = runLumacheck({"check", file.path(), file.path(), "--log", log}, options);
  EXPECT_EQ(logged.out, plain.out);
  EXPECT_EQ(logged.err, plain.err);
  EXPECT_EQ(std::distance(fs::directory_iterator(home / ""), fs::directory_iterator()), 1);
  std::ifstream stream(log);
  const std::string text((std::istreambuf_iterator<char>(stream)), std::istreambuf_iterator<char>());
  EXPECT_THAT(text, AllOf(HasSubstr(" - Log started: "), HasSubstr(" - Checking files...\n"),
                          HasSubstr(" - Source ImageDescription count: 1\n"), HasSubstr(" - Gamma: 0.000000\n"),
                          HasSubstr(" - No noticeable gamma shift was found.\n")));
}

TEST(Program, RefusesALogThatCannotBeOpened) {
  const TemporaryFile file(plainMovie());
  const ProgramRun run = runLumacheck({"info", file.path(), "--log", "/nonexistent/log"});
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(run.out, "");
  EXPECT_THAT(run.err, HasSubstr("/nonexistent/log"));
}

TEST(Program, StylesItsReportOnATerminalOnly) {
  const TemporaryFile file(plainMovie());
  const std::vector<std::string> arguments{"check", file.path(), file.path()};
  ProgramOptions options;
  options.environment = {{"TERM", "xterm"}, {"NO_COLOR", ""}};
  EXPECT_THAT(test::runLumacheckOnTerminal(arguments, options).out,
              HasSubstr("\x1b[1mSource and destination gamma metadata match.\x1b[0m"));
  EXPECT_THAT(runLumacheck(arguments, options).out, testing::Not(HasSubstr("\x1b")));
  options.environment["NO_COLOR"] = "1";
  EXPECT_THAT(test::runLumacheckOnTerminal(arguments, options).out,
              AllOf(HasSubstr("gamma metadata match."), testing::Not(HasSubstr("\x1b"))));
}

TEST(Program, SaysHowItIsUsed) {
  const ProgramRun help = runLumacheck({"--help"});
  EXPECT_EQ(help.status, 0);
  EXPECT_THAT(help.out, AllOf(HasSubstr("check"), HasSubstr("info")));
  EXPECT_EQ(help.err, "");
  const ProgramRun version = runLumacheck({"--version"});
  EXPECT_EQ(version.status, 0);
  EXPECT_THAT(version.out, StartsWith("lumacheck "));
}

TEST(Program, SaysThatThereIsNoFileToOpenTheWindowOn) {
  const ProgramRun run = runLumacheck({"nowhere.mov"});
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(run.err, "lumacheck: There is no command and no file called 'nowhere.mov'.\n");
}

}  // namespace
}  // namespace cli
