#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QVariant>
#include <QVariantMap>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>

#include "SharedFiles/tasks/ChildProcess.h"

/// The platform's numbers of text encodings that are known here. ASCII is of 7 bits.
enum class StringEncoding : unsigned long { ascii = 1, utf8 = 4, isoLatin1 = 5, utf16 = 10 };

/// Runs external programs: an absolute launch path and an array of arguments, never a shell. Failures go to the log,
/// nothing is thrown and nothing is shown. A program's own status is no failure.
///
/// The class operations block the calling thread until the program is through (runTaskAndReturn does not) and may be
/// called from any thread. `task`, where given, receives the process before it is launched.
///
/// Those with a time-out, in seconds, cut to whole ones, terminate the program when it is over: politely, on the main
/// thread, hence not before that has time for it. The run then ends as if the program had ended by itself.
///
/// Output is collected in memory. A run that collects ends when every holder of the program's output has closed it,
/// and does not wait for the program. Its standard input stays open and silent until then.
class QVTaskEx final : public std::enable_shared_from_this<QVTaskEx> {
  struct Private {};

 public:
  using Environment = QMap<QString, QString>;
  /// Receives a chunk of output, empty at the end of output; the task; and its `object`, invalid when there is none.
  using Delegate = std::function<void(const QByteArray& chunk, QVTaskEx& task, const QVariant& object)>;

  /// A name and what comes with it, handed over directly.
  struct Notification {
    QString name;
    QVariantMap userInfo;
  };

  // --- Class operations -------------------------------------------------------------------------------------------

  /// runTask:arguments:
  /// runTask:arguments:task: true when the program was launched and ended, whatever its status. Its output is dropped.
  /// A relative path is launched unchecked.
  static bool runTask(const QString& path, const QStringList& arguments = {}, ChildProcessSlot* task = nullptr);
  /// runTask:arguments:timeout: the time-out ends nothing: it waits for the program however long it takes.
  static void runTask(const QString& path, const QStringList& arguments, double timeout);
  /// runTaskAndReturn:arguments: starts the program and returns.
  static void runTaskAndReturn(const QString& path, const QStringList& arguments = {});

  /// dataFromTask:arguments:task:
  /// dataFromTask:arguments:task:environment:
  /// dataFromTask:arguments:task:environment:logOutput:
  /// dataFromTask:arguments:task:environment:logOutput:logError: the program's output, or what it wrote to its standard
  /// error when it wrote nothing else; null when it could not be run. What is not logged is not collected: output is
  /// inherited, errors are dropped.
  static std::optional<QByteArray> dataFromTask(const QString& path, const QStringList& arguments,
                                                ChildProcessSlot* task,
                                                const std::optional<Environment>& environment = {},
                                                bool logOutput = true, bool logError = true);
  /// dataFromTask:arguments:timeout:
  /// dataFromTask:arguments:timeout:logOutput:logError:
  static std::optional<QByteArray> dataFromTask(const QString& path, const QStringList& arguments, double timeout,
                                                bool logOutput = true, bool logError = true);

  /// stringFromTask:arguments:
  /// stringFromTask:arguments:task: the data as text; empty when there was none, null when it is not in the encoding.
  static QString stringFromTask(const QString& path, const QStringList& arguments, ChildProcessSlot* task = nullptr);
  /// stringFromTask:arguments:encoding:task:
  static QString stringFromTask(const QString& path, const QStringList& arguments, StringEncoding encoding,
                                ChildProcessSlot* task);
  /// stringFromTask:arguments:timeout:
  static QString stringFromTask(const QString& path, const QStringList& arguments, double timeout);
  /// stringFromTask:arguments:encoding:timeout:
  /// stringFromTask:arguments:encoding:timeout:logOutput:logError:
  static QString stringFromTask(const QString& path, const QStringList& arguments, StringEncoding encoding,
                                double timeout, bool logOutput = true, bool logError = true);

  /// terminationCodeFromTask:arguments:
  /// terminationCodeFromTask:arguments:task: the exit status, the number of the signal that ended the program, or -1
  /// when it could not be run.
  static std::int32_t terminationCodeFromTask(const QString& path, const QStringList& arguments = {},
                                              ChildProcessSlot* task = nullptr);
  /// terminationCodeFromTask:arguments:timeout:
  static std::int32_t terminationCodeFromTask(const QString& path, const QStringList& arguments, double timeout);

  // --- Instances: one run at a time -------------------------------------------------------------------------------

  static std::shared_ptr<QVTaskEx> create() { return std::make_shared<QVTaskEx>(Private()); }
  explicit QVTaskEx(Private /*made by create()*/) {}
  ~QVTaskEx();  ///< terminates a program that runs
  QVTaskEx(const QVTaskEx&) = delete;
  QVTaskEx& operator=(const QVTaskEx&) = delete;

  std::shared_ptr<ChildProcess> theTask() const { return theTask_.get(); }
  void setTheTask(std::shared_ptr<ChildProcess> task) { theTask_.set(std::move(task)); }
  Delegate delegate() const;
  void setDelegate(Delegate delegate);
  QVariant object() const;
  void setObject(const QVariant& object);

  /// runTask:arguments:timeout:
  void runTaskInstance(const QString& path, const QStringList& arguments, double timeout);
  /// dataFromTask:arguments:timeout:
  /// dataFromTask:arguments:timeout:logOutput:logError:
  std::optional<QByteArray> dataFromTaskInstance(const QString& path, const QStringList& arguments, double timeout,
                                                 bool logOutput = true, bool logError = true);
  /// terminationCodeFromTask:arguments:timeout:
  std::int32_t terminationCodeFromTaskInstance(const QString& path, const QStringList& arguments, double timeout);

  /// asyncDataFromTask:arguments:delegate:selector:object:
  /// asyncDataFromTask:arguments:delegate:selector:object:environment: runs the program on a thread of its own, which
  /// calls the delegate with each chunk of output and once more at its end; then the program is terminated. The
  /// program's errors are dropped. The caller keeps the instance until the last call.
  void asyncDataFromTask(const QString& path, const QStringList& arguments, Delegate delegate, const QVariant& object,
                         const std::optional<Environment>& environment = {});

  /// Ends an asynchronous run from any thread: the delegate is not called again, but for a call that has begun, and the
  /// program is terminated.
  void terminateAsyncTask();
  void terminateTask() { terminateAsyncTask(); }

  /// What a timer makes of a time-out: cut toward zero; a number that 32 bits with a sign cannot hold becomes the least
  /// of them.
  static std::int32_t wholeSeconds(double timeout);
  /// setupTimeout: sleeps for that many seconds, then runs timeout on the main thread and waits for it.
  void setupTimeout(std::int32_t seconds);
  /// Terminates the program that runs, with a log entry.
  void timeout();

  // --- The thread of an asynchronous run ---------------------------------------------------------------------------

  void launchAsyncTask();
  /// asyncTaskReturnData:
  void asyncTaskReturnData(const Notification& notification);

 private:
  template <typename Run>
  auto timed(double timeout, const Run& run);
  void startTimer(double timeout);
  void handToDelegate(const QByteArray& chunk);

  ChildProcessSlot theTask_;
  mutable std::mutex mutex_;  ///< guards what follows
  Delegate delegate_;
  QVariant object_;
  std::shared_ptr<sys::Descriptor> closed_;  ///< readable once the output's reading end counts as closed
};
