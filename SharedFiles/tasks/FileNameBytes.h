#pragma once

#include <QString>
#include <optional>
#include <string>

/// The bytes with which the system knows a path: UTF-8. None, with a log line, for a text that has none: one with a
/// null character or half of a surrogate pair. Slashes at its end are dropped; a path of slashes alone keeps one.
std::optional<std::string> bytesOfPath(const QString& path);

/// A name or path given by the system, as text. None, with a log line, for one that is not UTF-8: it is never altered.
std::optional<QString> fileNameAsText(const std::string& name);

/// The path, made absolute against the working folder, without slashes at its end. Null for a null or empty path, for
/// one that bytesOfPath() refuses, and where the working folder has no name that is text.
QString absolutePath(const QString& path);
