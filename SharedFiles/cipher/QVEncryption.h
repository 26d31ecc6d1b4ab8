#pragma once

#include <QByteArray>
#include <QString>

/// Encrypts bytes with a passphrase: AES with a key of 256 bits, block by block (electronic code book). Stateless;
/// callable from any thread.
///
/// This keeps a casual reader out and protects against nothing more. Equal blocks of 16 bytes stay visibly equal;
/// blocks can be moved, dropped and repeated unnoticed, for nothing is authenticated; the key is the passphrase itself,
/// without salt or iteration, so that a guessable passphrase is soon guessed; and the length of the data shows. Do not
/// use it for anything that must stay secret.
class QVEncryption final {
 public:
  QVEncryption() = delete;

  /// AESEncryptData:withPassphrase: a last block that is not full is filled with blanks. The key is the first 32 bytes
  /// of the passphrase in UTF-8, filled with zero bytes; nil counts as empty.
  static QByteArray AESEncryptData(const QByteArray& data, const QString& passphrase);
  /// AESDecryptData:withPassphrase: the blanks that filled the last block stay: callers trim them. Bytes after the last
  /// whole block are left out.
  static QByteArray AESDecryptData(const QByteArray& data, const QString& passphrase);
};
