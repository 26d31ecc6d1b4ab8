#pragma once

#include <cstdint>
#include <string>

#include "movie/atoms/ByteOrder.h"
#include "movie/atoms/FourCC.h"
#include "movie/atoms/MovieError.h"

namespace movie {

/// What a sound track's sample description says. Source: QTFF "Sound sample descriptions" (versions 0, 1 and 2);
/// ISO/IEC 14496-12, 12.2.3.
struct SoundDescription {
  static constexpr int mostChannels = 64;
  static constexpr double highestRate = 768000;  ///< frames a second

  FourCC codec = 0;
  int channels = 0;             ///< 1 to mostChannels; what a compressed stream says itself goes before
  int bits = 0;                 ///< of one sample of one channel; 16 for most compressed sound
  int rate = 0;                 ///< frames a second, 0 where it does not fit into its field
  std::uint32_t flags = 0;      ///< of 'lpcm' in version 2
  bool bigEndian = true;        ///< false where an enda atom says so
  std::uint8_t objectType = 0;  ///< of esds: which codec an 'mp4a' is; 0 without
  Bytes setup;                  ///< what the decoder is set up with: of esds its own part, of alac the whole atom

  static constexpr std::uint32_t isFloat = 1, isBigEndian = 2, isSigned = 4, isApart = 32;
  static constexpr std::uint8_t mpeg4Audio = 0x40;                          ///< object types whose setup is an
  static constexpr std::uint8_t firstMpeg2Aac = 0x66, lastMpeg2Aac = 0x68;  ///< AudioSpecificConfig
};

/// Reads a whole stsd entry. Error: a clause; it is too short, or its channels or rate are beyond those limits.
tl::expected<SoundDescription, Clause> readSoundDescription(ByteView entry);

/// The sample rate of a sound track, from a whole stsd entry and the media's time scale. Versions 0 and 1 have a field
/// of 16.16, which holds no rate above 65535. Such a rate is the stream's own (AudioSpecificConfig: ISO/IEC 14496-3,
/// 1.6.2.1), or else the time scale, which files of the ISO format choose to be the rate. 0 for an entry that is too
/// short or of an unknown version.
double soundSampleRate(ByteView entry, std::int32_t mediaTimeScale);

}  // namespace movie
