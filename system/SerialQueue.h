#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>

namespace sys {

/// Runs operations one after another, in the order added, on one thread of its own. The thread starts with the first
/// operation. All members may be called from any thread, from an operation too.
class SerialQueue {
 public:
  using Operation = std::function<void()>;

  SerialQueue() = default;
  ~SerialQueue();  ///< as shutDown(); must not run inside an operation
  SerialQueue(const SerialQueue&) = delete;
  SerialQueue& operator=(const SerialQueue&) = delete;

  /// Adds an operation. After shutDown(), or where the system gives no thread, the operation is dropped and the answer
  /// is false. An exception out of an operation ends the program.
  bool addOperation(Operation operation);

  /// Operations that wait or run.
  std::size_t operationCount() const;

  /// Blocks until no operation waits or runs. Returns at once inside an operation, which would otherwise wait for
  /// itself.
  void waitUntilAllOperationsAreFinished();

  /// Drops the operations that have not begun.
  void cancelAllOperations();

  /// Whether the caller is one of this queue's operations.
  bool isCurrent() const;

  /// Drops what has not begun, waits for what runs and takes no more. Inside an operation it does not wait: the next
  /// call from outside does.
  void shutDown();

 private:
  void run();

  mutable std::mutex mutex_;
  std::condition_variable added_, drained_;
  std::deque<Operation> waiting_;
  bool running_ = false, closed_ = false;
  std::thread thread_;
};

}  // namespace sys
