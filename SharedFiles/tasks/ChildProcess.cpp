#include "SharedFiles/tasks/ChildProcess.h"

#include <array>
#include <cerrno>
#include <condition_variable>
#include <csignal>
#include <future>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>

#include "SharedFiles/foundation/QVPlatformException.h"
#include "system/FileBytes.h"
#include "system/SpawnSettings.h"

/// What the thread that waits for the program shares with its callers. The number of the process is good while
/// `running` is set under the lock: the process is collected under that lock only.
struct ChildProcess::State {
  std::mutex mutex;
  std::condition_variable ended;
  pid_t identifier = 0;
  bool running = false;
  int status = 0;
};

namespace {

constexpr int standardStreams = 3;
constexpr auto outputUnreadable = "cannot read a program's output: ";

[[noreturn]] void raise(const QString& reason) {
  throw QVPlatformException(reason, "NSInvalidArgumentException");
}

/// Tells what the system has just refused.
[[noreturn]] void raiseSystemError(const char* what) {
  const std::string reason = what + std::generic_category().message(errno);
  throw QVPlatformException(QString::fromStdString(reason), "NSFileHandleOperationException");
}

std::string bytesOf(const QString& text) {
  if (!text.isValidUtf16() || text.contains(QChar(0))) raise("text cannot be handed to a program unaltered");
  return text.toStdString();
}

/// Keeps descriptors above the standard ones, where placing one stream cannot overwrite another.
sys::Descriptor aboveStandardStreams(sys::Descriptor descriptor) {
  if (descriptor.get() >= standardStreams) return descriptor;
  sys::Descriptor moved(::fcntl(descriptor.get(), F_DUPFD_CLOEXEC, standardStreams));
  if (!moved.isOpen()) raiseSystemError("no descriptor: ");
  return moved;
}

/// The program's end of a stream; none when it is inherited. `ours` gets this process's end of a pipe.
sys::Descriptor childEnd(StandardStream stream, int number, sys::Descriptor& ours) {
  if (stream == StandardStream::inherited) return sys::Descriptor();
  if (stream == StandardStream::nullDevice) {
    sys::Descriptor device(::open("/dev/null", O_RDWR | O_CLOEXEC));
    if (!device.isOpen()) raiseSystemError("no null device: ");
    return aboveStandardStreams(std::move(device));
  }
  std::array<int, 2> ends{};
  if (::pipe2(ends.data(), O_CLOEXEC) != 0) raiseSystemError("no pipe: ");
  sys::Descriptor reading(ends[0]), writing(ends[1]);
  const bool programReads = number == STDIN_FILENO;
  ours = std::move(programReads ? writing : reading);
  return aboveStandardStreams(std::move(programReads ? reading : writing));
}

/// Waits for the program without collecting it, then collects it under the lock.
template <typename State>
void collect(State& state, pid_t identifier) {
  siginfo_t information{};
  sys::untilUninterrupted(
      [&] { return ::waitid(P_PID, static_cast<id_t>(identifier), &information, WEXITED | WNOWAIT); });
  const std::lock_guard guard(state.mutex);
  int status = 0;
  if (::waitpid(identifier, &status, WNOHANG) == identifier) {
    state.status = WIFEXITED(status) ? WEXITSTATUS(status) : WTERMSIG(status);
  }
  state.running = false;
  state.ended.notify_all();
}

/// One read of a program's output; empty at the end.
QByteArray readSome(int descriptor) {
  constexpr qsizetype chunkSize = 65536;
  QByteArray chunk(chunkSize, Qt::Uninitialized);
  const ssize_t got = sys::readSome(descriptor, chunk.data(), static_cast<std::size_t>(chunk.size()));
  if (got < 0) raiseSystemError(outputUnreadable);
  chunk.truncate(got);
  return chunk;
}

/// Waits until one can be read. Descriptors below 0 are passed over.
void waitForAny(std::array<pollfd, 2>& descriptors) {
  const auto wait = [&] { return ::poll(descriptors.data(), descriptors.size(), -1); };
  if (sys::untilUninterrupted(wait) < 0) raiseSystemError(outputUnreadable);
}

}  // namespace

