// Copies a file to several destinations and verifies each with SHA-256, as file_copy.py times it.
//
// usage: bench_file_copy [SOURCE DEST...]
// Without files it does nothing: what a process of this kind takes when idle.

#include <QCoreApplication>
#include <cstdio>

#include "SharedFiles/FileCopy.h"

int main(int argc, char** argv) {
  const QCoreApplication application(argc, argv);
  const QStringList files = QCoreApplication::arguments().mid(1);
  if (files.isEmpty()) return 0;
  constexpr unsigned int sha256 = 3;
  const bool copied = copyFileToDestinations(
      {.source = files.first(), .destinations = files.mid(1), .verificationType = sha256, .delegate = {}});
  if (!copied) std::fputs("bench_file_copy: the copy failed\n", stderr);
  return copied ? 0 : 1;
}
