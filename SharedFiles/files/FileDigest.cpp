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
#include <unistd.h>

#include "SharedFiles/foundation/BackgroundCalls.h"
#include "SharedFiles/log/QVLog.h"
#include "system/Descriptor.h"

namespace {

constexpr std::size_t digestBlockSize = 65536;

const EVP_MD* methodOf(DigestAlgorithm algorithm) {
  switch (algorithm) {
    case DigestAlgorithm::md5:
      return EVP_md5();
    case DigestAlgorithm::sha1:
      return EVP_sha1();
    case DigestAlgorithm::sha256:
      return EVP_sha256();
    case DigestAlgorithm::sha512:
      return EVP_sha512();
  }
  return nullptr;
}

/// Asks somebody in the background whether to go on. However many questions wait for a slow answer, they take no room.
class Questions {
 public:
  explicit Questions(const std::function<bool()>& shouldContinue)
      : state_(shouldContinue ? std::make_shared<State>(shouldContinue) : nullptr) {}

  void ask() {
    if (!state_ || state_->waiting.fetch_add(1) != 0) return;
    const bool begun = calls_.add([state = state_] {
      do {
        if (!state->shouldContinue()) state->refused = true;
      } while (state->waiting.fetch_sub(1) > 1);
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

struct FileDigest::Context {
  using Handle = std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)>;

  explicit Context(DigestAlgorithm algorithm)
      : handle(EVP_MD_CTX_new(), &EVP_MD_CTX_free),
        good(handle && EVP_DigestInit_ex(handle.get(), methodOf(algorithm), nullptr) == 1) {}

  Handle handle;
  bool good;
};

FileDigest::FileDigest(DigestAlgorithm algorithm) : context_(std::make_unique<Context>(algorithm)) {}
FileDigest::~FileDigest() = default;
FileDigest::FileDigest(FileDigest&& other) noexcept = default;
FileDigest& FileDigest::operator=(FileDigest&& other) noexcept = default;

void FileDigest::add(const void* bytes, std::size_t size) {
  context_->good = context_->good && EVP_DigestUpdate(context_->handle.get(), bytes, size) == 1;
}

QString FileDigest::text() {
  std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
  unsigned int size = 0;
  context_->good = context_->good && EVP_DigestFinal_ex(context_->handle.get(), digest.data(), &size) == 1;
  if (!context_->good) return {};
  return QString::fromLatin1(QByteArray(reinterpret_cast<const char*>(digest.data()), static_cast<int>(size)).toHex());
}

QString digestOfFile(const QString& path, DigestAlgorithm algorithm, const std::function<bool()>& shouldContinue) {
  const sys::Descriptor file(::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC));
  if (!file.isOpen()) {
    QVLog::appendLog("Error: Unable to open destination file %@. Aborting hash verification...", path);
    return {};
  }
  const std::unique_ptr<char[]> block(new (std::nothrow) char[digestBlockSize]);
  if (!block) {
    QVLog::appendLog("Error reading file %@ - out of memory", path);
    return {};
  }
  FileDigest digest(algorithm);
  Questions questions(shouldContinue);
  for (;;) {
    const ssize_t got = ::read(file.get(), block.get(), digestBlockSize);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) {
      QVLog::appendLog("Error reading file %@ - aborting...", path);
      return {};
    }
    if (got == 0) return digest.text();
    digest.add(block.get(), static_cast<std::size_t>(got));
    questions.ask();
    if (questions.areRefused()) return {};
  }
}
