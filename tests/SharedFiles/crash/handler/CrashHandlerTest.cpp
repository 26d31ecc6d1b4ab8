#include <algorithm>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "SharedFiles/crash/handler/CrashHandler.h"

namespace {

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;
namespace fs = std::filesystem;

constexpr auto missingProgram = "/nowhere/lumacheck-crash-report";

struct Ended {
  int signal = 0, status = 0;
  double seconds = 0;
};

class CrashHandler : public testing::Test {
 protected:
  CrashHandler() {
    std::string name = (fs::temp_directory_path() / "crashesXXXXXX").string();
    folder_ = ::mkdtemp(name.data());
    reports_ = folder_ / "DiagnosticReports";
    fs::create_directory(reports_);
  }
  ~CrashHandler() override {
    std::error_code error;
    fs::remove_all(folder_, error);
  }

  struct Running {
    pid_t process = 0;
    int output = -1;
    std::chrono::steady_clock::time_point begun;
  };

  Running start(const std::string& kind, const std::string& program) const {
    std::vector<std::string> texts{LUMACHECK_CRASHER, reports_, program, kind};
    std::vector<char*> arguments;
    arguments.reserve(texts.size() + 1);
    for (std::string& text : texts) arguments.push_back(text.data());
    arguments.push_back(nullptr);
    int ends[2] = {-1, -1};
    EXPECT_EQ(::pipe2(ends, O_CLOEXEC), 0);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    Running running{0, ends[0], std::chrono::steady_clock::now()};
    EXPECT_EQ(::posix_spawn(&running.process, LUMACHECK_CRASHER, &actions, nullptr, arguments.data(), environ), 0);
    posix_spawn_file_actions_destroy(&actions);
    ::close(ends[1]);
    char ready[5] = {};
    EXPECT_EQ(::read(running.output, ready, sizeof ready), 5);
    return running;
  }
  static Ended finish(const Running& running) {
    int status = 0;
    EXPECT_EQ(::waitpid(running.process, &status, 0), running.process);
    ::close(running.output);
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - running.begun;
    return {WIFSIGNALED(status) ? WTERMSIG(status) : 0, WIFEXITED(status) ? WEXITSTATUS(status) : -1, taken.count()};
  }
  Ended run(const std::string& kind, const std::string& program = LUMACHECK_CRASH_REPORT) const {
    return finish(start(kind, program));
  }

  std::vector<fs::path> reports() const {
    std::vector<fs::path> found;
    for (const auto& entry : fs::directory_iterator(reports_)) found.push_back(entry.path());
    std::sort(found.begin(), found.end());
    return found;
  }
  std::string onlyReport() const {
    const auto all = reports();
    EXPECT_EQ(all.size(), 1U);
    return all.empty() ? std::string() : contentOf(all[0]);
  }
  static std::string contentOf(const fs::path& path) {
    std::ifstream file(path);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
  }
  std::string script(const std::string& body) const {
    const fs::path path = folder_ / "report program";
    std::ofstream(path) << "#!/bin/sh\n" << body << '\n';
    ::chmod(path.c_str(), S_IRWXU);
    return path;
  }
  /// The lines of the first thread.
  static std::string firstThread(const std::string& report) {
    const std::size_t begin = report.find("\nThread ");
    if (begin == std::string::npos) return {};
    return report.substr(begin + 1, report.find("\n\n", begin + 1) - begin);
  }
  static std::size_t occurrences(const std::string& text, const std::string& part) {
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
    return count;
  }

