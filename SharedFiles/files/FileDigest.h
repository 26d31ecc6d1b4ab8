#pragma once

#include <QString>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>

#include "system/FileBytes.h"

enum class DigestAlgorithm { md5, sha1, sha256, sha512 };

/// A digest built up block by block (RFC 1321, FIPS 180-4). One object for one digest, used by one thread.
class FileDigest {
 public:
  static constexpr std::size_t blockSize = 65536;

  explicit FileDigest(DigestAlgorithm algorithm);

  void add(std::span<const std::uint8_t> bytes);
  /// Adds what can be read from an open file, through memory of `blockSize`. ECANCELED once `goOn`, asked after each
  /// block where there is one, says no.
  sys::Result<void> addFile(sys::FileRef file, std::uint8_t* block, const std::function<bool()>& goOn = {});
  /// Bytes that were added.
  std::uint64_t size() const { return size_; }
  /// Ends the digest: two lowercase hexadecimal characters a byte; nil when the system's library refused it.
  QString text();

 private:
  using Context = struct evp_md_ctx_st;

  std::unique_ptr<Context, void (*)(Context*)> context_;
  bool good_;
  std::uint64_t size_ = 0;
};

/// The digest of a file's bytes, or nil, with a line in the log, when it cannot be read. `shouldContinue`, where there
/// is one, is asked on a background thread once for each block of 64 KiB, and not waited for; once it has answered no,
/// it is asked no more and the answer is nil. A slow one is still asked after the return.
QString digestOfFile(const QString& path, DigestAlgorithm algorithm, const std::function<bool()>& shouldContinue = {});
