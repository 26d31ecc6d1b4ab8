#include "tests/support/MovieFixture.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include <fcntl.h>
#include <spawn.h>
#include <sys/file.h>
#include <sys/wait.h>
#include <unistd.h>

namespace movie::test {
namespace {

namespace fs = std::filesystem;

/// FNV-1a over the command line, each argument ended by its zero byte.
std::string keyOf(const std::vector<std::string>& command) {
  std::uint64_t hash = 0xCBF29CE484222325ULL;
  for (const std::string& argument : command) {
    for (std::size_t i = 0; i <= argument.size(); ++i) {
      hash = (hash ^ static_cast<unsigned char>(argument.c_str()[i])) * 0x100000001B3ULL;
    }
  }
  char text[17];
  std::snprintf(text, sizeof text, "%016llx", static_cast<unsigned long long>(hash));
  return text;
}

/// An exclusive lock between processes and threads, held as long as this lives.
class FileLock {
 public:
  explicit FileLock(const std::string& path) : fd_(::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666)) {
    if (fd_ < 0) throw std::runtime_error("cannot open " + path + ": " + std::strerror(errno));
    while (::flock(fd_, LOCK_EX) != 0) {
      if (errno != EINTR) throw std::runtime_error("cannot lock " + path + ": " + std::strerror(errno));
    }
  }
  ~FileLock() { ::close(fd_); }
  FileLock(const FileLock&) = delete;
  FileLock& operator=(const FileLock&) = delete;

 private:
  int fd_;
};

std::string contentsOf(const std::string& path) {
  std::ifstream stream(path, std::ios::binary);
  std::ostringstream text;
  text << stream.rdbuf();
  return text.str();
}

/// Runs a command without a shell, stdin empty, both outputs into `logPath`; gives the wait status.
int run(const std::vector<std::string>& command, const std::string& logPath) {
  std::vector<char*> arguments;
  arguments.reserve(command.size() + 1);
  for (const std::string& argument : command) arguments.push_back(const_cast<char*>(argument.c_str()));
  arguments.push_back(nullptr);

  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, logPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0666);
  posix_spawn_file_actions_adddup2(&actions, STDOUT_FILENO, STDERR_FILENO);
  pid_t child = 0;
  const int failure = posix_spawnp(&child, arguments[0], &actions, nullptr, arguments.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  if (failure != 0) throw std::runtime_error("cannot run " + command[0] + ": " + std::strerror(failure));
  int status = 0;
  while (::waitpid(child, &status, 0) < 0) {
    if (errno != EINTR) throw std::runtime_error("cannot wait for " + command[0] + ": " + std::strerror(errno));
  }
  return status;
}

/// A file that is to be made under another name first, with the arguments that say how.
struct Target {
  fs::path path;
  std::vector<std::string> arguments;

  fs::path partial() const { return path.parent_path() / ("partial-" + path.filename().string()); }
};

[[noreturn]] void fail(const Target& target, int status, const std::vector<std::string>& command,
                       const std::string& said) {
  std::string line;
  for (const std::string& argument : command) line += " '" + argument + "'";
  throw std::runtime_error("no fixture " + target.path.string() + ", wait status " + std::to_string(status) + " of" +
                           line + "\n" + said);
}

/// Runs a command that ends in each target's arguments and name.
void make(const std::vector<Target>& targets, std::vector<std::string> command) {
  for (const Target& target : targets) {
    command.insert(command.end(), target.arguments.begin(), target.arguments.end());
    command.push_back(target.partial().string());
  }
  const std::string log = targets.front().partial().string() + ".log";
  const int status = run(command, log);
  const std::string said = contentsOf(log);
  fs::remove(log);
  for (const Target& target : targets) {
    if (status == 0 && fs::exists(target.partial())) continue;
    std::error_code ignored;
    for (const Target& each : targets) fs::remove(each.partial(), ignored);
    fail(target, status, command, said);
  }
  for (const Target& target : targets) fs::rename(target.partial(), target.path);
}

std::vector<std::string> joined(std::vector<std::string> first, const std::vector<std::string>& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

/// The name counts the whole command that would make the file by itself.
Target targetOf(const std::string& name, const std::vector<std::string>& command,
                const std::vector<std::string>& arguments) {
  const fs::path folder = LUMACHECK_FIXTURE_DIR, asked = name;
  fs::create_directories(folder);
  return {folder / (asked.stem().string() + "-" + keyOf(joined(command, arguments)) + asked.extension().string()),
          arguments};
}

bool isThere(const Target& target) {
  return fs::exists(target.path);
}

void makeUnlessThere(const std::vector<Target>& targets, const std::vector<std::string>& command) {
  if (std::all_of(targets.begin(), targets.end(), isThere)) return;
  const FileLock lock(targets.front().path.string() + ".lock");
  if (!std::all_of(targets.begin(), targets.end(), isThere)) make(targets, command);
}

const std::vector<std::string> ffmpeg{"ffmpeg", "-nostdin", "-v", "error", "-y"};

}  // namespace

std::string fixtureFile(const std::string& name, const std::string& program,
                        const std::vector<std::string>& arguments) {
  const Target target = targetOf(name, {program}, arguments);
  makeUnlessThere({target}, {program});
  return target.path.string();
}

std::vector<std::string> fixtureMovies(const std::string& input, const std::vector<FixtureOutput>& outputs) {
  const std::vector<std::string> command = joined(ffmpeg, {"-i", input});
  std::vector<Target> targets;
  std::vector<std::string> paths;
  for (const FixtureOutput& output : outputs) {
    targets.push_back(targetOf(output.name, command, output.arguments));
    paths.push_back(targets.back().path.string());
  }
  makeUnlessThere(targets, command);
  return paths;
}

std::string fixtureMovie(const std::string& name, const std::vector<std::string>& ffmpegArguments) {
  const Target target = targetOf(name, ffmpeg, ffmpegArguments);
  makeUnlessThere({target}, ffmpeg);
  return target.path.string();
}

std::vector<std::string> realMovies() {
  const std::vector<std::string> extensions{".mov", ".mp4", ".m4v", ".qt"};
  std::vector<std::string> movies;
  const fs::path folder = LUMACHECK_REAL_MOVIES;
  std::error_code failure;
  for (fs::directory_iterator entry(folder, failure), end; !failure && entry != end; entry.increment(failure)) {
    if (std::find(extensions.begin(), extensions.end(), entry->path().extension().string()) != extensions.end()) {
      movies.push_back(entry->path().string());
    }
  }
  std::sort(movies.begin(), movies.end());
  return movies;
}

std::string whyNoRealMovies() {
  const std::string folder = LUMACHECK_REAL_MOVIES;
  return folder.empty() ? "no folder of real movies was given (cmake -DLUMACHECK_REAL_MOVIES=FOLDER)"
                        : "there are no movies in " + folder;
}

}  // namespace movie::test
