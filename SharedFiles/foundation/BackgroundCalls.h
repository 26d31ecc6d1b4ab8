#pragma once

#include <functional>
#include <memory>

/// Makes calls one after another on a thread of its own, which the caller never waits for. What was added is still
/// called after the object is gone; then the thread ends. Used by one thread.
class BackgroundCalls {
 public:
  BackgroundCalls();
  ~BackgroundCalls();
  BackgroundCalls(const BackgroundCalls&) = delete;
  BackgroundCalls& operator=(const BackgroundCalls&) = delete;

  /// Where the system gives no thread, the call is dropped and the answer is false.
  bool add(std::function<void()> call);

 private:
  struct Queue;
  std::shared_ptr<Queue> queue_;
};
