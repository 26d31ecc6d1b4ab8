#include <chrono>
#include <cmath>
#include <limits>
#include <system_error>
#include <thread>
#include <utility>

#include <sys/eventfd.h>
#include <unistd.h>

#include "SharedFiles/foundation/FilePackage.h"
#include "SharedFiles/foundation/MainThread.h"
#include "SharedFiles/foundation/QVPlatformException.h"
#include "SharedFiles/log/QVLog.h"
#include "SharedFiles/tasks/QVTaskEx.h"

namespace {

constexpr const char* asyncDataNotification = "QVAsyncTaskDataNotification";
constexpr const char* fileHandleData = "NSFileHandleNotificationDataItem";

QVTaskEx::Notification dataNotification(const QByteArray& chunk) {
  return {asyncDataNotification, {{fileHandleData, chunk}}};
}

}  // namespace

QVTaskEx::~QVTaskEx() {
  if (const auto process = theTask_.get()) process->terminate();
}

QVTaskEx::Delegate QVTaskEx::delegate() const {
  const std::lock_guard guard(mutex_);
  return delegate_;
}

void QVTaskEx::setDelegate(Delegate delegate) {
  const std::lock_guard guard(mutex_);
  delegate_.swap(delegate);
}

QVariant QVTaskEx::object() const {
  const std::lock_guard guard(mutex_);
  return object_;
}

void QVTaskEx::setObject(const QVariant& object) {
  const std::lock_guard guard(mutex_);
  object_ = object;
}

// --- Timed runs -----------------------------------------------------------------------------------------------------

std::int32_t QVTaskEx::wholeSeconds(double timeout) {
  using Limits = std::numeric_limits<std::int32_t>;
  const double whole = std::trunc(timeout);
  const bool fits = whole >= double{Limits::min()} && whole <= double{Limits::max()};
  return fits ? static_cast<std::int32_t>(whole) : Limits::min();
}

/// The timer sleeps its time out even when the run ends first; then it finds no task.
void QVTaskEx::startTimer(double timeout) {
  try {
    std::thread([self = shared_from_this(), seconds = wholeSeconds(timeout)] { self->setupTimeout(seconds); }).detach();
  } catch (const std::system_error& error) {
    QVLog::appendLog("No thread could be started: %@", QString::fromLocal8Bit(error.what()));
  }
}

void QVTaskEx::setupTimeout(std::int32_t seconds) {
  std::this_thread::sleep_for(std::chrono::seconds(seconds));
  MainThread::performAndWait([this] { timeout(); });
}

void QVTaskEx::timeout() {
  const auto process = theTask_.get();
  if (!process || !process->isRunning()) return;
  QVLog::appendLogAndPrint("Task %@ timed out. Terminating...", process->launchPath());
  process->terminate();
}

template <typename Run>
auto QVTaskEx::timed(double timeout, const Run& run) {
  startTimer(timeout);
  theTask_.set(nullptr);
  auto result = run();
  theTask_.set(nullptr);
  return result;
}

void QVTaskEx::runTaskInstance(const QString& path, const QStringList& arguments, double timeout) {
  timed(timeout, [&] { return runTask(path, arguments); });
}

std::optional<QByteArray> QVTaskEx::dataFromTaskInstance(const QString& path, const QStringList& arguments,
                                                         double timeout, bool logOutput, bool logError) {
  return timed(timeout, [&] { return dataFromTask(path, arguments, &theTask_, {}, logOutput, logError); });
}

std::int32_t QVTaskEx::terminationCodeFromTaskInstance(const QString& path, const QStringList& arguments,
                                                       double timeout) {
  return timed(timeout, [&] { return terminationCodeFromTask(path, arguments, &theTask_); });
}

// --- Asynchronous runs ----------------------------------------------------------------------------------------------

void QVTaskEx::asyncDataFromTask(const QString& path, const QStringList& arguments, Delegate delegate,
                                 const QVariant& object, const std::optional<Environment>& environment) {
  auto process = std::make_shared<ChildProcess>(ProgramCall{.path = path,
                                                            .arguments = arguments,
                                                            .environment = environment,
                                                            .output = StandardStream::pipe,
                                                            .error = StandardStream::nullDevice});
  {
    const std::lock_guard guard(mutex_);
    delegate_ = std::move(delegate);
    object_ = object;
    closed_ = std::make_shared<sys::Descriptor>(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    theTask_.set(std::move(process));
  }
  try {
    std::thread([self = shared_from_this()] { self->launchAsyncTask(); }).detach();
  } catch (const std::system_error& error) {
    terminateAsyncTask();
    QVLog::appendLogAndPrint("Exception: %@", QString::fromLocal8Bit(error.what()));
  }
}

void QVTaskEx::launchAsyncTask() {
  std::shared_ptr<ChildProcess> process;
  std::shared_ptr<sys::Descriptor> closed;
  {
    // Together: a termination takes both away, however early it comes.
    const std::lock_guard guard(mutex_);
    process = theTask_.get();
    closed = closed_;
  }
  if (!process) return QVLog::appendLogAndPrint("Unable to launch async task - no task set");
  if (!isExecutableFileAtPath(process->launchPath())) {
    return QVLog::appendLog("Unable to launch async task - task does not exist or is not executable");
  }
  try {
    process->launch();
    QByteArray chunk;
    do {
      chunk = readChunk(process->standardOutput, closed ? closed->get() : -1);
      if (closed && isReadable(*closed)) break;
      asyncTaskReturnData(dataNotification(chunk));
    } while (!chunk.isEmpty());
    process->standardOutput.close();
    process->terminate();
  } catch (const QVPlatformException& exception) {
    QVLog::appendLogAndPrint("Exception: %@", exception.reason());
  }
}

void QVTaskEx::asyncTaskReturnData(const Notification& notification) {
  const QByteArray chunk = notification.userInfo.value(fileHandleData).toByteArray();
  handToDelegate(chunk);
  if (chunk.isEmpty()) terminateAsyncTask();
}

void QVTaskEx::handToDelegate(const QByteArray& chunk) {
  Delegate delegate;
  QVariant object;
  {
    const std::lock_guard guard(mutex_);
    delegate = delegate_;
    object = object_;
  }
  if (delegate) delegate(chunk.isEmpty() ? QByteArray("", 0) : chunk, *this, object);
}

void QVTaskEx::terminateAsyncTask() {
  Delegate delegate;
  std::shared_ptr<ChildProcess> process;
  {
    const std::lock_guard guard(mutex_);
    delegate.swap(delegate_);
    object_ = QVariant();
    if (closed_) ::eventfd_write(closed_->get(), 1);
    closed_.reset();
    process = theTask_.get();
    theTask_.set(nullptr);
  }
  if (process) process->terminate();
}
