#pragma once

#include <array>
#include <cstdint>
#include <span>

/// The AES block cipher (FIPS 197), one block of 16 bytes at a time. Its tables are read at places that depend on the
/// key and the data: do not use it where somebody can time it.

/// A round-key schedule: 4 words for each round and 4 more. 60 hold that of the longest key.
using RijndaelSchedule = std::array<std::uint32_t, 60>;
using RijndaelBlock = std::array<std::uint8_t, 16>;

/// Build the schedule for one direction from a key of 128, 192 or 256 bits; return the number of rounds (10, 12, 14),
/// or 0 for any other length and when the key has fewer bytes than that.
int rijndaelSetupEncrypt(RijndaelSchedule& schedule, std::span<const std::uint8_t> key, int keyBits);
int rijndaelSetupDecrypt(RijndaelSchedule& schedule, std::span<const std::uint8_t> key, int keyBits);

/// One block with a schedule of its direction and that schedule's rounds.
RijndaelBlock rijndaelEncrypt(const RijndaelSchedule& schedule, int rounds, const RijndaelBlock& plain);
RijndaelBlock rijndaelDecrypt(const RijndaelSchedule& schedule, int rounds, const RijndaelBlock& cipher);
