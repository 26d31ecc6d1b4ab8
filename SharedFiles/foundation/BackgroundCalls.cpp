#include "SharedFiles/foundation/BackgroundCalls.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

struct BackgroundCalls::Queue {
  std::mutex mutex;
  std::condition_variable changed;
  std::deque<std::function<void()>> waiting;
  bool started = false, closed = false;

  void run() {
    std::unique_lock lock(mutex);
    for (;;) {
      changed.wait(lock, [this] { return !waiting.empty() || closed; });
      if (waiting.empty()) return;
      const auto call = std::move(waiting.front());
      waiting.pop_front();
      lock.unlock();
      call();
      lock.lock();
    }
  }
};

BackgroundCalls::BackgroundCalls() : queue_(std::make_shared<Queue>()) {}

BackgroundCalls::~BackgroundCalls() {
  const std::lock_guard guard(queue_->mutex);
  queue_->closed = true;
  queue_->changed.notify_one();
}

bool BackgroundCalls::add(std::function<void()> call) {
  const std::lock_guard guard(queue_->mutex);
  if (!queue_->started) {
    try {
      std::thread([queue = queue_] { queue->run(); }).detach();
    } catch (const std::system_error&) {
      return false;
    }
    queue_->started = true;
  }
  queue_->waiting.push_back(std::move(call));
  queue_->changed.notify_one();
  return true;
}
