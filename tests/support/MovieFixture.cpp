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

void make(const fs::path& target, std::vector<std::string> command) {
  const fs::path partial = target.parent_path() / ("partial-" + target.filename().string());
  const std::string log = partial.string() + ".log";
  command.push_back(partial.string());
  const int status = run(command, log);
  const std::string said = contentsOf(log);
  fs::remove(log);
  if (status != 0 || !fs::exists(partial)) {
    std::error_code ignored;
    fs::remove(partial, ignored);
    std::string line;
    for (const std::string& argument : command) line += " '" + argument + "'";
    throw std::runtime_error("no fixture " + target.string() + ", wait status " + std::to_string(status) + " of" +
                             line + "\n" + said);
  }
  fs::rename(partial, target);
}

}  // namespace

std::string fixtureFile(const std::string& name, const std::string& program,
                        const std::vector<std::string>& arguments) {
  std::vector<std::string> command{program};
  command.insert(command.end(), arguments.begin(), arguments.end());

  const fs::path folder = LUMACHECK_FIXTURE_DIR;
  fs::create_directories(folder);
  const fs::path asked = name;
  const fs::path target = folder / (asked.stem().string() + "-" + keyOf(command) + asked.extension().string());
  if (fs::exists(target)) return target.string();
  const FileLock lock(target.string() + ".lock");
  if (!fs::exists(target)) make(target, std::move(command));
  return target.string();
}

std::string fixtureMovie(const std::string& name, const std::vector<std::string>& ffmpegArguments) {
  std::vector<std::string> arguments{"-nostdin", "-v", "error", "-y"};
  arguments.insert(arguments.end(), ffmpegArguments.begin(), ffmpegArguments.end());
  return fixtureFile(name, "ffmpeg", arguments);
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
