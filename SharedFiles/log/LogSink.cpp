#include "SharedFiles/log/LogSink.h"

#include <cerrno>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "SharedFiles/foundation/QVPlatformException.h"

namespace {

/// A folder opens for reading only, so for writing there are files, devices and pipes with a reader.
bool isPipe(int descriptor) {
  struct stat status {};
  return ::fstat(descriptor, &status) == 0 && S_ISFIFO(status.st_mode);
}

}  // namespace

std::shared_ptr<LogSink> LogFileSink::open(const QByteArray& path, IfMissing ifMissing) {
  const int flags = O_WRONLY | O_APPEND | O_CLOEXEC | (ifMissing == IfMissing::Create ? O_CREAT : 0);
  // A pipe that nobody reads fails instead of being waited for.
  const int descriptor = ::open(path.constData(), flags | O_NONBLOCK, 0666);
  if (descriptor < 0) return nullptr;
  ::fcntl(descriptor, F_SETFL, flags);
  if (isPipe(descriptor)) {
    ::close(descriptor);
    return nullptr;
  }
  return std::make_shared<LogFileSink>(descriptor);
}

LogFileSink::~LogFileSink() {
  ::close(descriptor_);
}

void LogFileSink::write(const QByteArray& line) {
  qsizetype done = 0;
  while (done < line.size()) {
    const ssize_t written = ::write(descriptor_, line.constData() + done, static_cast<size_t>(line.size() - done));
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) {
      const std::string reason = std::generic_category().message(written < 0 ? errno : EIO);
      throw QVPlatformException(QString::fromLocal8Bit(reason), QStringLiteral("NSFileHandleOperationException"));
    }
    done += written;
  }
}
