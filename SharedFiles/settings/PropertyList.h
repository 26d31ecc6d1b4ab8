#pragma once

#include <QByteArray>
#include <QString>
#include <QVariant>
#include <QVariantMap>
#include <optional>

/// Property lists in their XML form. A value is a QVariant: bool, an integer of at most 64 bits with its sign (read as
/// qlonglong), double, QString, QDateTime (UTC, whole seconds, within 68 years of 2001), QByteArray, QVariantList or
/// QVariantMap, nested at most 64 deep. Stateless; callable from any thread.
class PropertyList final {
 public:
  PropertyList() = delete;

  /// Larger files are not read.
  static constexpr qint64 largestFile = 32 << 20;

  /// The value, or nothing when the bytes are no well-formed property list of the types above.
  static std::optional<QVariant> fromXml(const QByteArray& xml);
  /// Nothing when a value is of another type, a date is out of range, or a text holds a character that XML cannot.
  static std::optional<QByteArray> toXml(const QVariant& value);

  /// The whole file's value; nothing when it is missing, no regular file, too large, unreadable or malformed.
  static std::optional<QVariant> read(const QString& path);
  /// The same for a file whose value is a dictionary.
  static std::optional<QVariantMap> readDictionary(const QString& path);
  /// Writes the whole file, which appears or changes at once or not at all. The folder must be there.
  static bool write(const QVariant& value, const QString& path);
};
