#include "SharedFiles/foundation/MainThread.h"

#include <QSocketNotifier>
#include <cerrno>
#include <deque>
#include <future>
#include <mutex>
#include <system_error>
#include <utility>

#include <sys/eventfd.h>
#include <unistd.h>

#include "system/Descriptor.h"

/// What waits for the main thread.
class MainThread::Queue {
 public:
  Queue() : descriptor_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK | EFD_SEMAPHORE)) {
    if (!descriptor_.isOpen()) throw std::system_error(errno, std::generic_category(), "eventfd");
  }

  int descriptor() const { return descriptor_.get(); }

  void add(Work work) {
    const std::lock_guard guard(mutex_);
    waiting_.push_back(std::move(work));
    ::eventfd_write(descriptor(), 1);
  }

  /// One piece of work a wake-up: while it runs the event loop itself, the descriptor wakes that for the next.
  void runNext() {
    eventfd_t one = 0;
    ::eventfd_read(descriptor(), &one);
    if (const Work work = next()) work();
  }

 private:
  Work next() {
    const std::lock_guard guard(mutex_);
    if (waiting_.empty()) return {};
    Work work = std::move(waiting_.front());
    waiting_.pop_front();
    return work;
  }

  const sys::Descriptor descriptor_;
  std::mutex mutex_;
  std::deque<Work> waiting_;
};

namespace {

/// Guards which queue is the process's.
std::mutex processMutex;

}  // namespace

std::shared_ptr<MainThread::Queue>& MainThread::processQueue() {
  static std::shared_ptr<Queue> queue;
  return queue;
}

MainThread::MainThread()
    : queue_(std::make_shared<Queue>()),
      awake_(std::make_unique<QSocketNotifier>(queue_->descriptor(), QSocketNotifier::Read)) {
  QObject::connect(awake_.get(), &QSocketNotifier::activated, [queue = queue_] { queue->runNext(); });
  const std::lock_guard guard(processMutex);
  processQueue() = queue_;
}

MainThread::~MainThread() {
  awake_.reset();
  const std::lock_guard guard(processMutex);
  if (processQueue() == queue_) processQueue().reset();
}

bool MainThread::isCurrent() {
  return ::gettid() == ::getpid();
}

void MainThread::perform(Work work) {
  std::shared_ptr<Queue> queue;
  {
    const std::lock_guard guard(processMutex);
    queue = processQueue();
  }
  if (queue) queue->add(std::move(work));
}

void MainThread::performAndWait(const Work& work) {
  if (isCurrent()) return work();
  // Work that is dropped takes the promise with it, which ends the wait as well.
  auto promise = std::make_shared<std::promise<void>>();
  const std::future<void> done = promise->get_future();
  perform([&work, promise = std::move(promise)] {
    work();
    promise->set_value();
  });
  done.wait();
}
