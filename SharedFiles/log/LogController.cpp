#include "SharedFiles/log/LogController.h"

#include <QFile>
#include <QSysInfo>
#include <array>
#include <cstdlib>
#include <iostream>
#include <utility>

#include <unistd.h>

#include "SharedFiles/foundation/QVPlatformException.h"
#include "SharedFiles/settings/SharedSettings.h"

namespace {

constexpr qsizetype shortEntry = 100;

LogSystemSummary systemSummary() {
  const long processors = sysconf(_SC_NPROCESSORS_ONLN);
  const long pages = sysconf(_SC_PHYS_PAGES);
  const long pageSize = sysconf(_SC_PAGESIZE);
  const bool known = pages > 0 && pageSize > 0;
  return {QSysInfo::prettyProductName(), processors > 0 ? processors : 1,
          known ? static_cast<quint64>(pages) * static_cast<quint64>(pageSize) : 0};
}

/// Year-month-day, 24-hour time and the zone's offset from UTC. Put together here: what Qt formats dates with is gone
/// when the last entries are written, while the process exits.
QString descriptionOf(const QDateTime& moment) {
  const QDate date = moment.date();
  const QTime time = moment.time();
  const int minutes = moment.offsetFromUtc() / 60;
  return formatLog("%04d-%02d-%02d %02d:%02d:%02d %@%02d%02d", date.year(), date.month(), date.day(), time.hour(),
                   time.minute(), time.second(), minutes < 0 ? "-" : "+", std::abs(minutes) / 60,
                   std::abs(minutes) % 60);
}

}  // namespace

LogEnvironment LogEnvironment::standard() {
  return {.paths = PathPlatform::standard(),
          .bundle = BundleInfo::mainBundle(),
          .now = [] { return QDateTime::currentDateTimeUtc(); },
          .isMainThread = [] { return gettid() == getpid(); },
          .system = systemSummary,
          .output = std::cout,
          .queue = std::make_shared<sys::SerialQueue>()};
}

LogController::LogController(LogEnvironment environment)
    : environment_(std::move(environment)), writeQueue_(environment_.queue) {}

LogController::~LogController() {
  willTerminate();
}

QString LogController::appName() const {
  const QString name = appName_.get();
  return name.isEmpty() ? environment_.bundle.executableName() : name;
}

void LogController::createNewLog(const QString& name, bool noPrinting) {
  setNoPrinting(noPrinting);
  if (loggingDisabled()) return;
  setFileHandle(nullptr);
  if (sink_.get()) return writeHeader();
  if (isDisabledBySettings()) {
    print(QStringLiteral("Logging is disabled\n"));
    setLoggingDisabled(true);
    return;
  }
  if (!name.isNull() && appName().isEmpty()) setAppName(name);
  setBytesWritten(0);
  if (appName().isEmpty()) setAppName(QStringLiteral("Unknown"));
  const LogFolder logs = folder();
  if (const std::optional<QString> failure = logs.startGeneration()) return print(*failure);
  std::shared_ptr<LogSink> handle =
      LogFileSink::open(QFile::encodeName(logs.currentFile()), LogFileSink::IfMissing::Fail);
  if (!handle) return;
  setFileHandle(std::move(handle));
  writeHeader();
}

bool LogController::isDisabledBySettings() const {
  return SharedSettings::isOn(QStringLiteral("disable-logging"), environment_.paths);
}

void LogController::writeHeader() {
  fastAppendLog("Log started: %@\n", {descriptionOf(environment_.now())});
  const QString version = environment_.bundle.objectForInfoDictionaryKey(QStringLiteral("CFBundleVersion"));
  if (!version.isNull()) fastAppendLog("Version: %@\n", {version});
  const QString path = environment_.bundle.executablePath();
  if (!path.isNull()) fastAppendLog("Path: %@\n", {path});
  const LogSystemSummary system = environment_.system();
  const double gigabytes = static_cast<double>(system.physicalMemory) / 1024.0 / 1024.0 / 1024.0;
  appendLog("System: macOS %@, %li CPU(s), %0.2f GB RAM\n", {system.version, system.processorCount, gigabytes});
  fastAppendLog("Running in 32-bit mode\n");
}

void LogController::appendLog(const QString& format, LogArguments arguments) {
  if (format.isNull() || loggingDisabled()) return;
  const QString text = formatLogArguments(escapeTextForLogging(format), arguments);
  appendTextToLog(text);
  const bool isShort = !text.isEmpty() && text.size() < shortEntry;
  if (isShort && bytesInQueue() < shortEntry && !environment_.isMainThread()) finishWriting();
}

