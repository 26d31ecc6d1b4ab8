#include "SharedFiles/log/LogSink.h"

#include <system_error>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>

#include "SharedFiles/foundation/QVPlatformException.h"
#include "system/FileBytes.h"

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
  sys::Descriptor descriptor(::open(path.constData(), flags | O_NONBLOCK, 0666));
  if (!descriptor.isOpen() || isPipe(descriptor.get())) return nullptr;
  ::fcntl(descriptor.get(), F_SETFL, flags);
  return std::make_shared<LogFileSink>(std::move(descriptor));
}

void LogFileSink::write(const QByteArray& line) {
  const int error = sys::writeAll(descriptor_.get(), {line.constData(), static_cast<std::size_t>(line.size())});
  if (error == 0) return;
  throw QVPlatformException(QString::fromLocal8Bit(std::generic_category().message(error)),
                            QStringLiteral("NSFileHandleOperationException"));
}
