#pragma once

#include <QString>
#include <cstddef>
#include <functional>
#include <memory>

enum class DigestAlgorithm { md5, sha1, sha256, sha512 };

/// A digest built up block by block (RFC 1321, FIPS 180-4). One object for one digest, used by one thread.
class FileDigest {
 public:
  explicit FileDigest(DigestAlgorithm algorithm);
  ~FileDigest();
  FileDigest(FileDigest&& other) noexcept;
  FileDigest& operator=(FileDigest&& other) noexcept;

  void add(const void* bytes, std::size_t size);
  /// Ends the digest: two lowercase hexadecimal characters a byte; nil when the system's library refused it.
  QString text();

 private:
  struct Context;
  std::unique_ptr<Context> context_;
};

/// The digest of a file's bytes, or nil, with a line in the log, when it cannot be read. `shouldContinue`, where there
/// is one, is asked on a background thread once for each block of 64 KiB, and not waited for; once it has answered no,
/// the answer is nil. A slow one is still asked after the return.
QString digestOfFile(const QString& path, DigestAlgorithm algorithm, const std::function<bool()>& shouldContinue = {});
