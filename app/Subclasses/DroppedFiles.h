#pragma once

#include <QStringList>

class QMimeData;

/// Whether a drag carries names of files on this machine (NSFilenamesPboardType).
bool hasFileNames(const QMimeData& dragged);

/// The full paths, in the order of the drag. A name that is not UTF-8 is left out with a line in the log.
QStringList fileNamesOf(const QMimeData& dragged);
