#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <map>
#include <string>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <pwd.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "SharedFiles/privileged/ProtectedPlaces.h"
#include "tests/SharedFiles/EnvironmentGuard.h"
#include "tests/SharedFiles/privileged/Sandbox.h"

namespace privileged {

namespace {

/// The program as it is installed.
class PrivilegedProgram : public Sandbox {
 protected:
  struct Result {
    int status = -1;
    std::string output;
  };
  Result start(const std::vector<std::string>& commandLine, const std::vector<std::string>& environment = {}) const {
    std::vector<std::string> arguments = {LUMACHECK_PRIVILEGED};
    arguments.insert(arguments.end(), commandLine.begin(), commandLine.end());
    std::vector<std::string> variables = environment;
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) return {};
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    ::posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    pid_t identifier = 0;
    const int failure = ::posix_spawn(&identifier, arguments.front().c_str(), &actions, nullptr,
                                      pointers(arguments).data(), pointers(variables).data());
    ::posix_spawn_file_actions_destroy(&actions);
    ::close(ends[1]);
    Result result;
    std::array<char, 256> buffer{};
    for (ssize_t count = 0; (count = ::read(ends[0], buffer.data(), buffer.size())) > 0;)
      result.output.append(buffer.data(), static_cast<std::size_t>(count));
    ::close(ends[0]);
    int status = 0;
    if (failure == 0 && ::waitpid(identifier, &status, 0) == identifier) result.status = WEXITSTATUS(status);
    return result;
  }

 private:
  static std::vector<char*> pointers(std::vector<std::string>& texts) {
    std::vector<char*> result;
    for (std::string& text : texts) result.push_back(text.data());
    result.push_back(nullptr);
    return result;
  }
};

TEST_F(PrivilegedProgram, SaysWhenTheToolRuns) {
  write("file", "1");
  const Result result = start({"/bin/rm", "-Rdf", at("file")});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output, "started\n");
  EXPECT_FALSE(stands("file"));
}

TEST_F(PrivilegedProgram, SaysNothingWhenItRefuses) {
  const std::vector<std::pair<std::vector<std::string>, ExitStatus>> rows = {
      {{}, ExitStatus::usage},
      {{"--help"}, ExitStatus::usage},
      {{"/bin/sh"}, ExitStatus::usage},
      {{"/bin/rm", "-Rdf", "relative"}, ExitStatus::badPath},
      {{"/bin/mv", "-f", "/", at("absent/file")}, ExitStatus::protectedPlace},
      {{"/bin/rm", "-Rdf", at("absent/file")}, ExitStatus::notThere}};
  for (const auto& [line, status] : rows) {
    const Result result = start(line);
    EXPECT_EQ(result.status, refused(status)) << testing::PrintToString(line);
    EXPECT_EQ(result.output, "");
  }
}

TEST_F(PrivilegedProgram, TakesNoPlaceFromItsEnvironment) {
  write("file", "1");
  // Were these followed, the sandbox would be the home folder or a standard one, and protected.
  const Result result = start({"/bin/rm", "-Rdf", at("file")},
                              {"HOME=" + at("file"), "XDG_DATA_HOME=" + at("file"), "XDG_CACHE_HOME=" + at("file"),
                               "XDG_DESKTOP_DIR=" + at("file"), "PATH=" + at(""), "LD_LIBRARY_PATH="});
  EXPECT_EQ(result.status, 0);
  EXPECT_FALSE(stands("file"));
}

TEST(SystemPlaces, HoldTheSystemAndTheHomesOfWhoeverAsks) {
  EnvironmentGuard environment;
  for (const char* variable : {"HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_CONFIG_HOME"})
    environment.clear(variable);
  const ProtectedPlaces places = systemPlaces({0, ::getuid(), 1}, BundleInfo());
  for (const char* path :
       {"/", "/usr", "/bin", "/etc", "/home", "/var", "/lib", "/opt", "/tmp", "/root", "/proc", "/root/Desktop",
        "/root/.cache", "/root/.local/share/quorvane", "/usr/lib", "/usr/share/doc", "/var/cache", "/System"})
    EXPECT_TRUE(places.isProtected(path)) << path;
  EXPECT_TRUE(places.isProtected(::getpwuid(::getuid())->pw_dir));
  EXPECT_TRUE(places.isProtected(::getpwuid(1)->pw_dir)) << "the home folder of another who asks";
  for (const char* path : {"/opt/application", "/tmp/file", "/usr/local/share", "/root/Desktop/movie.mov", "/u"})
    EXPECT_FALSE(places.isProtected(path)) << path;
}

TEST_F(PrivilegedProgram, RefusesEverySystemFolderWhateverItIsCalled) {
  // A run that is not refused could not do harm: there is nothing at the destination's folder to move to.
  for (const char* path : {"/", "/usr", "/bin", "/etc", "/home", "/var", "/usr/bin", "/usr/lib", "/root", "/proc"}) {
    const Result result = start({"/bin/mv", "-f", path, at("absent/destination")});
    EXPECT_EQ(result.status, refused(ExitStatus::protectedPlace)) << path;
  }
}

}  // namespace

}  // namespace privileged
