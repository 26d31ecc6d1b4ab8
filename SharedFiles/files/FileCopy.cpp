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
#include <span>
#include <string>
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
#include "system/FileAttributes.h"
#include "system/FileBytes.h"

namespace {

constexpr quint64 reportsPerFile = 500;
constexpr double folderTimeout = 5.0;  // seconds

using Block = std::unique_ptr<std::uint8_t[]>;

std::optional<DigestAlgorithm> algorithmOf(unsigned int verificationType) {
  constexpr std::array algorithms{DigestAlgorithm::md5, DigestAlgorithm::sha1, DigestAlgorithm::sha256,
                                  DigestAlgorithm::sha512};
  if (verificationType < 1 || verificationType > algorithms.size()) return std::nullopt;
  return algorithms[verificationType - 1];
}

/// An open regular file; none for anything else, which is neither waited for nor changed.
struct OpenFile {
  sys::Descriptor descriptor;
  std::string path;
  struct stat information {};

  sys::FileRef ref() const { return {descriptor.get(), path}; }

  static std::optional<OpenFile> open(const QString& path, int flags, sys::FileCalls& calls) {
    constexpr mode_t mode = 0666;
    const std::string bytes = QFile::encodeName(path).toStdString();
    const auto call = [&] { return calls.open(AT_FDCWD, bytes.c_str(), flags | O_CLOEXEC | O_NONBLOCK, mode); };
    OpenFile file{sys::Descriptor(sys::untilUninterrupted(call)), bytes};
    const auto status = sys::statusOf(file.ref(), calls);
    if (!status || !S_ISREG(status->st_mode)) return std::nullopt;
    file.information = *status;
    return file;
  }
};

/// Reads and writes say where in the file they are; one that cannot be moved about in refuses them for that.
bool isOfPosition(int error) {
  return error == ESPIPE || error == EOVERFLOW;
}

struct Destination {
  QString path;
  OpenFile file;
  bool good = true;
  QString checksum;

  /// Whether the path still leads to the file that was written.
  bool isInPlace() const {
    struct stat now {};
    return ::stat(file.path.c_str(), &now) == 0 && sys::isSameFile(now, file.information);
  }
  void remove() const {
    if (isInPlace()) ::unlink(file.path.c_str());
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
    source_ = OpenFile::open(request_.source, O_RDONLY, request_.calls);
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
      std::optional<OpenFile> file = OpenFile::open(path, O_WRONLY | O_CREAT, request_.calls);
      if (!file || isTaken(*file)) {
        QVLog::appendLog("Error: Unable to open destination file %@. Aborting copy process...", path);
        undo();
        return false;
      }
      if (isNew) made.push_back(path);
      destinations_.push_back({path, std::move(*file), true, {}});
    }
    for (Destination& each : destinations_) {
      const auto empty = [&] { return request_.calls.ftruncate(each.file.descriptor.get(), 0); };
      if (sys::untilUninterrupted(empty) != 0) failWriting(each, errno);
    }
    return true;
  }

  bool isTaken(const OpenFile& file) const {
    const auto is = [&file](const OpenFile& other) { return sys::isSameFile(file.information, other.information); };
    return is(*source_) || std::any_of(destinations_.begin(), destinations_.end(),
                                       [&is](const Destination& other) { return is(other.file); });
  }

  bool allocate() {
    for (Block* block : {&copied_, &readBack_}) {
      Block made(new (std::nothrow) std::uint8_t[FileDigest::blockSize]);
      *block = std::move(made);
      if (!*block) {
        QVLog::appendLog("Error copying file %@ - out of memory", request_.source);
        return false;
      }
    }
    return true;
  }

  static void failWriting(Destination& destination, int error) {
    if (isOfPosition(error)) {
      QVLog::appendLog("Error: unable to seek within file %@", destination.path);
    } else {
      QVLog::appendLog("Error writing file %@: %i", destination.path, error);
    }
    destination.fail();
  }

  /// Nothing came of the read, and the file is in its state of error.
  static void failReading(const QString& path, quint64 position, int error) {
    if (isOfPosition(error)) return QVLog::appendLog("Error: unable to seek within file %@", path);
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
      const auto got = sys::readAt(source_->ref(), written_, {copied_.get(), FileDigest::blockSize}, request_.calls);
      if (!got) {
        failReading(request_.source, written_, got.error().code);
        return false;
      }
      const std::span<const std::uint8_t> bytes(copied_.get(), *got);
      if (digest) digest->add(bytes);
      writeToAll(bytes);
      if (!anyIsGood()) return false;
      written_ += bytes.size();
      if (written_ - reported >= step || bytes.empty()) {
        reports_.bytesWritten(written_);
        reported = written_;
      }
      if (reports_.isRefused()) return false;
      if (bytes.empty()) break;
    }
    if (digest) settings_["sourceChecksum"] = digest->text();
    return true;
  }

  void writeToAll(std::span<const std::uint8_t> bytes) {
    for (Destination& each : destinations_) {
      if (!each.good) continue;
      const auto done = sys::writeAt(each.file.ref(), written_, bytes, request_.calls);
      if (!done) failWriting(each, done.error().code);
    }
  }

  void flush() {
    for (Destination& each : destinations_) {
      const auto sync = [&] { return request_.calls.fsync(each.file.descriptor.get()); };
      if (each.good && sys::untilUninterrupted(sync) != 0) failWriting(each, errno);
    }
  }

  /// A destination that is no longer where it was written counts as one of another size.
  void compareSizes() {
    const auto source = sys::statusOf(source_->ref(), request_.calls);
    for (Destination& each : destinations_) {
      const auto copy = sys::statusOf(each.file.ref(), request_.calls);
      const bool equal = source && copy && each.isInPlace() && copy->st_size == source->st_size &&
                         static_cast<quint64>(copy->st_size) == written_;
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
    const std::optional<OpenFile> file = OpenFile::open(destination.path, O_RDONLY, request_.calls);
    if (!file || !sys::isSameFile(file->information, destination.file.information)) {
      QVLog::appendLog("Error: Unable to open destination file %@. Aborting hash verification...", destination.path);
      return {};
    }
    ::posix_fadvise(file->descriptor.get(), 0, 0, POSIX_FADV_DONTNEED);
    FileDigest digest(*algorithm_);
    const auto read = digest.addFile(file->ref(), readBack_.get());
    if (read) return digest.text();
    failReading(destination.path, digest.size(), read.error().code);
    return {};
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

  /// The first error, or 0.
  int applyAttributes(const OpenFile& file) const {
    const struct stat& source = source_->information;
    const auto done = sys::inheritAttributes(source_->ref(), file.ref(), source, sys::Heir::Copy, request_.calls);
    if (!done) return done.error().code;
    const auto own = sys::statusOf(file.ref(), request_.calls);
    return own && own->st_uid == source.st_uid && own->st_gid == source.st_gid ? 0 : EPERM;
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
