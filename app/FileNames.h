#pragma once

#include <QByteArray>
#include <QString>
#include <optional>

/// A file name given by the system, as text. None for one that is not UTF-8: it is refused with a line in the log,
/// never altered.
std::optional<QString> textOfFileName(const QByteArray& name);
