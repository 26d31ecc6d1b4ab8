#include "SharedFiles/cipher/Rijndael.h"

#include <algorithm>
#include <bit>
#include <cstddef>

namespace {

using Bytes = std::array<std::uint8_t, 256>;
using Words = std::array<std::uint32_t, 256>;
using State = std::array<std::uint32_t, 4>;  // the block's columns, first byte highest

constexpr std::size_t columns = 4;

/// Multiplication in GF(2^8) modulo x^8 + x^4 + x^3 + x + 1.
constexpr std::uint8_t multiply(std::uint8_t one, std::uint8_t other) {
  constexpr std::uint8_t reduction = 0x1b;
  std::uint8_t product = 0;
  for (int bit = 0; bit < 8; ++bit) {
    if ((other >> bit & 1) != 0) product ^= one;
    one = static_cast<std::uint8_t>(one << 1 ^ (one >> 7) * reduction);
  }
  return product;
}

/// FIPS 197, 5.1.1: the multiplicative inverse, then an affine map.
constexpr std::uint8_t substitute(std::uint8_t byte) {
  constexpr std::uint8_t affine = 0x63;
  std::uint8_t inverse = 1;  // byte^254, of which byte^2, byte^4 ... byte^128 are the factors
  for (std::uint8_t factor = multiply(byte, byte), count = 0; count < 7; factor = multiply(factor, factor), ++count) {
    inverse = multiply(inverse, factor);
  }
  std::uint8_t result = affine;
  for (int turn = 0; turn < 5; ++turn) result ^= std::rotl(inverse, turn);
  return result;
}

constexpr Bytes makeSBox() {
  Bytes box{};
  for (std::size_t value = 0; value < box.size(); ++value) box[value] = substitute(static_cast<std::uint8_t>(value));
  return box;
}

constexpr Bytes inverted(const Bytes& box) {
  Bytes inverse{};
  for (std::size_t value = 0; value < box.size(); ++value) inverse[box[value]] = static_cast<std::uint8_t>(value);
  return inverse;
}

constexpr std::uint32_t word(std::uint8_t first, std::uint8_t second, std::uint8_t third, std::uint8_t fourth) {
  return std::uint32_t{first} << 24 | std::uint32_t{second} << 16 | std::uint32_t{third} << 8 | fourth;
}

/// A byte of the first row through the box and one column of the mixing matrix; the other rows are its rotations.
constexpr Words makeTable(const Bytes& box, const std::array<std::uint8_t, 4>& matrix) {
  Words table{};
  for (std::size_t value = 0; value < table.size(); ++value) {
    const std::uint8_t byte = box[value];
    table[value] = word(multiply(byte, matrix[0]), multiply(byte, matrix[1]), multiply(byte, matrix[2]),
                        multiply(byte, matrix[3]));
  }
  return table;
}

constexpr Bytes sBox = makeSBox();
constexpr Bytes inverseSBox = inverted(sBox);
constexpr Words mixed = makeTable(sBox, {2, 1, 1, 3});
constexpr Words inverseMixed = makeTable(inverseSBox, {14, 9, 13, 11});

constexpr std::uint8_t byteOf(std::uint32_t value, int row) {
  return static_cast<std::uint8_t>(value >> (24 - 8 * row));
}

std::uint32_t substituteWord(std::uint32_t value) {
  return word(sBox[byteOf(value, 0)], sBox[byteOf(value, 1)], sBox[byteOf(value, 2)], sBox[byteOf(value, 3)]);
}

State load(const RijndaelBlock& block) {
  State state{};
  for (std::size_t column = 0; column < columns; ++column) {
    const std::uint8_t* bytes = &block[4 * column];
    state[column] = word(bytes[0], bytes[1], bytes[2], bytes[3]);
  }
  return state;
}

RijndaelBlock store(const State& state) {
  RijndaelBlock block{};
  for (std::size_t column = 0; column < columns; ++column) {
    for (int row = 0; row < 4; ++row) block[4 * column + static_cast<std::size_t>(row)] = byteOf(state[column], row);
  }
  return block;
}

/// All rounds. A row moves `shift` columns on for each row: 1 when encrypting, 3 when decrypting.
RijndaelBlock transform(const RijndaelSchedule& schedule, int rounds, const RijndaelBlock& block, const Words& table,
                        const Bytes& box, std::size_t shift) {
  State state = load(block);
  const std::uint32_t* key = schedule.data();
  for (std::uint32_t& column : state) column ^= *key++;
  for (int round = 1; round <= rounds; ++round) {
    const State before = state;
    for (std::size_t column = 0; column < columns; ++column) {
      std::uint32_t value = 0;
      for (int row = 0; row < 4; ++row) {
        const std::uint8_t byte = byteOf(before[(column + static_cast<std::size_t>(row) * shift) % columns], row);
        value ^= round < rounds ? std::rotr(table[byte], 8 * row) : std::uint32_t{box[byte]} << (24 - 8 * row);
      }
      state[column] = value ^ *key++;
    }
  }
  return store(state);
}

}  // namespace

int rijndaelSetupEncrypt(RijndaelSchedule& schedule, std::span<const std::uint8_t> key, int keyBits) {
  const bool known = keyBits == 128 || keyBits == 192 || keyBits == 256;
  if (!known || key.size() < static_cast<std::size_t>(keyBits) / 8) return 0;
  const std::size_t keyWords = static_cast<std::size_t>(keyBits) / 32;
  const std::size_t rounds = keyWords + 6;
  for (std::size_t index = 0; index < keyWords; ++index) {
    schedule[index] = word(key[4 * index], key[4 * index + 1], key[4 * index + 2], key[4 * index + 3]);
  }
  std::uint8_t roundConstant = 1;
  for (std::size_t index = keyWords; index < columns * (rounds + 1); ++index) {
    std::uint32_t next = schedule[index - 1];
    if (index % keyWords == 0) {
      next = substituteWord(std::rotl(next, 8)) ^ word(roundConstant, 0, 0, 0);
      roundConstant = multiply(roundConstant, 2);
    } else if (keyWords == 8 && index % keyWords == 4) {
      next = substituteWord(next);
    }
    schedule[index] = schedule[index - keyWords] ^ next;
  }
  return static_cast<int>(rounds);
}

/// The equivalent inverse cipher (FIPS 197, 5.3.5): the rounds' keys in reverse order, those in the middle unmixed.
int rijndaelSetupDecrypt(RijndaelSchedule& schedule, std::span<const std::uint8_t> key, int keyBits) {
  const int rounds = rijndaelSetupEncrypt(schedule, key, keyBits);
  if (rounds == 0) return 0;
  const auto last = static_cast<std::size_t>(rounds);
  for (std::size_t low = 0, high = last; low < high; ++low, --high) {
    std::swap_ranges(&schedule[columns * low], &schedule[columns * low] + columns, &schedule[columns * high]);
  }
  for (std::size_t index = columns; index < columns * last; ++index) {
    std::uint32_t unmixed = 0;
    for (int row = 0; row < 4; ++row) {
      unmixed ^= std::rotr(inverseMixed[sBox[byteOf(schedule[index], row)]], 8 * row);
    }
    schedule[index] = unmixed;
  }
  return rounds;
}

RijndaelBlock rijndaelEncrypt(const RijndaelSchedule& schedule, int rounds, const RijndaelBlock& plain) {
  return transform(schedule, rounds, plain, mixed, sBox, 1);
}

RijndaelBlock rijndaelDecrypt(const RijndaelSchedule& schedule, int rounds, const RijndaelBlock& cipher) {
  return transform(schedule, rounds, cipher, inverseMixed, inverseSBox, 3);
}
