#include "SharedFiles/tasks/QVTaskEx.h"

#include <QStringDecoder>
#include <algorithm>
#include <utility>

#include "SharedFiles/foundation/FilePackage.h"
#include "SharedFiles/foundation/QVPlatformException.h"
#include "SharedFiles/log/QVLog.h"
#include "SharedFiles/tasks/TaskPipes.h"

namespace {

bool isRunnable(const QString& path) {
  return isExecutableFileAtPath(path) && !isFilePackageAtPath(path);
}

bool checked(const QString& path) {
  if (isRunnable(path)) return true;
  QVLog::appendLogAndPrint("Error: %@ is not executable", path);
  return false;
}

std::shared_ptr<ChildProcess> makeProcess(const QString& path, const QStringList& arguments, ChildProcessSlot* task) {
  auto process = std::make_shared<ChildProcess>();
  if (task != nullptr) task->set(process);
  process->setLaunchPath(path);
  process->setArguments(arguments);
  return process;
}

std::shared_ptr<ChildProcess> makeSilentProcess(const QString& path, const QStringList& arguments,
                                                ChildProcessSlot* task) {
  auto process = makeProcess(path, arguments, task);
  process->setStandardError(StandardStream::nullDevice);
  process->setStandardOutput(StandardStream::nullDevice);
  return process;
}

void logException(const QString& path, const QVPlatformException& exception) {
  QVLog::appendLog("Exception running task %@: %@", path, exception.reason());
}

QString decoded(const std::optional<QByteArray>& data, StringEncoding encoding) {
  const auto is7Bit = [](char byte) { return static_cast<unsigned char>(byte) < 0x80; };
  if (!data) return QLatin1String("");
  switch (encoding) {
    case StringEncoding::ascii:
      return std::all_of(data->begin(), data->end(), is7Bit) ? QString::fromLatin1(*data) : QString();
    case StringEncoding::isoLatin1:
      return QString::fromLatin1(*data);
    case StringEncoding::utf8:
    case StringEncoding::utf16: {
      QStringDecoder decoder(encoding == StringEncoding::utf8 ? QStringDecoder::Utf8 : QStringDecoder::Utf16);
      const QString text = decoder.decode(*data);
      return decoder.hasError() ? QString() : text;
    }
  }
  return {};
}

}  // namespace

bool QVTaskEx::runTask(const QString& path, const QStringList& arguments) {
  return runTask(path, arguments, nullptr);
}

bool QVTaskEx::runTask(const QString& path, const QStringList& arguments, ChildProcessSlot* task) {
  if (path.startsWith('/') && !checked(path)) return false;
  try {
    const auto process = makeSilentProcess(path, arguments, task);
    process->launch();
    process->waitUntilExit();
    return true;
  } catch (const QVPlatformException& exception) {
    logException(path, exception);
    return false;
  }
}

void QVTaskEx::runTask(const QString& path, const QStringList& arguments, double timeout) {
  create()->runTaskInstance(path, arguments, timeout);
}

void QVTaskEx::runTaskAndReturn(const QString& path, const QStringList& arguments) {
  if (!checked(path)) return;
  try {
    makeSilentProcess(path, arguments, nullptr)->launch();
  } catch (const QVPlatformException& exception) {
    logException(path, exception);
  }
}

std::optional<QByteArray> QVTaskEx::dataFromTask(const QString& path, const QStringList& arguments,
                                                 ChildProcessSlot* task) {
  return dataFromTask(path, arguments, task, std::nullopt);
}

std::optional<QByteArray> QVTaskEx::dataFromTask(const QString& path, const QStringList& arguments,
                                                 ChildProcessSlot* task,
                                                 const std::optional<Environment>& environment) {
  return dataFromTask(path, arguments, task, environment, true);
}

std::optional<QByteArray> QVTaskEx::dataFromTask(const QString& path, const QStringList& arguments,
                                                 ChildProcessSlot* task, const std::optional<Environment>& environment,
                                                 bool logOutput) {
  return dataFromTask(path, arguments, task, environment, logOutput, true);
}

std::optional<QByteArray> QVTaskEx::dataFromTask(const QString& path, const QStringList& arguments,
                                                 ChildProcessSlot* task, const std::optional<Environment>& environment,
                                                 bool logOutput, bool logError) {
  if (!checked(path)) return std::nullopt;
  try {
    const auto process = makeProcess(path, arguments, task);
    if (environment) process->setEnvironment(*environment);
    process->setStandardOutput(logOutput ? StandardStream::pipe : StandardStream::inherited);
    process->setStandardInput(StandardStream::pipe);
    process->setStandardError(logError ? StandardStream::pipe : StandardStream::nullDevice);
    process->launch();
    TaskOutput collected = readToEnd(*process);
    process->standardInput.close();
    return collected.output.isEmpty() ? std::move(collected.errors) : std::move(collected.output);
  } catch (const QVPlatformException& exception) {
    QVLog::appendLogAndPrint("Exception running task %@: %@", path, exception.reason());
    return std::nullopt;
  }
}

std::optional<QByteArray> QVTaskEx::dataFromTask(const QString& path, const QStringList& arguments, double timeout) {
  return dataFromTask(path, arguments, timeout, true, true);
}

std::optional<QByteArray> QVTaskEx::dataFromTask(const QString& path, const QStringList& arguments, double timeout,
                                                 bool logOutput, bool logError) {
  return create()->dataFromTaskInstance(path, arguments, timeout, logOutput, logError);
}

QString QVTaskEx::stringFromTask(const QString& path, const QStringList& arguments) {
  return stringFromTask(path, arguments, StringEncoding::ascii, nullptr);
}

QString QVTaskEx::stringFromTask(const QString& path, const QStringList& arguments, double timeout) {
  return stringFromTask(path, arguments, StringEncoding::ascii, timeout);
}

QString QVTaskEx::stringFromTask(const QString& path, const QStringList& arguments, StringEncoding encoding,
                                 double timeout) {
  return decoded(dataFromTask(path, arguments, timeout), encoding);
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

std::int32_t QVTaskEx::terminationCodeFromTask(const QString& path, const QStringList& arguments) {
  return terminationCodeFromTask(path, arguments, nullptr);
}

std::int32_t QVTaskEx::terminationCodeFromTask(const QString& path, const QStringList& arguments,
                                               ChildProcessSlot* task) {
  constexpr std::int32_t notRun = -1;
  if (!checked(path)) return notRun;
  try {
    const auto process = makeSilentProcess(path, arguments, task);
    process->launch();
    process->waitUntilExit();
    return process->terminationStatus();
  } catch (const QVPlatformException& exception) {
    logException(path, exception);
    return notRun;
  }
}

std::int32_t QVTaskEx::terminationCodeFromTask(const QString& path, const QStringList& arguments, double timeout) {
  return create()->terminationCodeFromTaskInstance(path, arguments, timeout);
}