void LogController::fastAppendLog(const QString& format, LogArguments arguments) {
  if (format.isNull() || loggingDisabled()) return;
  appendTextToLog(formatLogArguments(escapeTextForLogging(format), arguments));
}

void LogController::appendLogAndPrint(const QString& format, LogArguments arguments) {
  if (format.isNull() || loggingDisabled()) return;
  const QString text = formatLogArguments(escapeTextForLogging(format), arguments).trimmed();
  appendLog(text);
  print(printableText(text) + u'\n');
}

void LogController::appendLogAndDebugPrint(const QString& format, LogArguments arguments) {
  if (format.isNull() || loggingDisabled()) return;
  appendLog(formatLogArguments(escapeTextForLogging(format), arguments).trimmed());
}

void LogController::appendTextToLog(const QString& text) {
  const QString entry = text.trimmed();
  if (entry.isEmpty()) return;
  const auto characters = static_cast<quint32>(entry.size());
  bytesInQueue_ += characters;
  const std::shared_ptr<sys::SerialQueue> queue = writeQueue();
  // An entry from the writer itself opens a new generation: it goes before those that wait.
  if (queue && queue->isCurrent()) return appendLogOnThread(entry);
  if (!queue || !queue->addOperation([this, entry] { appendLogOnThread(entry); })) bytesInQueue_ -= characters;
}

void LogController::appendLogOnThread(const QString& text) {
  if (loggingDisabled()) return;
  try {
    writeEntry(text);
  } catch (const QVPlatformException& exception) {
    if (!loggingDisabled()) print(formatLog("Exception writing to log: %s\n", exception.reason()));
  }
  bytesInQueue_ -= static_cast<quint32>(text.size());
}

void LogController::writeEntry(const QString& text) {
  const std::shared_ptr<LogSink> elsewhere = sink_.get();
  const std::shared_ptr<LogSink> target = elsewhere ? elsewhere : openFileHandle();
  if (!target) {
    if (loggingDisabled()) return;
    print(formatLog("Unable to log the following information: %s\n", text));
    return print(QStringLiteral("Unable to open log for output\n"));
  }
  const QByteArray line = formatLog("%@ - %@\n", descriptionOf(environment_.now()), text).toUtf8();
  target->write(line);
  bytesWritten_ += static_cast<quint32>(line.size());
  if (!elsewhere && bytesWritten() >= sizeLimit) endGenerationOnThread();
}

std::shared_ptr<LogSink> LogController::openFileHandle() {
  std::shared_ptr<LogSink> handle = fileHandle();
  if (handle) return handle;
  handle = LogFileSink::open(QFile::encodeName(folder().currentFile()), LogFileSink::IfMissing::Fail);
  setFileHandle(handle);
  return handle;
}

void LogController::endGenerationOnThread() {
  finishWriting();
  createNewLog(appName());
  appendLog("Log truncated at 500KB");
}

void LogController::finishWriting() {
  const std::shared_ptr<sys::SerialQueue> queue = writeQueue();
  if (!queue || queue->isCurrent()) return;
  const std::lock_guard guard(finishing_);
  queue->waitUntilAllOperationsAreFinished();
}

QStringList LogController::availableLogs() const {
  return folder().availableLogs();
}

QString LogController::escapeTextForLogging(const QString& text) {
  if (!text.contains(u'%')) return text;
  constexpr std::array<std::array<const char*, 2>, 9> replacements = {{{"% ", "%% "},
                                                                       {"%.", "%%."},
                                                                       {"%!", "%%!"},
                                                                       {"%,", "%%,"},
                                                                       {"%-", "%%-"},
                                                                       {"%;", "%%;"},
                                                                       {"%:", "%%:"},
                                                                       {"%+", "%%+"},
                                                                       {"%%%", "%%"}}};
  QString escaped = text;
  for (const auto& [find, replacement] : replacements) {
    escaped.replace(QLatin1String(find), QLatin1String(replacement));
  }
  return escaped;
}

void LogController::willTerminate() {
  const std::shared_ptr<sys::SerialQueue> queue = writeQueue();
  if (queue) {
    if (queue->operationCount() < longBacklog) finishWriting();
    queue->shutDown();
  }
  setAppName(QString());
  setWriteQueue(nullptr);
  setFileHandle(nullptr);
}

QString LogController::printableText(QString text) {
  text.remove(QLatin1String("%@"));
  text.replace(u'%', QLatin1String("%%"));
  return text.remove(QChar(u'\0'));
}

void LogController::print(const QString& text) {
  if (noPrinting()) return;
  const std::lock_guard guard(printing_);
  environment_.output << text.toStdString() << std::flush;
}
