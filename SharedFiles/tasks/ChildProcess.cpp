#include "SharedFiles/tasks/ChildProcess.h"

#include <array>
#include <cerrno>
#include <condition_variable>
#include <csignal>
#include <cstring>
#include <future>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

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

[[noreturn]] void raise(const QString& reason, const char* name = "NSInvalidArgumentException") {
  throw QVPlatformException(reason, name);
}

QString errorText(int error) {
  return QString::fromStdString(std::generic_category().message(error));
}

QByteArray bytesOf(const QString& text) {
  if (!text.isValidUtf16() || text.contains(QChar(0))) raise("text cannot be handed to a program unaltered");
  return text.toUtf8();
}

/// Texts as a program gets them: pointers, the last one null.
class TextArray {
 public:
  void add(const QByteArray& text) { texts_.push_back(text); }
  char* const* pointers() {
    pointers_.clear();
    for (QByteArray& text : texts_) pointers_.push_back(text.data());
    pointers_.push_back(nullptr);
    return pointers_.data();
  }

 private:
  std::vector<QByteArray> texts_;
  std::vector<char*> pointers_;
};

struct Pipe {
  sys::Descriptor reading, writing;
};

Pipe makePipe() {
  std::array<int, 2> ends{};
  if (::pipe2(ends.data(), O_CLOEXEC) != 0) raise("no pipe: " + errorText(errno), "NSFileHandleOperationException");
  return {sys::Descriptor(ends[0]), sys::Descriptor(ends[1])};
}

sys::Descriptor openNullDevice() {
  sys::Descriptor device(::open("/dev/null", O_RDWR | O_CLOEXEC));
  if (!device.isOpen()) raise("no null device: " + errorText(errno), "NSFileHandleOperationException");
  return device;
}

/// Keeps descriptors above the standard ones, where placing one stream cannot overwrite another.
sys::Descriptor aboveStandardStreams(sys::Descriptor descriptor) {
  if (descriptor.get() >= standardStreams) return descriptor;
  sys::Descriptor moved(::fcntl(descriptor.get(), F_DUPFD_CLOEXEC, standardStreams));
  if (!moved.isOpen()) raise("no descriptor: " + errorText(errno), "NSFileHandleOperationException");
  return moved;
}

/// The program's end of a stream; none when it is inherited. `ours` gets this process's end of a pipe.
sys::Descriptor childEnd(StandardStream stream, int number, sys::Descriptor& ours) {
  if (stream == StandardStream::inherited) return sys::Descriptor();
  if (stream == StandardStream::nullDevice) return aboveStandardStreams(openNullDevice());
  Pipe pipe = makePipe();
  const bool programReads = number == STDIN_FILENO;
  ours = std::move(programReads ? pipe.writing : pipe.reading);
  return aboveStandardStreams(std::move(programReads ? pipe.reading : pipe.writing));
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

}  // namespace

ChildProcess::ChildProcess() : state_(std::make_shared<State>()) {}

void ChildProcess::launch() {
  const QByteArray path = bytesOf(launchPath_);
  TextArray arguments, environment;
  arguments.add(path);
  for (const QString& argument : arguments_) arguments.add(bytesOf(argument));
  if (environment_) {
    for (auto entry = environment_->cbegin(); entry != environment_->cend(); ++entry) {
      environment.add(bytesOf(entry.key()) + '=' + bytesOf(entry.value()));
    }
  }
  const std::array ends{childEnd(input_, STDIN_FILENO, standardInput), childEnd(output_, STDOUT_FILENO, standardOutput),
                        childEnd(error_, STDERR_FILENO, standardError)};
  sys::SpawnSettings settings;
  for (int number = 0; number < standardStreams; ++number)
    settings.place(ends[static_cast<std::size_t>(number)], number);

  // The thread that waits starts first, so that no program runs without one.
  std::promise<int> started;
  std::future<int> error = started.get_future();
  try {
    std::thread([&settings, &path, &arguments, environmentGiven = environment_ ? &environment : nullptr, state = state_,
                 started = std::move(started)]() mutable {
      pid_t identifier = 0;
      const int failure =
          settings.spawn(identifier, path.constData(), arguments.pointers(),
                         environmentGiven != nullptr ? environmentGiven->pointers() : environ, standardStreams);
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
  const int failure = error.get();
  if (failure != 0) raise("launch path not accessible: " + errorText(failure));
}

bool ChildProcess::isRunning() const {
  const std::lock_guard guard(state_->mutex);
  return state_->running;
}

void ChildProcess::terminate() const {
  const std::lock_guard guard(state_->mutex);
  if (state_->running) ::kill(state_->identifier, SIGTERM);
}

void ChildProcess::kill() const {
  const std::lock_guard guard(state_->mutex);
  if (state_->running) ::kill(state_->identifier, SIGKILL);
}

void ChildProcess::waitUntilExit() const {
  std::unique_lock lock(state_->mutex);
  state_->ended.wait(lock, [this] { return !state_->running; });
}

std::int32_t ChildProcess::terminationStatus() const {
  const std::lock_guard guard(state_->mutex);
  return state_->running ? 0 : state_->status;
}
