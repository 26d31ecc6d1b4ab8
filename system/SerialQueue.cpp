#include "system/SerialQueue.h"

#include <system_error>
#include <utility>

namespace sys {

namespace {

/// The queue whose operations the calling thread runs. Not a thread's number: those are given out again.
thread_local const SerialQueue* queueOfThread = nullptr;

}  // namespace

SerialQueue::~SerialQueue() {
  shutDown();
}

bool SerialQueue::addOperation(Operation operation) {
  const std::lock_guard guard(mutex_);
  if (closed_) return false;
  try {
    if (!thread_.joinable()) thread_ = std::thread([this] { run(); });
  } catch (const std::system_error&) {
    return false;
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
  return queueOfThread == this;
}

void SerialQueue::shutDown() {
  cancelAllOperations();
  std::thread ended;
  {
    const std::lock_guard guard(mutex_);
    closed_ = true;
    added_.notify_all();
    if (!isCurrent()) ended.swap(thread_);
  }
  if (ended.joinable()) ended.join();
}

void SerialQueue::run() {
  queueOfThread = this;
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

}  // namespace sys
