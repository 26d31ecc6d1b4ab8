#include "SharedFiles/cipher/QVEncryption.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>
#include <tuple>

#include "SharedFiles/cipher/Rijndael.h"

namespace {

constexpr int bitsOfKey = 256;
constexpr std::size_t keyBytes = bitsOfKey / 8;
constexpr std::size_t blockBytes = std::tuple_size_v<RijndaelBlock>;

using Setup = int (*)(RijndaelSchedule&, std::span<const std::uint8_t>, int);
using Cipher = RijndaelBlock (*)(const RijndaelSchedule&, int, const RijndaelBlock&);

std::array<std::uint8_t, keyBytes> keyOf(const QString& passphrase) {
  std::array<std::uint8_t, keyBytes> key{};
  const QByteArray bytes = passphrase.toUtf8().left(keyBytes);
  std::copy(bytes.begin(), bytes.end(), key.begin());
  return key;
}

/// Whole blocks through the cipher.
QByteArray through(Setup setup, Cipher cipher, const QByteArray& data, const QString& passphrase) {
  RijndaelSchedule schedule{};
  const int rounds = setup(schedule, keyOf(passphrase), bitsOfKey);
  QByteArray result;
  result.reserve(data.size());
  for (qsizetype start = 0; start + static_cast<qsizetype>(blockBytes) <= data.size(); start += blockBytes) {
    RijndaelBlock block{};
    std::copy_n(data.begin() + start, blockBytes, block.begin());
    block = cipher(schedule, rounds, block);
    result.append(reinterpret_cast<const char*>(block.data()), blockBytes);
  }
  return result;
}

}  // namespace

QByteArray QVEncryption::AESEncryptData(const QByteArray& data, const QString& passphrase) {
  const qsizetype blocks = (data.size() + static_cast<qsizetype>(blockBytes) - 1) / static_cast<qsizetype>(blockBytes);
  return through(rijndaelSetupEncrypt, rijndaelEncrypt,
                 data.leftJustified(blocks * static_cast<qsizetype>(blockBytes), ' '), passphrase);
}

QByteArray QVEncryption::AESDecryptData(const QByteArray& data, const QString& passphrase) {
  return through(rijndaelSetupDecrypt, rijndaelDecrypt, data, passphrase);
}
