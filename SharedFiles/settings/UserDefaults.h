#pragma once

#include <QString>
#include <QVariant>
#include <QVariantMap>
#include <functional>
#include <mutex>
#include <optional>

#include "SharedFiles/foundation/BundleInfo.h"
#include "SharedFiles/foundation/PathPlatform.h"

/// The user defaults of an application, or what applications share: a property list in the user's preferences folder,
/// named after the bundle's identifier or after one of its own. Every change is on the disk when the call returns; the
/// file appears or changes whole or not at all, and what other processes wrote is seen and kept. All members may be
/// called from any thread.
///
/// A missing, unreadable or malformed file counts as empty. What stands there but cannot be read is renamed aside
/// before the first write (".damaged", ".damaged-2", ...), never overwritten.
///
/// A key is taken as it stands, dots and all. Only the two operations on key paths give dots a meaning.
class UserDefaults {
 public:
  /// The platform outlives the object. The folder is looked up at every call, so it follows the environment. Without an
  /// identifier there is no file: nothing is found and nothing can be stored.
  UserDefaults(const PathPlatform& platform, QString identifier);
  UserDefaults(const PathPlatform& platform, const BundleInfo& bundle);
  UserDefaults(const UserDefaults&) = delete;
  UserDefaults& operator=(const UserDefaults&) = delete;

  /// Those of the running program; lives as long as the process.
  static UserDefaults& standard();

  QString path() const;  ///< the file's, whether it exists or not; nil without an identifier

  QVariant objectForKey(const QString& key) const;    ///< an invalid value when there is none
  QString stringForKey(const QString& key) const;     ///< nil unless the value is a text
  qlonglong integerForKey(const QString& key) const;  ///< 0 unless a number or a truth value; fractions are cut off

  /// Stores a value of the types that PropertyList lists; an invalid value removes the key. An equal value of the same
  /// type writes nothing. False when the value is of another type or the file could not be written: then nothing has
  /// changed.
  bool setObject(const QVariant& value, const QString& key) { return setObjects({{key, value}}); }
  /// The same for several keys: all of them at once, or none.
  bool setObjects(const QVariantMap& objects);

  /// The value at a key path, as a suppression switch is bound to it: "a.b" is key "b" of the dictionary under key "a".
  /// A path with an empty part (".a", "a..b", "") is one key as it stands.
  QVariant valueForKeyPath(const QString& keyPath) const;
  /// Stores it there; dictionaries on the way are made. False, too, when something other than a dictionary stands in
  /// the way: it is kept.
  bool setValueForKeyPath(const QVariant& value, const QString& keyPath);

 private:
  /// What tells one state of the file from another.
  struct FileState {
    QString path;
    bool exists = false;
    unsigned long long device = 0, inode = 0;
    long long size = 0, seconds = 0, nanoseconds = 0;
    bool operator==(const FileState&) const = default;
  };
  static FileState stateOf(const QString& path);

  const QVariantMap& current() const;
  /// Edits what is on the disk now, under the folder's lock; writes nothing when the edit refuses or changes nothing.
  bool change(const std::function<bool(QVariantMap&)>& edit);

  const PathPlatform& platform_;
  const QString identifier_;
  mutable std::mutex mutex_;  ///< guards what follows
  mutable std::optional<FileState> read_;
  mutable QVariantMap values_;
  mutable bool damaged_ = false;  ///< something stands there that is no dictionary
};
