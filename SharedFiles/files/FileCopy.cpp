#include "SharedFiles/files/FileCopy.h"

#include <QFile>
#include <QFileInfo>
#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <memory>
#include <new>
#include <optional>
#include <system_error>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "SharedFiles/files/FileDigest.h"
#include "SharedFiles/files/QVFileManager.h"
#include "SharedFiles/foundation/BackgroundCalls.h"
#include "SharedFiles/foundation/FilePackage.h"
#include "SharedFiles/log/QVLog.h"
#include "system/Descriptor.h"

namespace {

constexpr std::size_t blockSize = 65536;
constexpr quint64 reportsPerFile = 500;
constexpr double folderTimeout = 5.0;  // seconds

using Block = std::unique_ptr<char[]>;

std::optional<DigestAlgorithm> algorithmOf(unsigned int verificationType) {
  constexpr std::array algorithms{DigestAlgorithm::md5, DigestAlgorithm::sha1, DigestAlgorithm::sha256,
                                  DigestAlgorithm::sha512};
  if (verificationType < 1 || verificationType > algorithms.size()) return std::nullopt;
  return algorithms[verificationType - 1];
}

bool isSameFile(const struct stat& one, const struct stat& other) {
  return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

/// An open regular file; none for anything else, which is neither waited for nor changed.
struct OpenFile {
  sys::Descriptor descriptor;
  struct stat information {};

  static std::optional<OpenFile> open(const QString& path, int flags) {
    constexpr mode_t mode = 0666;
    OpenFile file{sys::Descriptor(::open(QFile::encodeName(path).constData(), flags | O_CLOEXEC | O_NONBLOCK, mode))};
    const bool regular = file.descriptor.isOpen() && ::fstat(file.descriptor.get(), &file.information) == 0 &&
                         S_ISREG(file.information.st_mode);
    return regular ? std::optional(std::move(file)) : std::nullopt;
  }
};

/// One read; 0 at the end, below 0 when it failed.
ssize_t readBlock(const sys::Descriptor& file, const Block& block) {
  ssize_t got = 0;
  do {
    got = ::read(file.get(), block.get(), blockSize);
  } while (got < 0 && errno == EINTR);
  return got;
}

bool writeBlock(const sys::Descriptor& file, const char* bytes, std::size_t size) {
  while (size > 0) {
    const ssize_t written = ::write(file.get(), bytes, size);
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return false;
    bytes += written;
    size -= static_cast<std::size_t>(written);
  }
  return true;
}

struct Destination {
  QString path;
  OpenFile file;
  bool good = true;
  QString checksum;

  /// Whether the path still leads to the file that was written.
  bool isInPlace() const {
    struct stat now {};
    return ::stat(QFile::encodeName(path).constData(), &now) == 0 && isSameFile(now, file.information);
  }
  void remove() const {
    if (isInPlace()) ::unlink(QFile::encodeName(path).constData());
  }
  void fail() {
    good = false;
    remove();
  }
};

/// The calls to the delegate, made in the background with a copy of the settings record.
class Reports {
 public:
  Reports(const FileCopyDelegate& delegate, const QVariantMap& settings) : delegate_(delegate), settings_(settings) {}

  void bytesWritten(quint64 bytes) {
    if (delegate_.fileCopyBytesWritten) {
      calls_.add([call = delegate_.fileCopyBytesWritten, bytes, settings = settings_] { call(bytes, settings); });
    }
    if (delegate_.fileCopyShouldContinue) {
      calls_.add([call = delegate_.fileCopyShouldContinue, refused = refused_, settings = settings_] {
        if (!call(settings)) *refused = true;
      });
    }
  }
  void verificationFailed(const QString& file) {
    if (!delegate_.fileCopyVerificationFailed) return;
    calls_.add([call = delegate_.fileCopyVerificationFailed, file, settings = settings_] { call(settings, file); });
  }
  void finished() {
    if (!delegate_.fileCopyFinished) return;
    calls_.add([call = delegate_.fileCopyFinished, settings = settings_] { call(settings); });
  }
  bool isRefused() const { return *refused_; }

 private:
  const FileCopyDelegate& delegate_;
  const QVariantMap& settings_;
  const std::shared_ptr<std::atomic<bool>> refused_ = std::make_shared<std::atomic<bool>>(false);
  BackgroundCalls calls_;
};

class Copy {
 public:
  explicit Copy(const FileCopyRequest& request)
      : request_(request),
        algorithm_(algorithmOf(request.verificationType)),
        settings_(settingsOf(request)),
        reports_(request.delegate, settings_) {}

  bool run() {
    if (!hasEnds() || !allocate() || !openFiles()) return false;
    if (!copyBlocks()) {
      for (Destination& destination : destinations_) destination.fail();
      return false;
    }
    flush();
    compareSizes();
    if (algorithm_) verify();
    applyAttributes();
    reports_.finished();
    return std::all_of(destinations_.begin(), destinations_.end(), [](const Destination& each) { return each.good; });
  }

 private:
  static QVariantMap settingsOf(const FileCopyRequest& request) {
    QVariantMap settings{{"source", request.source},
                         {"destinations", request.destinations},
                         {"operationtype", "copy"},
                         {"delegate", QVariant::fromValue(request.delegate)}};
    if (request.object.isValid()) settings["object"] = request.object;
    if (request.object2.isValid()) settings["object2"] = request.object2;
    return settings;
  }

  bool hasEnds() const {
    if (!fileExists(request_.source)) {
      QVLog::appendLog("Error: File %@ doesn't exist. Aborting copy process...", request_.source);
      return false;
    }
    if (request_.destinations.isEmpty()) {
      QVLog::appendLog("Error: You must have at least one destination. Aborting copy process...");
      return false;
    }
    return std::all_of(request_.destinations.begin(), request_.destinations.end(),
                       [this](const QString& path) { return hasFolder(path); });
  }

  bool hasFolder(const QString& destination) const {
    const QString folder = QFileInfo(destination).path();
    if (fileExists(folder)) return true;
    QVFileManager::createDirectory(folder, folderTimeout);
    if (fileExists(folder)) return true;
    QVLog::appendLog("Unable to copy file %@ - destination directory %@ doesn't exist. Aborting copy process...",
                     request_.source, folder);
    return false;
  }

  /// Nothing is changed before everything is open: a destination that is the source, or another destination, is
  /// refused like one that cannot be opened.
  bool openFiles() {
    source_ = OpenFile::open(request_.source, O_RDONLY);
    if (!source_) {
      QVLog::appendLog("Error: Unable to read source file %@. Aborting copy process...", request_.source);
      return false;
    }
    std::vector<QString> made;
    const auto undo = [&made] {
      for (const QString& path : made) ::unlink(QFile::encodeName(path).constData());
    };
    for (const QString& path : request_.destinations) {
      const bool isNew = !fileExists(path);
      std::optional<OpenFile> file = OpenFile::open(path, O_WRONLY | O_CREAT);
      if (!file || isTaken(*file)) {
        QVLog::appendLog("Error: Unable to open destination file %@. Aborting copy process...", path);
        undo();
        return false;
      }
      if (isNew) made.push_back(path);
      destinations_.push_back({path, std::move(*file), true, {}});
    }
    for (Destination& each : destinations_) {
      if (::ftruncate(each.file.descriptor.get(), 0) != 0) failWriting(each);
    }
    return true;
  }

  bool isTaken(const OpenFile& file) const {
    return isSameFile(file.information, source_->information) ||
           std::any_of(destinations_.begin(), destinations_.end(),
                       [&](const Destination& other) { return isSameFile(file.information, other.file.information); });
  }

  bool allocate() {
    for (Block* block : {&copied_, &readBack_}) {
      Block made(new (std::nothrow) char[blockSize]);
      *block = std::move(made);
      if (!*block) {
        QVLog::appendLog("Error copying file %@ - out of memory", request_.source);
        return false;
      }
    }
    return true;
  }

  static void failWriting(Destination& destination) {
    const int error = errno;
    QVLog::appendLog("Error writing file %@: %i", destination.path, error);
    destination.fail();
  }

  /// Nothing came of the read, and the file is in its state of error.
  static void failReading(const QString& path, quint64 position) {
    const int error = errno;
    QVLog::appendLog("Error reading file %@ - aborting...", path);
    QVLog::appendLog("cur pos: %llu", position);
    QVLog::appendLog("read size: %zu", std::size_t{0});
    QVLog::appendLog("errno: %i", error);
    QVLog::appendLog("err: %i", 1);
  }

  bool anyIsGood() const {
    return std::any_of(destinations_.begin(), destinations_.end(), [](const Destination& each) { return each.good; });
  }

  /// Whether the source was read to its end, somewhere to, and the delegate had nothing against it.
  bool copyBlocks() {
    const auto size = static_cast<quint64>(source_->information.st_size);
    const quint64 step = (size + reportsPerFile - 1) / reportsPerFile;
    std::optional<FileDigest> digest;
    if (algorithm_) digest.emplace(*algorithm_);
    quint64 reported = 0;
    for (;;) {
      const ssize_t got = readBlock(source_->descriptor, copied_);
      if (got < 0) {
        failReading(request_.source, written_);
        return false;
      }
      const auto count = static_cast<std::size_t>(got);
      if (digest) digest->add(copied_.get(), count);
      for (Destination& each : destinations_) {
        if (each.good && !writeBlock(each.file.descriptor, copied_.get(), count)) failWriting(each);
      }
      if (!anyIsGood()) return false;
      written_ += count;
      if (written_ - reported >= step || got == 0) {
        reports_.bytesWritten(written_);
        reported = written_;
      }
      if (reports_.isRefused()) return false;
      if (got == 0) break;
    }
    if (digest) settings_["sourceChecksum"] = digest->text();
    return true;
  }

  void flush() {
    for (Destination& each : destinations_) {
      if (each.good && ::fsync(each.file.descriptor.get()) != 0) failWriting(each);
    }
  }

  /// A destination that is no longer where it was written counts as one of another size.
  void compareSizes() {
    struct stat source {};
    const bool known = ::fstat(source_->descriptor.get(), &source) == 0;
    for (Destination& each : destinations_) {
      struct stat copy {};
      const bool equal = known && each.isInPlace() && ::fstat(each.file.descriptor.get(), &copy) == 0 &&
                         copy.st_size == source.st_size && static_cast<quint64>(copy.st_size) == written_;
      if (each.good && !equal) {
        QVLog::appendLog("Error: copied file size does not match original source %@", request_.source);
        each.fail();
      }
    }
  }

  void verify() {
    QStringList checksums;
    for (Destination& each : destinations_) {
      if (each.good) each.checksum = checksumOf(each);
      checksums.append(each.checksum);
    }
    settings_["destChecksums"] = checksums;
    const QString source = settings_["sourceChecksum"].toString();
    for (Destination& each : destinations_) {
      settings_["destChecksum"] = each.checksum;
      if (!each.good || (!source.isNull() && each.checksum == source)) continue;
      each.good = false;
      reports_.verificationFailed(each.path);
    }
  }

  /// Read back from the disk: what the system still holds in memory is dropped first. Nil when it cannot be read.
  QString checksumOf(const Destination& destination) {
    const std::optional<OpenFile> file = OpenFile::open(destination.path, O_RDONLY);
    if (!file || !isSameFile(file->information, destination.file.information)) {
      QVLog::appendLog("Error: Unable to open destination file %@. Aborting hash verification...", destination.path);
      return {};
    }
    ::posix_fadvise(file->descriptor.get(), 0, 0, POSIX_FADV_DONTNEED);
    FileDigest digest(*algorithm_);
    for (quint64 position = 0;;) {
      const ssize_t got = readBlock(file->descriptor, readBack_);
      if (got < 0) {
        failReading(destination.path, position);
        return {};
      }
      if (got == 0) return digest.text();
      digest.add(readBack_.get(), static_cast<std::size_t>(got));
      position += static_cast<quint64>(got);
    }
  }

  void applyAttributes() const {
    for (const Destination& each : destinations_) {
      if (!each.isInPlace()) continue;
      if (const int error = applyAttributes(each.file); error != 0) {
        QVLog::appendLog("Error setting metadata for file %@ - %@", each.path,
                         QString::fromStdString(std::generic_category().message(error)));
      }
    }
  }

  /// The first error, or 0. A file that stays another user's gets no set-id bits.
  int applyAttributes(const OpenFile& file) const {
    constexpr mode_t allBits = 07777, withoutSetId = 01777;
    const struct stat& source = source_->information;
    const std::array<timespec, 2> times{source.st_atim, source.st_mtim};
    const int descriptor = file.descriptor.get();
    int error = 0;
    const auto note = [&error](int result) {
      if (result != 0 && error == 0) error = errno;
      return result == 0;
    };
    const bool owned = (file.information.st_uid == source.st_uid && file.information.st_gid == source.st_gid) ||
                       note(::fchown(descriptor, source.st_uid, source.st_gid));
    note(::fchmod(descriptor, source.st_mode & (owned ? allBits : withoutSetId)));
    note(::futimens(descriptor, times.data()));
    return error;
  }

  const FileCopyRequest& request_;
  const std::optional<DigestAlgorithm> algorithm_;
  QVariantMap settings_;
  Reports reports_;
  std::optional<OpenFile> source_;
  std::vector<Destination> destinations_;
  Block copied_, readBack_;
  quint64 written_ = 0;
};

}  // namespace

bool copyFileToDestinations(const FileCopyRequest& request) {
  return Copy(request).run();
}
