// Copies a file to several destinations and verifies each with SHA-256, as file_copy.py times it.
//
// usage: bench_file_copy [SOURCE DEST...]
// Without files it does nothing: what a process of this kind takes when idle. It prints its peak resident set in KiB.

#include <QCoreApplication>
#include <QFile>
#include <cstdio>

#include "SharedFiles/files/FileCopy.h"

namespace {

/// Of this program's memory alone: what the system counts for a child includes the parent's before the program began.
void printPeakMemory() {
  QFile status("/proc/self/status");
  if (!status.open(QIODevice::ReadOnly)) return;
  for (const QByteArray& line : status.readAll().split('\n')) {
    if (line.startsWith("VmHWM:")) std::printf("%d\n", line.mid(6).trimmed().split(' ').first().toInt());
  }
}

int copyAndVerify(const QStringList& files) {
  constexpr unsigned int sha256 = 3;
  const bool copied = copyFileToDestinations(
      {.source = files.first(), .destinations = files.mid(1), .verificationType = sha256, .delegate = {}});
  if (!copied) std::fputs("bench_file_copy: the copy failed\n", stderr);
  return copied ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
  const QCoreApplication application(argc, argv);
  const QStringList files = QCoreApplication::arguments().mid(1);
  const int status = files.isEmpty() ? 0 : copyAndVerify(files);
  printPeakMemory();
  return status;
}
