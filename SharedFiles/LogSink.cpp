#include "SharedFiles/LogSink.h"

#include <fcntl.h>
#include <unistd.h>

#include "SharedFiles/QVPlatformException.h"

std::shared_ptr<LogSink> LogFileSink::open(const QByteArray& path, IfMissing ifMissing) {
  const int flags = O_WRONLY | O_APPEND | O_CLOEXEC | (ifMissing == IfMissing::Create ? O_CREAT : 0);
  // A pipe that nobody reads fails instead of being waited for.
  const int descriptor = ::open(path.constData(), flags | O_NONBLOCK, 0666);
  if (descriptor < 0) return nullptr;
  ::fcntl(descriptor, F_SETFL, flags);
  auto sink = std::make_shared<LogFileSink>();
  if (!sink->file_.open(descriptor, QIODevice::WriteOnly | QIODevice::Append | QIODevice::Unbuffered,
                        QFileDevice::AutoCloseHandle)) {
    ::close(descriptor);
    return nullptr;
  }
  return sink;
}

void LogFileSink::write(const QByteArray& line) {
  if (file_.write(line) != line.size()) {
    throw QVPlatformException(file_.errorString(), QStringLiteral("NSFileHandleOperationException"));
  }
}
