#pragma once

#include <functional>
#include <memory>

class QSocketNotifier;

/// Hands work to the main thread, in the order given. The hand-over is a queue of our own with a descriptor that wakes
/// the event loop. One object for a process, made on the main thread after the application object and living until
/// after the last caller.
class MainThread {
 public:
  using Work = std::function<void()>;

  MainThread();
  ~MainThread();  ///< what still waits is dropped; its waiting callers return
  MainThread(const MainThread&) = delete;
  MainThread& operator=(const MainThread&) = delete;

  /// Whether the caller runs on the process's main thread.
  static bool isCurrent();
  /// Runs the work on the main thread once its event loop comes round, and returns at once. Callable from any thread.
  /// Without a MainThread object the work is dropped.
  static void perform(Work work);
  /// The same, and returns when the work is done. On the main thread it runs at once. Without a MainThread object it
  /// is dropped.
  static void performAndWait(const Work& work);

 private:
  class Queue;
  static std::shared_ptr<Queue>& processQueue();

  std::shared_ptr<Queue> queue_;
  std::unique_ptr<QSocketNotifier> awake_;
};
