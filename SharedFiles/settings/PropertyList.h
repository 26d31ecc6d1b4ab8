#pragma once

#include <QByteArray>
#include <QString>
#include <QVariant>
#include <QVariantMap>
#include <optional>

/// Property lists. A value is a QVariant: bool, an integer of at most 64 bits with its sign (read as qlonglong,
/// above its largest as qulonglong), double, QString, QDateTime (UTC, within 68 years of 2001; milliseconds count from
/// 2001 on), QByteArray, QVariantList or QVariantMap, nested at most 64 deep. Both forms are read, XML and binary.
/// Written is XML, or the binary form where XML has no room for the value: a date with a fraction of a second, a text
/// with a control character. Stateless; callable from any thread.
class PropertyList final {
 public:
  PropertyList() = delete;

  /// Larger files are not read.
  static constexpr qint64 largestFile = 32 << 20;

  /// The value, or nothing when the bytes are no well-formed property list of the types above.
  static std::optional<QVariant> fromBytes(const QByteArray& bytes);
  /// Nothing when a value is of another type, a date is out of range, or a text holds a null character or half of a
  /// surrogate pair.
  static std::optional<QByteArray> toBytes(const QVariant& value);

  /// The whole file's value; nothing when it is missing, no regular file, too large, unreadable or malformed.
  static std::optional<QVariant> read(const QString& path);
  /// The same for a file whose value is a dictionary.
  static std::optional<QVariantMap> readDictionary(const QString& path);
  /// Writes the whole file, which appears or changes at once or not at all. The folder must be there.
  static bool write(const QVariant& value, const QString& path);
};
