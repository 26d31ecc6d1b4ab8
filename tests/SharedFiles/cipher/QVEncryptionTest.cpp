#include <QByteArray>
#include <QString>
#include <array>
#include <cstdint>
#include <memory>
#include <random>

#include <gtest/gtest.h>
#include <openssl/evp.h>

#include "SharedFiles/cipher/QVEncryption.h"
#include "SharedFiles/cipher/Rijndael.h"
#include "tests/SharedFiles/QtPrinters.h"

namespace {

QByteArray bytes(const char* hex) {
  return QByteArray::fromHex(hex);
}

RijndaelBlock blockOf(const QByteArray& data) {
  RijndaelBlock block{};
  std::copy_n(data.begin(), block.size(), block.begin());
  return block;
}

QByteArray bytesOf(const RijndaelBlock& block) {
  return {reinterpret_cast<const char*>(block.data()), static_cast<qsizetype>(block.size())};
}

std::span<const std::uint8_t> spanOf(const QByteArray& data) {
  return {reinterpret_cast<const std::uint8_t*>(data.constData()), static_cast<std::size_t>(data.size())};
}

struct Vector {
  int keyBits;
  const char *key, *plain, *cipher;
};
// NIST SP 800-38A, F.1.1 to F.1.6; FIPS 197, appendix C.
constexpr const char* key128 = "2b7e151628aed2a6abf7158809cf4f3c";
constexpr const char* key192 = "8e73b0f7da0e6452c810f32b809079e562f8ead2522c6b7b";
constexpr const char* key256 = "603deb1015ca71be2b73aef0857d77811f352c073b6108d72d9810a30914dff4";
const Vector vectors[] = {
    {256, key256, "6bc1bee22e409f96e93d7e117393172a", "f3eed1bdb5d2a03c064b5a7e3db181f8"},
    {256, key256, "ae2d8a571e03ac9c9eb76fac45af8e51", "591ccb10d410ed26dc5ba74a31362870"},
    {256, key256, "30c81c46a35ce411e5fbc1191a0a52ef", "b6ed21b99ca6f4f9f153e7b1beafed1d"},
    {256, key256, "f69f2445df4f9b17ad2b417be66c3710", "23304b7a39f9f3ff067d8d8f9e24ecc7"},
    {128, key128, "6bc1bee22e409f96e93d7e117393172a", "3ad77bb40d7a3660a89ecaf32466ef97"},
    {128, key128, "f69f2445df4f9b17ad2b417be66c3710", "7b0c785e27e8ad3f8223207104725dd4"},
    {192, key192, "6bc1bee22e409f96e93d7e117393172a", "bd334f1d6e45f25ff712a214571fa5cc"},
    {192, key192, "f69f2445df4f9b17ad2b417be66c3710", "9a4b41ba738d6c72fb16691603c18e0e"},
    {256, "000102030405060708090a0b0c0d0e0f101112131415161718191a1b1c1d1e1f", "00112233445566778899aabbccddeeff",
     "8ea2b7ca516745bfeafc49904b496089"},
};

TEST(Rijndael, GivesTheStandardsVectorsBothWays) {
  for (const Vector& vector : vectors) {
    SCOPED_TRACE(vector.plain);
    const QByteArray key = bytes(vector.key);
    RijndaelSchedule schedule{};
    const int rounds = rijndaelSetupEncrypt(schedule, spanOf(key), vector.keyBits);
    EXPECT_EQ(rounds, vector.keyBits / 32 + 6);
    EXPECT_EQ(bytesOf(rijndaelEncrypt(schedule, rounds, blockOf(bytes(vector.plain)))), bytes(vector.cipher));
    EXPECT_EQ(rijndaelSetupDecrypt(schedule, spanOf(key), vector.keyBits), rounds);
    EXPECT_EQ(bytesOf(rijndaelDecrypt(schedule, rounds, blockOf(bytes(vector.cipher)))), bytes(vector.plain));
  }
}

TEST(Rijndael, RefusesKeysOfOtherLengths) {
  RijndaelSchedule schedule{};
  const QByteArray key(32, 'k');
  for (const int keyBits : {0, -128, 8, 127, 160, 512}) {
    EXPECT_EQ(rijndaelSetupEncrypt(schedule, spanOf(key), keyBits), 0);
    EXPECT_EQ(rijndaelSetupDecrypt(schedule, spanOf(key), keyBits), 0);
  }
  EXPECT_EQ(rijndaelSetupEncrypt(schedule, spanOf(key.left(31)), 256), 0) << "too few bytes";
}

/// One block through the system's library.
QByteArray libraryBlock(const QByteArray& key, const QByteArray& plain) {
  const std::unique_ptr<EVP_CIPHER_CTX, decltype(&EVP_CIPHER_CTX_free)> context(EVP_CIPHER_CTX_new(),
                                                                                &EVP_CIPHER_CTX_free);
  std::array<unsigned char, 32> out{};
  int size = 0;
  EVP_EncryptInit_ex(context.get(), EVP_aes_256_ecb(), nullptr, spanOf(key).data(), nullptr);
  EVP_CIPHER_CTX_set_padding(context.get(), 0);
  EVP_EncryptUpdate(context.get(), out.data(), &size, spanOf(plain).data(), static_cast<int>(plain.size()));
  return {reinterpret_cast<const char*>(out.data()), size};
}

TEST(Rijndael, AgreesWithTheSystemsLibraryOnTenThousandRandomBlocks) {
  std::mt19937 generator(11);
  const auto random = [&generator](int size) {
    QByteArray made(size, 0);
    for (char& byte : made) byte = static_cast<char>(generator());
    return made;
  };
  for (int number = 0; number < 10000; ++number) {
    const QByteArray key = random(32), plain = random(16);
    RijndaelSchedule schedule{};
    int rounds = rijndaelSetupEncrypt(schedule, spanOf(key), 256);
    const RijndaelBlock cipher = rijndaelEncrypt(schedule, rounds, blockOf(plain));
    ASSERT_EQ(bytesOf(cipher), libraryBlock(key, plain));
    rounds = rijndaelSetupDecrypt(schedule, spanOf(key), 256);
    ASSERT_EQ(bytesOf(rijndaelDecrypt(schedule, rounds, cipher)), plain);
  }
}

TEST(Encryption, TakesTheKeyFromThePassphrase) {
  const QString passphrase = QString::fromLatin1("0123456789abcdef0123456789abcdef");
  const QByteArray plain("sixteen bytes ok");
  EXPECT_EQ(QVEncryption::AESEncryptData(plain, passphrase), libraryBlock(passphrase.toUtf8(), plain));
  EXPECT_EQ(QVEncryption::AESEncryptData(plain, passphrase + "more"), libraryBlock(passphrase.toUtf8(), plain));
  EXPECT_EQ(QVEncryption::AESEncryptData(plain, "short"), libraryBlock(QByteArray("short").append(27, '\0'), plain));
  const QString accents = QString::fromUtf8("grün");
  EXPECT_EQ(QVEncryption::AESEncryptData(plain, accents),
            libraryBlock(accents.toUtf8().append(32 - accents.toUtf8().size(), '\0'), plain));
  EXPECT_EQ(QVEncryption::AESEncryptData(plain, QString()), libraryBlock(QByteArray(32, '\0'), plain));
}

TEST(Encryption, FillsTheLastBlockWithBlanks) {
  const struct {
    const char* plain;
    qsizetype cipherSize;
    const char* back;
  } rows[] = {
      {"", 0, ""},
      {"hello", 16, "hello           "},
      {"sixteen bytes ok", 16, "sixteen bytes ok"},
      {"sixteen bytes ok1", 32, "sixteen bytes ok1               "},
      {"thirty-two bytes are two blocks.", 32, "thirty-two bytes are two blocks."},
  };
  for (const auto& row : rows) {
    const QByteArray cipher = QVEncryption::AESEncryptData(row.plain, "secret");
    EXPECT_EQ(cipher.size(), row.cipherSize) << row.plain;
    EXPECT_EQ(QVEncryption::AESDecryptData(cipher, "secret"), QByteArray(row.back));
  }
}

TEST(Encryption, KeepsZeroBytesAndEveryOtherOne) {
  QByteArray plain(512, 0);
  for (int index = 0; index < plain.size(); ++index) plain[index] = static_cast<char>(index);
  EXPECT_EQ(QVEncryption::AESDecryptData(QVEncryption::AESEncryptData(plain, "x"), "x"), plain);
}

TEST(Encryption, GivesEqualBlocksForEqualBlocks) {
  const QByteArray cipher = QVEncryption::AESEncryptData(QByteArray("sixteen bytes ok").repeated(2), "secret");
  EXPECT_EQ(cipher.left(16), cipher.mid(16));
}

TEST(Encryption, LeavesOutBytesAfterTheLastWholeBlock) {
  const QByteArray cipher = QVEncryption::AESEncryptData("hello", "secret");
  EXPECT_EQ(QVEncryption::AESDecryptData(cipher + "rest", "secret"), "hello           ");
  EXPECT_EQ(QVEncryption::AESDecryptData("rest", "secret"), "");
}

}  // namespace
