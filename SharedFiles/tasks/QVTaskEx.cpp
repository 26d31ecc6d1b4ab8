#include "SharedFiles/tasks/QVTaskEx.h"

#include <QStringDecoder>
#include <algorithm>
#include <utility>

#include "SharedFiles/foundation/FilePackage.h"
#include "SharedFiles/foundation/QVPlatformException.h"
#include "SharedFiles/log/QVLog.h"

namespace {

bool isRunnable(const QString& path) {
  return isExecutableFileAtPath(path) && !isFilePackageAtPath(path);
}

bool checked(const QString& path) {
  if (isRunnable(path)) return true;
  QVLog::appendLogAndPrint("Error: %@ is not executable", path);
  return false;
}

std::shared_ptr<ChildProcess> makeProcess(ProgramCall call, ChildProcessSlot* task) {
  auto process = std::make_shared<ChildProcess>(std::move(call));
  if (task != nullptr) task->set(process);
  return process;
}

/// Launches a program whose output nobody reads. None, with a line in the log, when that fails.
std::shared_ptr<ChildProcess> launchedSilently(const QString& path, const QStringList& arguments,
                                               ChildProcessSlot* task = nullptr) {
  constexpr auto nowhere = StandardStream::nullDevice;
  try {
    auto process = makeProcess({.path = path, .arguments = arguments, .output = nowhere, .error = nowhere}, task);
    process->launch();
    return process;
  } catch (const QVPlatformException& exception) {
    QVLog::appendLog("Exception running task %@: %@", path, exception.reason());
    return nullptr;
  }
}

QString decoded(const std::optional<QByteArray>& data, StringEncoding encoding) {
  const auto is7Bit = [](char byte) { return static_cast<unsigned char>(byte) < 0x80; };
  if (!data) return QLatin1String("");
  switch (encoding) {
    case StringEncoding::ascii:
      return std::all_of(data->begin(), data->end(), is7Bit) ? QString::fromLatin1(*data) : QString();
    case StringEncoding::isoLatin1:
      return QString::fromLatin1(*data);
    default:
      QStringDecoder decoder(encoding == StringEncoding::utf8 ? QStringDecoder::Utf8 : QStringDecoder::Utf16);
      const QString text = decoder.decode(*data);
      return decoder.hasError() ? QString() : text;
  }
}

}  // namespace

bool QVTaskEx::runTask(const QString& path, const QStringList& arguments, ChildProcessSlot* task) {
  if (path.startsWith('/') && !checked(path)) return false;
  const auto process = launchedSilently(path, arguments, task);
  if (process) process->waitUntilExit();
  return process != nullptr;
}

void QVTaskEx::runTask(const QString& path, const QStringList& arguments, double timeout) {
  create()->runTaskInstance(path, arguments, timeout);
}

void QVTaskEx::runTaskAndReturn(const QString& path, const QStringList& arguments) {
  if (checked(path)) launchedSilently(path, arguments);
}

std::optional<QByteArray> QVTaskEx::dataFromTask(const QString& path, const QStringList& arguments,
                                                 ChildProcessSlot* task, const std::optional<Environment>& environment,
                                                 bool logOutput, bool logError) {
  if (!checked(path)) return std::nullopt;
  try {
    const auto process = makeProcess({.path = path,
                                      .arguments = arguments,
                                      .environment = environment,
                                      .input = StandardStream::pipe,
                                      .output = logOutput ? StandardStream::pipe : StandardStream::inherited,
                                      .error = logError ? StandardStream::pipe : StandardStream::nullDevice},
                                     task);
    process->launch();
    TaskOutput collected = readToEnd(*process);
    process->standardInput.close();
    return collected.output.isEmpty() ? std::move(collected.errors) : std::move(collected.output);
  } catch (const QVPlatformException& exception) {
    QVLog::appendLogAndPrint("Exception running task %@: %@", path, exception.reason());
    return std::nullopt;
  }
}

std::optional<QByteArray> QVTaskEx::dataFromTask(const QString& path, const QStringList& arguments, double timeout,
                                                 bool logOutput, bool logError) {
  return create()->dataFromTaskInstance(path, arguments, timeout, logOutput, logError);
}

QString QVTaskEx::stringFromTask(const QString& path, const QStringList& arguments, double timeout) {
  return stringFromTask(path, arguments, StringEncoding::ascii, timeout);
}

QString QVTaskEx::stringFromTask(const QString& path, const QStringList& arguments, StringEncoding encoding,
                                 double timeout, bool logOutput, bool logError) {
  return decoded(dataFromTask(path, arguments, timeout, logOutput, logError), encoding);
}

QString QVTaskEx::stringFromTask(const QString& path, const QStringList& arguments, ChildProcessSlot* task) {
  return stringFromTask(path, arguments, StringEncoding::ascii, task);
}

QString QVTaskEx::stringFromTask(const QString& path, const QStringList& arguments, StringEncoding encoding,
                                 ChildProcessSlot* task) {
  return decoded(dataFromTask(path, arguments, task), encoding);
}

std::int32_t QVTaskEx::terminationCodeFromTask(const QString& path, const QStringList& arguments,
                                               ChildProcessSlot* task) {
  constexpr std::int32_t notRun = -1;
  const auto process = checked(path) ? launchedSilently(path, arguments, task) : nullptr;
  if (!process) return notRun;
  process->waitUntilExit();
  return process->terminationStatus();
}

std::int32_t QVTaskEx::terminationCodeFromTask(const QString& path, const QStringList& arguments, double timeout) {
  return create()->terminationCodeFromTaskInstance(path, arguments, timeout);
}
