#include "SharedFiles/SerialQueue.h"

#include <system_error>
#include <utility>

SerialQueue::~SerialQueue() {
  shutDown();
}

bool SerialQueue::addOperation(Operation operation) {
  const std::lock_guard guard(mutex_);
  if (closed_) return false;
  if (threadId_ == std::thread::id()) {
    try {
      thread_ = std::thread([this] { run(); });
    } catch (const std::system_error&) {
      return false;
    }
    threadId_ = thread_.get_id();
  }
  waiting_.push_back(std::move(operation));
  added_.notify_one();
  return true;
}

std::size_t SerialQueue::operationCount() const {
  const std::lock_guard guard(mutex_);
  return waiting_.size() + (running_ ? 1 : 0);
}

void SerialQueue::waitUntilAllOperationsAreFinished() {
  if (isCurrent()) return;
  std::unique_lock lock(mutex_);
  drained_.wait(lock, [this] { return waiting_.empty() && !running_; });
}

void SerialQueue::cancelAllOperations() {
  std::deque<Operation> dropped;
  const std::lock_guard guard(mutex_);
  dropped.swap(waiting_);
  if (!running_) drained_.notify_all();
}

bool SerialQueue::isCurrent() const {
  const std::lock_guard guard(mutex_);
  return threadId_ == std::this_thread::get_id();
}

void SerialQueue::shutDown() {
  cancelAllOperations();
  std::thread ended;
  {
    const std::lock_guard guard(mutex_);
    closed_ = true;
    ended.swap(thread_);
    added_.notify_all();
  }
  if (!ended.joinable()) return;
  if (ended.get_id() == std::this_thread::get_id()) {
    ended.detach();
  } else {
    ended.join();
    const std::lock_guard guard(mutex_);
    threadId_ = {};
  }
}

void SerialQueue::run() {
  std::unique_lock lock(mutex_);
  for (;;) {
    added_.wait(lock, [this] { return closed_ || !waiting_.empty(); });
    if (waiting_.empty()) return;
    Operation operation = std::move(waiting_.front());
    waiting_.pop_front();
    running_ = true;
    lock.unlock();
    operation();
    operation = nullptr;
    lock.lock();
    running_ = false;
    if (waiting_.empty()) drained_.notify_all();
  }
}
