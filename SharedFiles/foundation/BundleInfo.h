#pragma once

#include <QHash>
#include <QString>

/// A bundle's information keys and its executable. The programs `lumacheck` and `Lumacheck` are two executables of one
/// bundle: they share the dictionary and differ in the executable. Immutable.
class BundleInfo {
 public:
  /// No bundle: no keys, no executable.
  BundleInfo() = default;
  BundleInfo(QHash<QString, QString> information, QString executablePath);

  /// The bundle of the running program; lives as long as the process.
  static const BundleInfo& mainBundle();

  /// objectForInfoDictionaryKey: the value, or nil. Keys of the main bundle: CFBundleIdentifier, CFBundleName,
  /// CFBundleVersion, CFBundleShortVersionString and QVShortName.
  QString objectForInfoDictionaryKey(const QString& key) const;

  /// Absolute; nil when there is no bundle.
  const QString& executablePath() const { return executablePath_; }
  /// The executable's file name without its extension, or nil.
  QString executableName() const;
  /// The folder that holds the executable, or nil.
  QString executableFolder() const;

 private:
  QHash<QString, QString> information_;
  QString executablePath_;
};
