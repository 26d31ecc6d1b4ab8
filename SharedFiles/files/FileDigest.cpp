#include "SharedFiles/files/FileDigest.h"

#include <QByteArray>
#include <QFile>
#include <array>
#include <atomic>
#include <cerrno>
#include <new>
#include <utility>

#include <fcntl.h>
#include <openssl/evp.h>

#include "SharedFiles/foundation/BackgroundCalls.h"
#include "SharedFiles/log/QVLog.h"
#include "system/Descriptor.h"

namespace {

const EVP_MD* methodOf(DigestAlgorithm algorithm) {
  const std::array methods{EVP_md5(), EVP_sha1(), EVP_sha256(), EVP_sha512()};
  return methods.at(static_cast<std::size_t>(algorithm));
}

/// Asks somebody in the background whether to go on. However many questions wait for a slow answer, they take no room.
class Questions {
 public:
  explicit Questions(const std::function<bool()>& shouldContinue)
      : state_(shouldContinue ? std::make_shared<State>(shouldContinue) : nullptr) {}

  void ask() {
    if (!state_ || state_->refused || state_->waiting.fetch_add(1) != 0) return;
    const bool begun = calls_.add([state = state_] {
      do {
        state->refused = !state->shouldContinue();
      } while (!state->refused && state->waiting.fetch_sub(1) > 1);
    });
    if (!begun) state_->waiting = 0;
  }
  bool areRefused() const { return state_ && state_->refused; }

 private:
  struct State {
    explicit State(std::function<bool()> question) : shouldContinue(std::move(question)) {}
    const std::function<bool()> shouldContinue;
    std::atomic<quint64> waiting = 0;
    std::atomic<bool> refused = false;
  };
  const std::shared_ptr<State> state_;
  BackgroundCalls calls_;
};

}  // namespace

FileDigest::FileDigest(DigestAlgorithm algorithm)
    : context_(EVP_MD_CTX_new(), &EVP_MD_CTX_free),
      good_(context_ && EVP_DigestInit_ex(context_.get(), methodOf(algorithm), nullptr) == 1) {}

void FileDigest::add(std::span<const std::uint8_t> bytes) {
  good_ = good_ && EVP_DigestUpdate(context_.get(), bytes.data(), bytes.size()) == 1;
  size_ += bytes.size();
}

sys::Result<void> FileDigest::addFile(sys::FileRef file, std::uint8_t* block, const std::function<bool()>& goOn) {
  for (;;) {
    const ssize_t got = sys::readSome(file.descriptor, block, blockSize);
    if (got < 0) return sys::failure(errno, sys::Step::Read, std::string(file.path));
    if (got == 0) return {};
    add({block, static_cast<std::size_t>(got)});
    if (goOn && !goOn()) return sys::failure(ECANCELED, sys::Step::Read, std::string(file.path));
  }
}

QString FileDigest::text() {
  std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
  unsigned int size = 0;
  good_ = good_ && EVP_DigestFinal_ex(context_.get(), digest.data(), &size) == 1;
  if (!good_) return {};
  return QString::fromLatin1(QByteArray(reinterpret_cast<const char*>(digest.data()), static_cast<int>(size)).toHex());
}

QString digestOfFile(const QString& path, DigestAlgorithm algorithm, const std::function<bool()>& shouldContinue) {
  const sys::Descriptor file(::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC));
  if (!file.isOpen()) {
    QVLog::appendLog("Error: Unable to open destination file %@. Aborting hash verification...", path);
    return {};
  }
  const std::unique_ptr<std::uint8_t[]> block(new (std::nothrow) std::uint8_t[FileDigest::blockSize]);
  if (!block) {
    QVLog::appendLog("Error reading file %@ - out of memory", path);
    return {};
  }
  FileDigest digest(algorithm);
  Questions questions(shouldContinue);
  bool refused = false;
  const auto read = digest.addFile({file.get(), {}}, block.get(), [&] {
    questions.ask();
    refused = questions.areRefused();
    return !refused;
  });
  if (read) return digest.text();
  if (!refused) QVLog::appendLog("Error reading file %@ - aborting...", path);
  return {};
}