  fs::path folder_, reports_;
};

TEST_F(CrashHandler, ReportsWhatHappenedAndWhere) {
  const Ended ended = run("null");
  EXPECT_EQ(ended.signal, SIGSEGV);
  const std::string report = onlyReport();
  EXPECT_THAT(report, StartsWith("Process:         Crasher ["));
  EXPECT_THAT(report, HasSubstr(std::string("Path:            ") + LUMACHECK_CRASHER + "\n"));
  EXPECT_THAT(report, HasSubstr("Version:         1.2.3\n"));
  EXPECT_THAT(report, HasSubstr(" UTC\nSystem:          "));
  EXPECT_THAT(report, HasSubstr("Signal:          SIGSEGV (11), code 1, nothing is mapped there, address 0x0\n"));
  EXPECT_THAT(report, Not(HasSubstr("Exception:")));
  const std::string thread = firstThread(report);
  EXPECT_THAT(thread,
              testing::ContainsRegex("^Thread [0-9]+ Crashed: crasher\n0  0x[0-9a-f]+  crasher \\+ 0x[0-9a-f]+  "
                                     "crashing::dereferencesNull\\(\\) \\+ [0-9]+\n1 "));
  EXPECT_THAT(thread, HasSubstr("  main + "));
  EXPECT_THAT(report,
              testing::ContainsRegex("\nModules:\n(.*\n)*0x[0-9a-f]+ - 0x[0-9a-f]+  libc.so.6  [0-9a-f]{40}  /"));
}

TEST_F(CrashHandler, NamesReportsByDateAndHostForTheirOwnerOnly) {
  run("null");
  const auto all = reports();
  ASSERT_EQ(all.size(), 1U);
  EXPECT_THAT(all[0].filename().string(),
              testing::MatchesRegex("Crasher_20[0-9]{2}-[0-9]{2}-[0-9]{2}-[0-9]{6}_.+\\.crash"));
  struct stat status {};
  ASSERT_EQ(::stat(all[0].c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777, 0600U);
}

struct Kind {
  const char* kind;
  int signal;
  const char* frame;  ///< of the crashed thread
};
void PrintTo(const Kind& kind, std::ostream* out) {
  *out << kind.kind;
}

class EveryCrash : public CrashHandler, public testing::WithParamInterface<Kind> {};

TEST_P(EveryCrash, EndsInAReportByTheReportProgramAndTheSameSignal) {
  const Ended ended = run(GetParam().kind);
  EXPECT_EQ(ended.signal, GetParam().signal);
  EXPECT_LT(ended.seconds, 15);
  const std::string report = onlyReport();
  EXPECT_THAT(report, HasSubstr("\nModules:\n"));
  EXPECT_THAT(firstThread(report), HasSubstr(GetParam().frame)) << report;
}

TEST_P(EveryCrash, EndsInAReportByTheProcessItselfWithoutTheReportProgram) {
  const Ended ended = run(GetParam().kind, missingProgram);
  EXPECT_EQ(ended.signal, GetParam().signal);
  EXPECT_LT(ended.seconds, 15);
  const std::string report = onlyReport();
  EXPECT_THAT(firstThread(report), HasSubstr("\n0  0x"));
  EXPECT_THAT(report, HasSubstr("\nMappings:\n"));
  EXPECT_THAT(report, HasSubstr("[stack]\n"));
}

INSTANTIATE_TEST_SUITE_P(Kinds, EveryCrash,
                         testing::Values(Kind{"null", SIGSEGV, "crashing::dereferencesNull()"},
                                         Kind{"null-on-thread", SIGSEGV, "crashing::dereferencesNull()"},
                                         Kind{"overflow", SIGSEGV, "crashing::recursesForever(int)"},
                                         Kind{"overflow-on-thread", SIGSEGV, "crashing::recursesForever(int)"},
                                         Kind{"call", SIGSEGV, "crashing::callsNothing()"},
                                         Kind{"divide", SIGFPE, "crashing::dividesByZero()"},
                                         Kind{"bus", SIGBUS, "crashing::readsBehindItsFile()"},
                                         Kind{"illegal", SIGILL, "crashing::meetsAnInvalidInstruction()"},
                                         Kind{"abort", SIGABRT, "main"},
                                         Kind{"exception", SIGABRT, "crashing::throwsUncaught()"},
                                         Kind{"exception-on-thread", SIGABRT, "crashing::throwsUncaught()"},
                                         Kind{"number", SIGABRT, "crashing::throwsANumber()"},
                                         Kind{"stack", SIGSEGV, "losesItsStack"},
                                         Kind{"malloc", SIGSEGV, "crashing::crashesInsideMalloc()"},
                                         Kind{"loader", SIGSEGV, "crashing::dereferencesNull()"},
                                         Kind{"lock", SIGSEGV, "crashing::dereferencesNull()"},
                                         Kind{"many", SIGSEGV, "crashing::crashesAmongManyThreads()"},
                                         Kind{"descriptors", SIGSEGV, "crashing::crashesWithoutDescriptors()"},
                                         Kind{"system", SIGSYS, "main"}, Kind{"trap", SIGTRAP, "main"}),
                         [](const auto& tested) {
                           std::string name = tested.param.kind;
                           std::erase(name, '-');
                           return name;
                         });

TEST_F(CrashHandler, TellsEveryThread) {
  run("many");
  const std::string report = onlyReport();
  EXPECT_EQ(occurrences(report, "\nThread "), 65U);
  EXPECT_EQ(occurrences(report, "::operator()() const + "), 64U) << report;
  EXPECT_EQ(occurrences(report, " Crashed: "), 1U);
}

TEST_F(CrashHandler, NamesTheThreadThatCrashed) {
  run("null-on-thread");
  const std::string report = onlyReport();
  EXPECT_THAT(firstThread(report), HasSubstr(" Crashed: player\n"));
  EXPECT_EQ(occurrences(report, "\nThread "), 2U);
}

TEST_F(CrashHandler, TellsTheTextOfAnUncaughtException) {
  for (const char* program : {LUMACHECK_CRASH_REPORT, missingProgram}) {
    run("exception", program);
    EXPECT_THAT(onlyReport(), HasSubstr("Exception:       std::runtime_error: the reason of it\n"));
    fs::remove(reports()[0]);
    run("number", program);
    EXPECT_THAT(onlyReport(), HasSubstr("Exception:       int\n"));
    fs::remove(reports()[0]);
  }
}

TEST_F(CrashHandler, ManyThreadsThatCrashAtOnceGiveOneReport) {
  for (const char* program : {LUMACHECK_CRASH_REPORT, missingProgram}) {
    const Ended ended = run("all", program);
    EXPECT_TRUE(ended.signal == SIGSEGV || ended.signal == SIGABRT) << ended.signal;
    EXPECT_LT(ended.seconds, 15);
    EXPECT_THAT(onlyReport(), HasSubstr(ended.signal == SIGSEGV ? "SIGSEGV" : "SIGABRT"));
    fs::remove(reports()[0]);
  }
}

TEST_F(CrashHandler, CrashesWithinOneSecondDoNotOverwriteEachOther) {
  constexpr std::size_t crashes = 4;
  std::vector<Running> running;
  for (std::size_t i = 0; i < crashes; ++i)
    running.push_back(start("wait", i % 2 ? missingProgram : LUMACHECK_CRASH_REPORT));
  for (const Running& each : running) ::kill(each.process, SIGSEGV);
  for (const Running& each : running) EXPECT_EQ(finish(each).signal, SIGSEGV);
  EXPECT_EQ(reports().size(), crashes);
}

TEST_F(CrashHandler, ReportsASignalSentFromOutside) {
  const Running running = start("wait", LUMACHECK_CRASH_REPORT);
  ::kill(running.process, SIGSEGV);
  EXPECT_EQ(finish(running).signal, SIGSEGV);
  const std::string report = onlyReport();
  EXPECT_THAT(report, HasSubstr("SIGSEGV (11), code 0, sent by a process\n"));
  EXPECT_THAT(firstThread(report), HasSubstr("  main + "));
}

TEST_F(CrashHandler, ASecondSignalMeanwhileLosesNothing) {
  const std::string program =
      script("for i in 1 2 3 4 5 6; do kill -SEGV $PPID; kill -ABRT $PPID; kill -FPE $PPID; sleep 0.02; done\nexec '" +
             std::string(LUMACHECK_CRASH_REPORT) + "' \"$@\"");
  EXPECT_EQ(run("divide", program).signal, SIGFPE);
  EXPECT_THAT(onlyReport(), HasSubstr("crashing::dividesByZero()"));
}

TEST_F(CrashHandler, WritesItselfWhenTheReportProgramFails) {
  for (const char* body : {"exit 1", "kill -KILL $$", "kill -SEGV $$"}) {
    const Ended ended = run("null", script(body));
    EXPECT_EQ(ended.signal, SIGSEGV);
    EXPECT_LT(ended.seconds, 5) << body;
    const std::string report = onlyReport();
    EXPECT_THAT(report, HasSubstr("written by the process itself"));
    EXPECT_THAT(firstThread(report), testing::ContainsRegex("0  0x[0-9a-f]+  /.*/crasher \\+ 0x[0-9a-f]+\n1  0x"));
    EXPECT_THAT(report, HasSubstr("\nMappings:\n"));
    fs::remove(reports()[0]);
  }
}

TEST_F(CrashHandler, DoesNotWaitForeverForTheReportProgram) {
  const Ended ended = run("null", script("exec sleep 60"));
  EXPECT_EQ(ended.signal, SIGSEGV);
  EXPECT_GT(ended.seconds, 9);
  EXPECT_LT(ended.seconds, 15);
  EXPECT_THAT(onlyReport(), HasSubstr("written by the process itself"));
}

TEST_F(CrashHandler, ReportsACrashForWantOfMemory) {
  const Ended ended = run("memory");
  EXPECT_EQ(ended.signal, SIGSEGV);
  EXPECT_THAT(firstThread(onlyReport()), HasSubstr("\n0  0x"));
}

TEST_F(CrashHandler, EndsTheProcessAlsoWithoutAFolder) {
  fs::remove_all(reports_);
  EXPECT_EQ(run("null", missingProgram).signal, SIGSEGV);
  EXPECT_EQ(run("null").signal, SIGSEGV);
  EXPECT_EQ(reports().size(), 1U) << "the report program makes the folder";
  struct stat status {};
  ASSERT_EQ(::stat(reports_.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777, 0700U);
}

TEST_F(CrashHandler, LeavesSignalsAloneThatSomebodyElseHandlesOrIgnores) {
  EXPECT_EQ(run("own-divide").status, 33);
  EXPECT_EQ(run("ignored-trap").status, 0);
  EXPECT_EQ(reports().size(), 0U);
}

TEST_F(CrashHandler, ReportsNothingOfAProgramThatEndsWell) {
  EXPECT_EQ(run("nothing").status, 0);
  const Running running = start("wait", LUMACHECK_CRASH_REPORT);
  ::kill(running.process, SIGTERM);
  EXPECT_EQ(finish(running).signal, SIGTERM);
  EXPECT_EQ(reports().size(), 0U);
}

TEST_F(CrashHandler, TheReportProgramObeysTheCrashedProcessOnly) {
  const std::string report = LUMACHECK_CRASH_REPORT;
  for (const std::string& command :
       {"'" + report + "' </dev/null", "'" + report + "' '" + reports_.string() + "' a b </dev/null",
        "head -c 2000 /dev/urandom | '" + report + "' '" + reports_.string() + "' a b"}) {
    const int status = std::system((command + " 2>/dev/null").c_str());  // NOLINT(bugprone-command-processor)
    EXPECT_EQ(WEXITSTATUS(status), 1) << command;
  }
  EXPECT_EQ(reports().size(), 0U);
}

}  // namespace
