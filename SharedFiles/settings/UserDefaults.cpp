#include "SharedFiles/settings/UserDefaults.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStringList>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <limits>
#include <memory>
#include <thread>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "SharedFiles/foundation/QVLocalPaths.h"
#include "SharedFiles/settings/PropertyList.h"
#include "system/Descriptor.h"

namespace {

/// Keeps the other processes' writers out of a folder while this lives. Where the folder cannot be locked, or somebody
/// holds it for longer than a second, the writer goes on without.
class FolderLock {
 public:
  explicit FolderLock(const QString& folder)
      : descriptor_(::open(QFile::encodeName(folder).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
    constexpr int turns = 200;
    for (int turn = 0; turn < turns && ::flock(descriptor_.get(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
         ++turn) {
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
  }

 private:
  const sys::Descriptor descriptor_;
};

/// Renames what stands at the path, to a name that is free.
bool moveAside(const QString& path) {
  constexpr int names = 1000;
  for (int i = 1; i <= names; ++i) {
    const QString aside = path + QStringLiteral(".damaged") + (i == 1 ? QString() : QStringLiteral("-%1").arg(i));
    if (::renameat2(AT_FDCWD, QFile::encodeName(path).constData(), AT_FDCWD, QFile::encodeName(aside).constData(),
                    RENAME_NOREPLACE) == 0) {
      return true;
    }
    if (errno != EEXIST) return false;
  }
  return false;
}

bool isDictionary(const QVariant& value) {
  return value.typeId() == QMetaType::QVariantMap;
}

/// The keys of a path, from the outermost.
QStringList partsOf(const QString& keyPath) {
  const QStringList parts = keyPath.split(u'.');
  return parts.contains(QString()) ? QStringList(keyPath) : parts;
}

/// Stores below a dictionary, or removes; false when something else than a dictionary stands in the way.
bool putAtPath(QVariantMap& values, const QStringList& parts, qsizetype from, const QVariant& value) {
  const QString& key = parts[from];
  if (from + 1 == parts.size()) {
    values.insert(key, value);
    if (!value.isValid()) values.remove(key);
    return true;
  }
  const QVariant inner = values.value(key);
  if (inner.isValid() && !isDictionary(inner)) return false;
  if (!inner.isValid() && !value.isValid()) return true;
  QVariantMap below = inner.toMap();
  if (!putAtPath(below, parts, from + 1, value)) return false;
  values.insert(key, below);
  return true;
}

qlonglong truncated(double value) {
  using Limits = std::numeric_limits<qlonglong>;
  constexpr double beyond = 9223372036854775808.0;  // 2^63
  if (std::isnan(value)) return 0;
  if (value >= beyond) return Limits::max();
  return value < -beyond ? Limits::min() : static_cast<qlonglong>(value);
}

}  // namespace

UserDefaults::UserDefaults(const PathPlatform& platform, QString identifier)
    : platform_(platform), identifier_(std::move(identifier)) {}

UserDefaults::UserDefaults(const PathPlatform& platform, const BundleInfo& bundle)
    : UserDefaults(platform, bundle.objectForInfoDictionaryKey("CFBundleIdentifier")) {}

UserDefaults& UserDefaults::standard() {
  // Never destroyed: threads that outlive main may still ask it.
  static UserDefaults* const defaults =
      std::make_unique<UserDefaults>(PathPlatform::standard(), BundleInfo::mainBundle()).release();
  return *defaults;
}

QString UserDefaults::path() const {
  const QString folder = QVLocalPaths::prefsDirectory(true, platform_);
  if (identifier_.isEmpty() || folder.isEmpty()) return QString();
  return folder + u'/' + identifier_ + ".plist";
}

QVariant UserDefaults::objectForKey(const QString& key) const {
  const std::lock_guard guard(mutex_);
  return current().value(key);
}

QString UserDefaults::stringForKey(const QString& key) const {
  const QVariant value = objectForKey(key);
  return value.typeId() == QMetaType::QString ? value.toString() : QString();
}

qlonglong UserDefaults::integerForKey(const QString& key) const {
  const QVariant value = objectForKey(key);
  switch (value.typeId()) {
    case QMetaType::Bool:
    case QMetaType::LongLong:
      return value.toLongLong();
    case QMetaType::ULongLong:
    case QMetaType::Double:
      return truncated(value.toDouble());
    default:
      return 0;
  }
}

bool UserDefaults::setObjects(const QVariantMap& objects) {
  return change([&objects](QVariantMap& values) {
    for (auto object = objects.begin(); object != objects.end(); ++object)
      putAtPath(values, {object.key()}, 0, object.value());
    return true;
  });
}

QVariant UserDefaults::valueForKeyPath(const QString& keyPath) const {
  const QStringList parts = partsOf(keyPath);
  QVariant value = objectForKey(parts.first());
  for (qsizetype i = 1; i < parts.size(); ++i) value = isDictionary(value) ? value.toMap().value(parts[i]) : QVariant();
  return value;
}

bool UserDefaults::setValueForKeyPath(const QVariant& value, const QString& keyPath) {
  return change([&](QVariantMap& values) { return putAtPath(values, partsOf(keyPath), 0, value); });
}

UserDefaults::FileState UserDefaults::stateOf(const QString& path) {
  struct stat status {};
  if (::stat(QFile::encodeName(path).constData(), &status) != 0) return {.path = path};
  return {path, true, status.st_dev, status.st_ino, status.st_size, status.st_mtim.tv_sec, status.st_mtim.tv_nsec};
}

const QVariantMap& UserDefaults::current() const {
  FileState state = stateOf(path());
  if (read_ == state) return values_;
  std::optional<QVariantMap> values;
  if (state.exists) values = PropertyList::readDictionary(state.path);
  damaged_ = state.exists && !values;
  values_ = std::move(values).value_or(QVariantMap());
  read_ = std::move(state);
  return values_;
}

bool UserDefaults::change(const std::function<bool(QVariantMap&)>& edit) {
  const std::lock_guard guard(mutex_);
  const QString file = path(), folder = QFileInfo(file).path();
  if (file.isNull() || !QDir().mkpath(folder)) return false;
  const FolderLock lock(folder);
  if (damaged_) read_.reset();  // a passing failure to read must not cost what is there
  QVariantMap values = current();
  if (!edit(values)) return false;
  const std::optional<QByteArray> bytes = PropertyList::toBytes(values);
  if (!bytes || bytes == PropertyList::toBytes(values_)) return bytes.has_value();
  if (damaged_ && !moveAside(file)) return false;
  const bool written = PropertyList::write(values, file);
  read_.reset();
  return written;
}
