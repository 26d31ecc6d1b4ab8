#pragma once

#include <QByteArray>
#include <QString>
#include <QVariantMap>

/// The body of a multipart/form-data request (RFC 7578), as the maker's servers take it: without the closing delimiter.
/// Stateless; callable from any thread.
class MultipartForm final {
 public:
  MultipartForm() = delete;

  /// generateFormData:forBoundary: one part a key. A QUrl of a local file is sent as that file: its name and its bytes,
  /// none when it cannot be read. Any other QUrl leaves an empty part. Every other value is sent as its text, a
  /// list and a dictionary as their description over several lines. Keys and file names are written as they stand.
  static QByteArray generateFormData(const QVariantMap& dictionary, const QString& boundary);
};
