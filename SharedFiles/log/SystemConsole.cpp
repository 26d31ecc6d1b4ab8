#include "SharedFiles/log/SystemConsole.h"

#include <unistd.h>

#include "system/FileBytes.h"

void writeToConsole(const QString& text) {
  const QByteArray line = text.toUtf8() + '\n';
  sys::writeAll(STDERR_FILENO, {line.constData(), static_cast<std::size_t>(line.size())});
}
