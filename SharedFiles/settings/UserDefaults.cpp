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
#include <tuple>
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

/// Equal in value and type.
bool isSame(const QVariant& one, const QVariant& other) {
  if (!one.isValid() || !other.isValid()) return one.isValid() == other.isValid();
  return PropertyList::toBytes(one) == PropertyList::toBytes(other);
}

/// The value as it comes back from the file; nothing when it cannot be stored.
std::optional<QVariant> storable(const QVariant& value) {
  if (!value.isValid()) return value;
  const std::optional<QByteArray> xml = PropertyList::toBytes(value);
  return xml ? PropertyList::fromBytes(*xml) : std::nullopt;
}

void put(QVariantMap& values, const QString& key, const QVariant& value) {
  if (value.isValid()) {
    values.insert(key, value);
  } else {
    values.remove(key);
  }
}

bool isDictionary(const QVariant& value) {
  return value.typeId() == QMetaType::QVariantMap;
}

/// The keys of a path, from the outermost.
QStringList partsOf(const QString& keyPath) {
  const QStringList parts = keyPath.split(u'.');
  return parts.contains(QString()) ? QStringList(keyPath) : parts;
}

/// Stores below a dictionary; false when something else than a dictionary stands in the way.
bool putAtPath(QVariantMap& values, const QStringList& parts, qsizetype from, const QVariant& value) {
  const QString& key = parts[from];
  if (from + 1 == parts.size()) {
    put(values, key, value);
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

bool isNumber(const QVariant& value) {
  return value.typeId() == QMetaType::LongLong || value.typeId() == QMetaType::Double ||
         value.typeId() == QMetaType::Bool;
}

qlonglong truncated(double value) {
  using Limits = std::numeric_limits<qlonglong>;
  constexpr double beyond = 9223372036854775808.0;  // 2^63
  if (std::isnan(value)) return 0;
  if (value >= beyond) return Limits::max();
  return value < -beyond ? Limits::min() : static_cast<qlonglong>(value);
}

}  // namespace

bool UserDefaults::FileState::operator==(const FileState& other) const {
  const auto members = [](const FileState& state) {
    return std::tie(state.path, state.exists, state.device, state.inode, state.size, state.seconds, state.nanoseconds);
  };
  return members(*this) == members(other);
}

UserDefaults::UserDefaults(const PathPlatform& platform, BundleInfo bundle)
    : platform_(platform), bundle_(std::move(bundle)) {}

UserDefaults& UserDefaults::standard() {
  // Never destroyed: threads that outlive main may still ask it.
  static UserDefaults* const defaults =
      std::make_unique<UserDefaults>(PathPlatform::standard(), BundleInfo::mainBundle()).release();
  return *defaults;
}

QString UserDefaults::path() const {
  const QString identifier = bundle_.objectForInfoDictionaryKey(QStringLiteral("CFBundleIdentifier"));
  const QString folder = QVLocalPaths::prefsDirectory(true, platform_);
  if (identifier.isEmpty() || folder.isEmpty()) return QString();
  return folder + u'/' + identifier + QStringLiteral(".plist");
}

QVariant UserDefaults::objectForKey(const QString& key) const {
  const std::lock_guard guard(mutex_);
  return current().value(key);
}

QString UserDefaults::stringForKey(const QString& key) const {
  const QVariant value = objectForKey(key);
  return value.typeId() == QMetaType::QString ? value.toString() : QString();
}

bool UserDefaults::boolForKey(const QString& key) const {
  const double value = doubleForKey(key);
  return value != 0 && !std::isnan(value);
}

qlonglong UserDefaults::integerForKey(const QString& key) const {
  const QVariant value = objectForKey(key);
  if (value.typeId() == QMetaType::Double) return truncated(value.toDouble());
  return isNumber(value) ? value.toLongLong() : 0;
}

double UserDefaults::doubleForKey(const QString& key) const {
  const QVariant value = objectForKey(key);
  return isNumber(value) ? value.toDouble() : 0;
}

bool UserDefaults::setObject(const QVariant& value, const QString& key) {
  const std::optional<QVariant> stored = storable(value);
  const std::lock_guard guard(mutex_);
  if (!stored) return false;
  if (isSame(current().value(key), *stored)) return true;
  return change([&](QVariantMap& values) {
    put(values, key, *stored);
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
  const std::optional<QVariant> stored = storable(value);
  if (!stored) return false;
  if (isSame(valueForKeyPath(keyPath), *stored)) return true;
  const std::lock_guard guard(mutex_);
  return change([&](QVariantMap& values) { return putAtPath(values, partsOf(keyPath), 0, *stored); });
}

UserDefaults::FileState UserDefaults::stateOf(const QString& path) {
  FileState state;
  state.path = path;
  struct stat status {};
  if (::stat(QFile::encodeName(path).constData(), &status) != 0) return state;
  state.exists = true;
  state.device = status.st_dev;
  state.inode = status.st_ino;
  state.size = status.st_size;
  state.seconds = status.st_mtim.tv_sec;
  state.nanoseconds = status.st_mtim.tv_nsec;
  return state;
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
  const QString file = path();
  if (file.isNull()) return false;
  const QString folder = QFileInfo(file).path();
  if (!QDir().mkpath(folder)) return false;
  const FolderLock lock(folder);
  if (damaged_) read_.reset();  // a passing failure to read must not cost what is there
  QVariantMap values = current();
  if (!edit(values)) return false;
  if (damaged_ && !moveAside(file)) return false;
  const bool written = PropertyList::write(values, file);
  read_.reset();
  return written;
}
