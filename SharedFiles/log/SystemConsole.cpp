#include "SharedFiles/log/SystemConsole.h"

#include <cerrno>

#include <unistd.h>

void writeToConsole(const QString& text) {
  const QByteArray line = text.toUtf8() + '\n';
  qsizetype written = 0;
  while (written < line.size()) {
    const ssize_t count =
        ::write(STDERR_FILENO, line.constData() + written, static_cast<std::size_t>(line.size() - written));
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return;
    written += count;
  }
}