ChildProcess::ChildProcess(ProgramCall call) : call_(std::move(call)), state_(std::make_shared<State>()) {}

void ChildProcess::launch() {
  std::vector<std::string> arguments{bytesOf(call_.path)};
  for (const QString& argument : call_.arguments) arguments.push_back(bytesOf(argument));
  std::optional<std::vector<std::string>> environment;
  if (call_.environment) {
    environment.emplace();
    for (auto entry = call_.environment->cbegin(); entry != call_.environment->cend(); ++entry) {
      environment->push_back(bytesOf(entry.key()) + '=' + bytesOf(entry.value()));
    }
  }
  const std::array ends{childEnd(call_.input, STDIN_FILENO, standardInput),
                        childEnd(call_.output, STDOUT_FILENO, standardOutput),
                        childEnd(call_.error, STDERR_FILENO, standardError)};
  sys::SpawnSettings settings;
  for (int number = 0; number < standardStreams; ++number)
    settings.place(ends[static_cast<std::size_t>(number)], number);

  // The thread that waits starts first, so that no program runs without one.
  std::promise<int> started;
  std::future<int> error = started.get_future();
  try {
    std::thread([&settings, &arguments, &environment, state = state_, started = std::move(started)]() mutable {
      pid_t identifier = 0;
      const int failure = settings.spawn(identifier, std::move(arguments), std::move(environment), standardStreams);
      if (failure == 0) {
        const std::lock_guard guard(state->mutex);
        state->identifier = identifier;
        state->running = true;
      }
      started.set_value(failure);
      if (failure == 0) collect(*state, identifier);
    }).detach();
  } catch (const std::system_error& failure) {
    raise("no thread: " + QString::fromUtf8(failure.what()));
  }
  if (const int failure = error.get()) {
    raise("launch path not accessible: " + QString::fromStdString(std::generic_category().message(failure)));
  }
}

bool ChildProcess::isRunning() const {
  const std::lock_guard guard(state_->mutex);
  return state_->running;
}

void ChildProcess::send(int signal) const {
  const std::lock_guard guard(state_->mutex);
  if (state_->running) ::kill(state_->identifier, signal);
}

void ChildProcess::waitUntilExit() const {
  std::unique_lock lock(state_->mutex);
  state_->ended.wait(lock, [this] { return !state_->running; });
}

std::int32_t ChildProcess::terminationStatus() const {
  const std::lock_guard guard(state_->mutex);
  return state_->running ? 0 : state_->status;
}

TaskOutput readToEnd(ChildProcess& process) {
  TaskOutput collected;
  const auto take = [](const pollfd& ready, sys::Descriptor& end, QByteArray& buffer) {
    if (ready.fd < 0 || ready.revents == 0) return;
    const QByteArray chunk = readSome(ready.fd);
    buffer += chunk;
    if (chunk.isEmpty()) end.close();
  };
  while (process.standardOutput.isOpen() || process.standardError.isOpen()) {
    std::array descriptors{pollfd{process.standardOutput.get(), POLLIN, 0},
                           pollfd{process.standardError.get(), POLLIN, 0}};
    waitForAny(descriptors);
    take(descriptors[0], process.standardOutput, collected.output);
    take(descriptors[1], process.standardError, collected.errors);
  }
  return collected;
}

QByteArray readChunk(const sys::Descriptor& output, int wake) {
  std::array descriptors{pollfd{output.get(), POLLIN, 0}, pollfd{wake, POLLIN, 0}};
  waitForAny(descriptors);
  if (descriptors[1].revents != 0) return {};
  return readSome(output.get());
}

bool isReadable(const sys::Descriptor& descriptor) {
  pollfd state{descriptor.get(), POLLIN, 0};
  return ::poll(&state, 1, 0) > 0;
}
