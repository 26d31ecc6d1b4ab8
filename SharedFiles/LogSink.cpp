#include "SharedFiles/LogSink.h"

#include "SharedFiles/QVPlatformException.h"

std::shared_ptr<LogSink> LogFileSink::open(const QString& path, IfMissing ifMissing) {
  auto sink = std::make_shared<LogFileSink>(path);
  QIODevice::OpenMode mode = QIODevice::WriteOnly | QIODevice::Append | QIODevice::Unbuffered;
  if (ifMissing == IfMissing::Fail) mode |= QIODevice::ExistingOnly;
  return sink->file_.open(mode) ? sink : nullptr;
}

void LogFileSink::write(const QByteArray& line) {
  if (file_.write(line) != line.size()) {
    throw QVPlatformException(file_.errorString(), QStringLiteral("NSFileHandleOperationException"));
  }
}
