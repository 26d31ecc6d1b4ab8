#pragma once

#include <QByteArray>
#include <optional>

#include "SharedFiles/tasks/ChildProcess.h"

/// What a program wrote.
struct TaskOutput {
  QByteArray output = QByteArray("", 0);  ///< present even when empty
  QByteArray errors = QByteArray("", 0);
};

/// Reads the pipes that a launched process has, to the end of both. Errors are set aside while output is read, so that
/// a program is never held up by either. Throws QVPlatformException when a pipe cannot be read. Blocks.
TaskOutput readToEnd(ChildProcess& process);

/// The next chunk of the process's output; empty at its end, or once `wake` (a descriptor, or -1) is readable. Throws
/// and blocks as readToEnd.
QByteArray readChunk(const sys::Descriptor& output, int wake);

/// Whether a read would return at once.
bool isReadable(const sys::Descriptor& descriptor);
