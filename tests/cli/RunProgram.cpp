#include "tests/cli/RunProgram.h"

#include <array>
#include <cerrno>
#include <stdexcept>
#include <system_error>

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

namespace cli::test {
namespace {

[[noreturn]] void fail(const char* what) {
  throw std::system_error(errno, std::generic_category(), what);
}

class Descriptor {
 public:
  Descriptor() = default;
  explicit Descriptor(int value) : value_(value) {
    if (value < 0) fail("no descriptor");
  }
  ~Descriptor() { close(); }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  int get() const { return value_; }
  void reset(int value) {
    close();
    value_ = value;
  }
  void close() {
    if (value_ >= 0) ::close(value_);
    value_ = -1;
  }

 private:
  int value_ = -1;
};

struct Pipe {
  Pipe() {
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) fail("pipe");
    read.reset(ends[0]);
    write.reset(ends[1]);
  }
  Descriptor read, write;
};

std::vector<std::string> environmentWith(const std::map<std::string, std::string>& changes) {
  std::vector<std::string> variables;
  for (char** variable = environ; *variable != nullptr; ++variable) {
    const std::string text = *variable;
    if (changes.count(text.substr(0, text.find('='))) == 0) variables.push_back(text);
  }
  for (const auto& [name, value] : changes) variables.push_back(std::string(name).append("=").append(value));
  return variables;
}

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  pointers.reserve(texts.size() + 1);
  for (std::string& text : texts) pointers.push_back(text.data());
  pointers.push_back(nullptr);
  return pointers;
}

/// Starts the program; an output of -1 is closed. Signals as a shell would hand them over.
pid_t start(const std::vector<std::string>& arguments, const ProgramOptions& options, int output, int error) {
  std::vector<std::string> command{LUMACHECK_PROGRAM};
  command.insert(command.end(), arguments.begin(), arguments.end());
  std::vector<std::string> variables = environmentWith(options.environment);
  const std::vector<char*> argv = pointersTo(command), envp = pointersTo(variables);

  const pid_t child = ::fork();
  if (child < 0) fail("fork");
  if (child > 0) return child;
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) ::signal(signal, SIG_DFL);
  ::signal(SIGPIPE, SIG_DFL);
  ::dup2(::open("/dev/null", O_RDONLY), STDIN_FILENO);
  output < 0 ? ::close(STDOUT_FILENO) : ::dup2(output, STDOUT_FILENO);
  ::dup2(error, STDERR_FILENO);
  ::execve(argv[0], argv.data(), envp.data());
  ::_exit(127);
}

/// Reads both until nobody writes any more. A terminal whose other side is gone reads as an error.
void readBoth(int output, std::string& out, int error, std::string& err) {
  std::array<pollfd, 2> sources{pollfd{output, POLLIN, 0}, pollfd{error, POLLIN, 0}};
  const std::array<std::string*, 2> texts{&out, &err};
  while (sources[0].fd >= 0 || sources[1].fd >= 0) {
    if (::poll(sources.data(), sources.size(), -1) < 0) fail("poll");
    for (std::size_t i = 0; i < sources.size(); ++i) {
      if (sources[i].fd < 0 || sources[i].revents == 0) continue;
      std::array<char, 65536> buffer{};
      const ssize_t length = ::read(sources[i].fd, buffer.data(), buffer.size());
      if (length > 0) {
        texts[i]->append(buffer.data(), static_cast<std::size_t>(length));
      } else {
        sources[i].fd = -1;
      }
    }
  }
}

int waitFor(pid_t child) {
  int status = 0;
  while (::waitpid(child, &status, 0) < 0) {
    if (errno != EINTR) fail("waitpid");
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

}  // namespace

ProgramRun runLumacheck(const std::vector<std::string>& arguments, const ProgramOptions& options) {
  Pipe output, error;
  Descriptor file;
  int childOutput = options.output == StandardOutput::Closed ? -1 : output.write.get();
  if (!options.outputFile.empty()) {
    file.reset(::open(options.outputFile.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666));
    childOutput = file.get();
  }
  if (options.output == StandardOutput::WithoutReader) output.read.close();
  const pid_t child = start(arguments, options, childOutput, error.write.get());
  output.write.close();
  error.write.close();
  ProgramRun run;
  readBoth(output.read.get(), run.out, error.read.get(), run.err);
  run.status = waitFor(child);
  return run;
}

ProgramRun runLumacheckOnTerminal(const std::vector<std::string>& arguments, const ProgramOptions& options) {
  const Descriptor master(::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC));
  if (::grantpt(master.get()) != 0 || ::unlockpt(master.get()) != 0) fail("pseudo terminal");
  Descriptor terminal(::open(::ptsname(master.get()), O_RDWR | O_NOCTTY | O_CLOEXEC));
  Pipe error;
  const pid_t child = start(arguments, options, terminal.get(), error.write.get());
  terminal.close();
  error.write.close();
  ProgramRun run;
  readBoth(master.get(), run.out, error.read.get(), run.err);
  run.status = waitFor(child);
  return run;
}

ProgramRun interruptLumacheckWhileWriting(const std::vector<std::string>& arguments) {
  Pipe output, error;
  const pid_t child = start(arguments, {}, output.write.get(), error.write.get());
  output.write.close();
  error.write.close();
  pollfd written{output.read.get(), POLLIN, 0};
  ::poll(&written, 1, -1);
  ::kill(child, SIGINT);
  ProgramRun run;
  run.status = waitFor(child);
  readBoth(output.read.get(), run.out, error.read.get(), run.err);
  return run;
}

ProgramRun runLumacheckUntil(const std::function<bool(pid_t process)>& now, int signal,
                             const std::vector<std::string>& arguments) {
  Pipe output, error;
  const pid_t child = start(arguments, {}, output.write.get(), error.write.get());
  output.write.close();
  error.write.close();
  const auto hasEnded = [child] {
    siginfo_t ended{};
    return ::waitid(P_PID, static_cast<id_t>(child), &ended, WEXITED | WNOHANG | WNOWAIT) != 0 || ended.si_pid != 0;
  };
  while (!now(child) && !hasEnded()) ::usleep(500);
  ::kill(child, signal);
  ProgramRun run;
  readBoth(output.read.get(), run.out, error.read.get(), run.err);
  run.status = waitFor(child);
  return run;
}

}  // namespace cli::test
